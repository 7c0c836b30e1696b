#pragma once

#include <windows.h>

/// Whether the tests run under Wine, where some things come out other than on Windows.
inline bool RunsUnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
