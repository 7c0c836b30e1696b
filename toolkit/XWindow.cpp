#include "toolkit/XWindow.h"

#include "toolkit/WindowRegistry.h"

#include <windowsx.h>

#include <algorithm>
#include <new>

XWindow::~XWindow() {
    const HWND hwnd = m_hwnd;
    Forget();
    if (hwnd != nullptr) {
        DestroyWindow(hwnd);
    }
}

void XWindow::Register(HWND hwnd, bool isDialog) {
    RegisterWindow(*this, hwnd);
    m_hwnd = hwnd;
    m_isDialog = isDialog;
}

XWindow* XWindow::Find(HWND hwnd) noexcept {
    return FindWindowObject(hwnd);
}

LRESULT XWindow::Dispatch(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (m_hwnd == nullptr) {
        return 0;
    }
    const bool isDialog = m_isDialog;
    bool handled = false;
    bool isBrush = false;
    LRESULT result = OnMessage(hwnd, message, wParam, lParam, handled);
    if (!handled) {
        result = 0;
        handled = CallOperation(message, wParam, lParam, result);
        isBrush = handled && (message == WM_CTLCOLORSTATIC || message == WM_CTLCOLORDLG);
    }
    // From here on no member is touched: an operation may run a message loop of its own, such as that of a
    // file dialog, in which the owner destroys this object.
    if (message == WM_NCDESTROY) {
        if (XWindow* object = Find(hwnd); object != nullptr) {
            object->Forget();
        }
    }
    if (!isDialog) {
        return handled ? result : DefWindowProcW(hwnd, message, wParam, lParam);
    }
    if (isBrush) {
        return result;
    }
    SetWindowLongPtrW(hwnd, DWLP_MSGRESULT, result);
    return handled ? TRUE : FALSE;
}

