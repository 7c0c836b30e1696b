#pragma once

#include <windows.h>

/// A control whose messages pass through an object before its own window procedure (SetWindowSubclass). The
/// control stays its dialog's; it is left as it was when the object ends, and let go when it is destroyed.
/// For the thread that owns the control alone.
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
    /// Every message of the control; this one leaves it to the control's own procedure.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

private:
    static LRESULT CALLBACK SharedProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                       DWORD_PTR object) noexcept;

    HWND m_hwnd = nullptr;
};
