#pragma once

#include <windows.h>

/// The name by which assistive programs call a control that no label stands right before. Given to the system
/// (IAccPropServices), which keeps it until it is taken back; the control itself stays as it is. COM is used
/// on the calling thread, for the length of a call.
class XAccessibleName {
public:
    XAccessibleName() noexcept = default;
    XAccessibleName(const XAccessibleName&) = delete;
    XAccessibleName& operator=(const XAccessibleName&) = delete;
    ~XAccessibleName() { Clear(); }

    /// Names a control in place of the one before; passed over where the system has no such service.
    void Set(HWND control, const wchar_t* name) noexcept;

    /// Takes the name back; due before the control is destroyed.
    void Clear() noexcept;

private:
    HWND m_control = nullptr;
};
