#pragma once

#include <windows.h>

#include <cstddef>

/// What the process holds at a moment, to see whether something piles up.
struct ProcessUse {
    size_t privateBytes = 0; ///< GetProcessMemoryInfo
    DWORD handles = 0;       ///< GetProcessHandleCount

    static ProcessUse Now() noexcept;
};
