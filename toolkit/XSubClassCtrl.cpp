#include "toolkit/XSubClassCtrl.h"

#include <commctrl.h>

#include <new>

XSubClassCtrl::~XSubClassCtrl() {
    Attach(nullptr);
}

void XSubClassCtrl::Attach(HWND control) noexcept {
    // The object's address is its id among the subclasses of a control.
    const UINT_PTR id = reinterpret_cast<UINT_PTR>(this);
    if (m_hwnd != nullptr) {
        RemoveWindowSubclass(m_hwnd, SharedProc, id);
    }
    m_hwnd = control != nullptr && SetWindowSubclass(control, SharedProc, id, id) ? control : nullptr;
}

LRESULT XSubClassCtrl::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefSubclassProc(m_hwnd, message, wParam, lParam);
}

LRESULT CALLBACK XSubClassCtrl::SharedProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                           UINT_PTR /*id*/, DWORD_PTR object) noexcept {
    auto* control = reinterpret_cast<XSubClassCtrl*>(object);
    if (message == WM_NCDESTROY) {
        control->Attach(nullptr);
        return DefSubclassProc(hwnd, message, wParam, lParam);
    }
    // No exception may pass through the system's frames: when memory runs out, the message counts as handled.
    try {
        return control->WindowProc(message, wParam, lParam);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
