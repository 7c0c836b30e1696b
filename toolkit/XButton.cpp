#include "toolkit/XButton.h"

#include <windowsx.h>

/// A click is the message that releases the pushed button; the mouse released outside it is no click.
/// BM_CLICK and access keys reach the control as mouse messages, too.
LRESULT XButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto isClick = [&] {
        if ((SendMessageW(Hwnd(), BM_GETSTATE, 0, 0) & BST_PUSHED) == 0) {
            return false;
        }
        RECT area;
        const POINT point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        return (message == WM_KEYUP && wParam == VK_SPACE) ||
               (message == WM_LBUTTONUP && GetClientRect(Hwnd(), &area) && PtInRect(&area, point));
    };
    const bool clicked = (message == WM_KEYUP || message == WM_LBUTTONUP) && isClick();
    const HWND control = Hwnd();
    const LRESULT result = XSubClassCtrl::WindowProc(message, wParam, lParam);
    // The parent may have answered the click by destroying the control, and this object with it.
    if (clicked && IsWindow(control)) {
        OnClick();
    }
    return result;
}