INT_PTR CALLBACK XWindow::DialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    // No exception may pass through the system's frames: when memory runs out, the message is not handled.
    try {
        XWindow* window = Find(hwnd);
        if (window == nullptr && message == WM_INITDIALOG) { // sent by the dialog manager: lParam is ours
            window = reinterpret_cast<XWindow*>(lParam);
            window->Register(hwnd, true);
        }
        return window != nullptr ? window->Dispatch(hwnd, message, wParam, lParam) : FALSE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

/// One row for each message; the answer says whether it was handled.
bool XWindow::CallOperation(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    const UINT low = LOWORD(wParam);
    const UINT high = HIWORD(wParam);
    const int x = GET_X_LPARAM(lParam); // signed: a second screen may lie to the left
    const int y = GET_Y_LPARAM(lParam);
    const HWND window = reinterpret_cast<HWND>(lParam);
    const HDC dc = reinterpret_cast<HDC>(wParam);
    const auto brush = [&result](HBRUSH handle) {
        result = reinterpret_cast<LRESULT>(handle);
        return handle != nullptr;
    };
    // clang-format off
    switch (message) {
    case WM_ACTIVATE:       return low != 0 ? OnActivate(window, high != 0, low) : OnDeactivate(window, high != 0);
    case WM_CLOSE:          return OnClose();
    case WM_CONTEXTMENU:    return OnContextMenu(reinterpret_cast<HWND>(wParam), x, y);
    case WM_COMMAND:        return CallCommand(low, high, window);
    case WM_INITDIALOG:
    case WM_CREATE:         OnInit(); return true;
    case WM_DESTROY:        return OnDestroy();
    case WM_DRAWITEM:       return OnDrawItem(reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_ERASEBKGND:     result = OnEraseBackground(dc) ? 1 : 0; return result != 0;
    case WM_SHOWWINDOW:     return wParam != 0 ? OnShow() : OnHide();
    case WM_KEYDOWN:        return OnKeyDown(static_cast<UINT>(wParam));
    case WM_KEYUP:          return OnKeyUp(static_cast<UINT>(wParam));
    case WM_CHAR:           return OnChar(static_cast<wchar_t>(wParam));
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:    return OnMouseDown(x, y, message, low);
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDBLCLK:  return OnMouseDoubleClick(x, y, message, low);
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MBUTTONUP:      return OnMouseUp(x, y, message, low);
    case WM_MOUSEMOVE:      return OnMouseMove(x, y, low);
    case WM_MOUSEWHEEL:     return OnMouseWheel(x, y, GET_WHEEL_DELTA_WPARAM(wParam), low);
    case WM_MOVE:           return OnMove(x, y);
    case WM_NOTIFY:         return OnNotify(reinterpret_cast<NMHDR*>(lParam), result);
    case WM_PAINT:          OnPaint(); return false;
    case WM_SIZE:           return OnSize(LOWORD(lParam), HIWORD(lParam), static_cast<UINT>(wParam));
    case WM_SYSCOMMAND:     OnSysCommand(static_cast<UINT>(wParam & 0xFFF0)); return false;
    case WM_TIMER:          return CallTimer(wParam);
    case WM_CTLCOLORSTATIC: return brush(OnCtlColorStatic(dc));
    case WM_CTLCOLORDLG:    return brush(OnCtlColorDialog(dc));
    default:                return false;
    }
    // clang-format on
}

bool XWindow::CallCommand(UINT id, UINT notification, HWND control) {
    const auto callId = [this, id] {
        // clang-format off
        switch (id) {
        case IDOK:     return OnOK();
        case IDCANCEL: return OnCancel();
        case IDABORT:  return OnAbort();
        case IDCLOSE:  return OnIdClose();
        case IDHELP:   return OnHelp();
        case IDIGNORE: return OnIgnore();
        case IDNO:     return OnNo();
        case IDRETRY:  return OnRetry();
        case IDYES:    return OnYes();
        default:       return false;
        }
        // clang-format on
    };
    const bool handled = notification == 0 && callId();
    return OnCommand(id, control, notification) || handled;
}

bool XWindow::CallTimer(UINT_PTR id) {
    Timer timer;
    {
        const XMutex::Lock lock(m_lock);
        const auto found = FindTimer(id);
        if (found == m_timers.end()) {
            return false;
        }
        timer = *found;
    }
    return OnTimer(timer.id, timer.userWord);
}

void XWindow::MoveTo(int x, int y) noexcept {
    RECT rect;
    if (m_hwnd == nullptr || !GetWindowRect(m_hwnd, &rect)) {
        return;
    }
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    // Mapped as a rectangle, so that a mirrored parent turns it round. The parent of a top-level window is
    // the desktop, whose client area is the screen.
    MapWindowPoints(nullptr, GetAncestor(m_hwnd, GA_PARENT), reinterpret_cast<POINT*>(&rect), 2);
    SetWindowPos(m_hwnd, nullptr, x != kKeepCoordinate ? x : rect.left, y != kKeepCoordinate ? y : rect.top,
                 width, height, SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

void XWindow::StartTimer(UINT_PTR id, UINT milliseconds, uint64_t userWord) {
    StopTimer(id);
    const XMutex::Lock lock(m_lock);
    m_timers.push_back({id, userWord});
    if (m_hwnd == nullptr || SetTimer(m_hwnd, id, milliseconds, nullptr) == 0) {
        m_timers.pop_back();
    }
}

void XWindow::StopTimer(UINT_PTR id) noexcept {
    const XMutex::Lock lock(m_lock);
    if (const auto found = FindTimer(id); found != m_timers.end()) {
        KillTimer(m_hwnd, id);
        m_timers.erase(found);
    }
}

void XWindow::Destroy() noexcept {
    if (m_hwnd != nullptr) {
        ShowWindow(m_hwnd, SW_HIDE);
        KillTimers();
        DestroyWindow(m_hwnd);
    }
    Forget();
}

std::vector<XWindow::Timer>::iterator XWindow::FindTimer(UINT_PTR id) noexcept {
    return std::find_if(m_timers.begin(), m_timers.end(),
                        [id](const Timer& timer) { return timer.id == id; });
}

void XWindow::KillTimers() noexcept {
    const XMutex::Lock lock(m_lock);
    for (const Timer& timer : m_timers) {
        KillTimer(m_hwnd, timer.id);
    }
    m_timers.clear();
}

void XWindow::Forget() noexcept {
    KillTimers();
    UnregisterWindow(*this);
    m_hwnd = nullptr;
}
