#pragma once

#include "support/Com.h"

#include <windows.h>

struct IAccPropServices;

/// The name that screen readers speak for a control that has no label before it. The system keeps the name
/// (IAccPropServices) until it is removed; the control itself is not changed. `Set` enters COM on the calling
/// thread (CoInitialize), `Clear` leaves it.
class XAccessibleName {
public:
    XAccessibleName() noexcept;
    XAccessibleName(const XAccessibleName&) = delete;
    XAccessibleName& operator=(const XAccessibleName&) = delete;
    ~XAccessibleName();

    /// Names a control in place of the one before; nothing happens where the system has no such service.
    void Set(HWND control, const wchar_t* name) noexcept;

    /// Removes the name. To be called on the thread of `Set` before the control is destroyed; the destructor,
    /// which may run on any thread, does not do it.
    void Clear() noexcept;

private:
    ComPtr<IAccPropServices> m_service;
    HWND m_control = nullptr;
    bool m_isComEntered = false;
};
