#pragma once

#include <windows.h>

/// The name that screen readers speak for a control that has no label before it. The system keeps the name
/// (IAccPropServices) until it is removed; the control itself is not changed. Each call enters COM on its
/// thread and leaves it again, so that the host may choose the thread's apartment at any time. Where COM was
/// not entered before, leaving it may dispatch messages.
class XAccessibleName {
public:
    /// Names a control in place of the one before; nothing happens where the system has no such service.
    void Set(HWND control, const wchar_t* name) noexcept;

    /// Removes the name. To be called before the control is destroyed; the destructor does not do it.
    void Clear() noexcept;

private:
    HWND m_control = nullptr;
};
