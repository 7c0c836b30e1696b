#pragma once

#include "support/XMutex.h"

#include <windows.h>

#include <cstdint>
#include <vector>

/// A coordinate that means "where the window is now".
inline constexpr int kKeepCoordinate = -12345;

/// A window as an object: its messages arrive as calls of the virtual operations below.
///
/// The object exists before its window and may outlive it. It is attached to the window by `Register`, which
/// the dialog procedure calls by itself, and detached with the window's last message (WM_NCDESTROY), whoever
/// destroys the window. All of it runs on the thread that owns the window; only the timer list and the
/// process-wide registry are guarded against other threads.
///
/// A class that overrides operations calls Destroy() in its destructor: there OnDestroy still reaches it. The
/// destructor of XWindow removes a window that still exists from the registry before destroying it, so that
/// no message reaches a half-destroyed object.
class XWindow {
public:
    XWindow() noexcept = default;
    XWindow(const XWindow&) = delete;
    XWindow& operator=(const XWindow&) = delete;
    virtual ~XWindow();

    /// The window, or null while there is none.
    HWND Hwnd() const noexcept { return m_hwnd; }

    /// Attaches the object to a window. `isDialog` decides how results are returned. Throws std::bad_alloc.
    void Register(HWND hwnd, bool isDialog);

    /// The object attached to a window, or null.
    static XWindow* Find(HWND hwnd) noexcept;

    /// Calls the operation that belongs to the message. Returns what the window procedure, or for a dialog
    /// the dialog procedure, has to return; messages that no operation handled go through DefWindowProcW or,
    /// for a dialog, back to the dialog manager.
    LRESULT Dispatch(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// The dialog procedure for CreateDialogParamW, whose parameter is the XWindow*.
    static INT_PTR CALLBACK DialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    /// Moves the window, keeping its size (SetWindowPos). Pixels in the parent's client area, for a window
    /// without parent on the screen; kKeepCoordinate leaves a coordinate as it is.
    void MoveTo(int x, int y) noexcept;

    /// Sets a timer (SetTimer) whose ticks come to OnTimer with `userWord`; an id that is in use is replaced.
    /// A timer that cannot be set is ignored. Throws std::bad_alloc.
    void StartTimer(UINT_PTR id, UINT milliseconds, uint64_t userWord);

    /// Ends a timer set with StartTimer; nothing happens when there is none of that id.
    void StopTimer(UINT_PTR id) noexcept;

    /// Hides the window, ends its timers and destroys it; OnDestroy is called on the way. Afterwards the
    /// object can get a new window. Nothing happens without a window.
    void Destroy() noexcept;

protected:
    // The operations. A bool says whether the message was handled; unless stated otherwise the result of a
    // handled message is 0. None of them does anything here.

    /// WM_ACTIVATE that activates; `state` is WA_ACTIVE or WA_CLICKACTIVE.
    virtual bool OnActivate(HWND /*other*/, bool /*minimised*/, UINT /*state*/) { return false; }
    virtual bool OnClose() { return false; }
    /// In screen coordinates; -1, -1 when asked for by the keyboard.
    virtual bool OnContextMenu(HWND /*window*/, int /*x*/, int /*y*/) { return false; }
    /// Every WM_COMMAND, after the operations of the standard ids.
    virtual bool OnCommand(UINT /*id*/, HWND /*control*/, UINT /*notification*/) { return false; }
    /// WM_INITDIALOG or WM_CREATE, which count as handled.
    virtual void OnInit() {}
    virtual bool OnDestroy() { return false; }
    /// WM_ACTIVATE that deactivates.
    virtual bool OnDeactivate(HWND /*other*/, bool /*minimised*/) { return false; }
    virtual bool OnDrawItem(const DRAWITEMSTRUCT* /*item*/) { return false; }
    /// The result is 1 when handled.
    virtual bool OnEraseBackground(HDC /*dc*/) { return false; }
    virtual bool OnHide() { return false; }
    virtual bool OnKeyDown(UINT /*key*/) { return false; }
    virtual bool OnKeyUp(UINT /*key*/) { return false; }
    virtual bool OnChar(wchar_t /*character*/) { return false; }
    /// Any of the three buttons: `message` says which. Client coordinates, `keys` as in MK_SHIFT.
    virtual bool OnMouseDown(int /*x*/, int /*y*/, UINT /*message*/, UINT /*keys*/) { return false; }
    virtual bool OnMouseDoubleClick(int /*x*/, int /*y*/, UINT /*message*/, UINT /*keys*/) { return false; }
    virtual bool OnMouseUp(int /*x*/, int /*y*/, UINT /*message*/, UINT /*keys*/) { return false; }
    virtual bool OnMouseMove(int /*x*/, int /*y*/, UINT /*keys*/) { return false; }
    /// In screen coordinates; `delta` in units of 120 for a notch, positive away from the user.
    virtual bool OnMouseWheel(int /*x*/, int /*y*/, int /*delta*/, UINT /*keys*/) { return false; }
    /// Position of the client area in the parent's, for a window without parent on the screen.
    virtual bool OnMove(int /*x*/, int /*y*/) { return false; }
    /// `result` becomes the result of the message when handled.
    virtual bool OnNotify(NMHDR* /*header*/, LRESULT& /*result*/) { return false; }
    /// The message goes to default processing afterwards, which finds nothing to do after a BeginPaint here.
    virtual void OnPaint() {}
    virtual bool OnShow() { return false; }
    /// Size of the client area; `type` is SIZE_RESTORED and the like.
    virtual bool OnSize(int /*width*/, int /*height*/, UINT /*type*/) { return false; }
    /// `command` without its low four bits, as SC_CLOSE. The message goes to default processing afterwards.
    virtual void OnSysCommand(UINT /*command*/) {}
    /// A tick of a timer set with StartTimer.
    virtual bool OnTimer(UINT_PTR /*id*/, uint64_t /*userWord*/) { return false; }
    /// The brush for the background, which stays the object's; null for the default.
    virtual HBRUSH OnCtlColorStatic(HDC /*dc*/) { return nullptr; }
    virtual HBRUSH OnCtlColorDialog(HDC /*dc*/) { return nullptr; }
    /// Every message, before all others. Where it sets `handled`, none of the others is called and what it
    /// returned is the result of the message.
    virtual LRESULT OnMessage(HWND /*hwnd*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/,
                              bool& /*handled*/) {
        return 0;
    }

    // WM_COMMAND with notification 0 and the ids IDOK, IDCANCEL and so on.
    virtual bool OnOK() { return false; }
    virtual bool OnCancel() { return false; }
    virtual bool OnAbort() { return false; }
    virtual bool OnIdClose() { return false; }
    virtual bool OnHelp() { return false; }
    virtual bool OnIgnore() { return false; }
    virtual bool OnNo() { return false; }
    virtual bool OnRetry() { return false; }
    virtual bool OnYes() { return false; }

private:
    struct Timer {
        UINT_PTR id;
        uint64_t userWord;
    };

    bool CallOperation(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    bool CallCommand(UINT id, UINT notification, HWND control);
    bool CallTimer(UINT_PTR id);
    std::vector<Timer>::iterator FindTimer(UINT_PTR id) noexcept; // with m_lock held
    void KillTimers() noexcept;
    void Forget() noexcept;

    HWND m_hwnd = nullptr;
    bool m_isDialog = false;
    std::vector<Timer> m_timers; // guarded by m_lock
    XMutex m_lock;
};
