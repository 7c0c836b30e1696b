#pragma once

#include <windows.h>

class XWindow;

// Which object stands behind a window handle: one list for the whole process, usable from any thread and
// guarded by a mutex of its own. Handles and objects are only borrowed.

/// Enters the object at the end of the list, under this handle alone. Throws std::bad_alloc.
void RegisterWindow(XWindow& object, HWND hwnd);

/// The object entered under the handle, or null.
XWindow* FindWindowObject(HWND hwnd) noexcept;

/// Takes the object out of the list; nothing happens when it is not in it.
void UnregisterWindow(const XWindow& object) noexcept;
