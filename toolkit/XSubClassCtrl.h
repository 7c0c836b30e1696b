#pragma once

#include <windows.h>

/// A control whose messages pass through an object before its own window procedure (SetWindowSubclass). The
/// dialog owns the control. The object detaches when it ends, which leaves the control as it was, and when
/// the control is destroyed. To be used only on the thread that owns the control.
class XSubClassCtrl {
public:
    XSubClassCtrl() noexcept = default;
    XSubClassCtrl(const XSubClassCtrl&) = delete;
    XSubClassCtrl& operator=(const XSubClassCtrl&) = delete;
    virtual ~XSubClassCtrl();

    /// Attaches to the control in place of the one before; null attaches to none.
    void Attach(HWND control) noexcept;

    /// The control, or null.
    HWND Hwnd() const noexcept { return m_hwnd; }

protected:
    /// Gets every message of the control; this one calls the control's own procedure.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

private:
    static LRESULT CALLBACK SharedProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                       DWORD_PTR object) noexcept;

    HWND m_hwnd = nullptr;
};
