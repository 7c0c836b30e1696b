#pragma once

#include "support/Owner.h"

#include <windows.h>

/// A window from CreateWindowExW of this thread.
using OwnedWindow = Owner<HWND, DestroyWindow>;

/// A visible top-level window, or none where there is no display. Neither framed nor activated: Wine waits
/// two seconds for a window manager to give up a window that is.
inline OwnedWindow MakeTopWindow() {
    OwnedWindow window(CreateWindowExW(0, L"STATIC", L"Test", WS_POPUP, 100, 100, 1100, 400, nullptr, nullptr,
                                       GetModuleHandleW(nullptr), nullptr));
    ShowWindow(window.Get(), SW_SHOWNOACTIVATE);
    return window;
}

/// Where a window is in its parent's client area.
inline RECT PlaceOf(HWND window) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    // Two points, which the system takes for a rectangle: a parent that is mirrored swaps left and right.
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

/// Ends a test where windows cannot be made; `window` is the first one that it made.
#define SKIP_WITHOUT_DISPLAY(window)                                                                         \
    if ((window) == nullptr) {                                                                               \
        GTEST_SKIP() << "no display: windows cannot be made";                                                \
    }
