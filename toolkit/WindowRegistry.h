#pragma once

#include <windows.h>

class XWindow;

// Which object belongs to a window handle: one list for the whole process, usable from any thread and
// guarded by a mutex of its own. It owns neither handles nor objects.

/// Adds the object at the end of the list, under this handle alone. Throws std::bad_alloc.
void RegisterWindow(XWindow& object, HWND hwnd);

/// The object listed under the handle, or null.
XWindow* FindWindowObject(HWND hwnd) noexcept;

/// Removes the object from the list; nothing happens when it is not in it.
void UnregisterWindow(const XWindow& object) noexcept;
