#pragma once

#include <windows.h>

#include <cstddef>

/// What the host hands to DSP_Create: up to two open handles that the plug-in borrows and never closes.
/// A handle is absent when it is null or INVALID_HANDLE_VALUE.
#pragma pack(push, 1)
struct CreateRecord {
    HANDLE errorFile; ///< receives error lines only
    void* reserved;
    HANDLE debugFile; ///< receives every trace line, errors included
};
#pragma pack(pop)
static_assert(sizeof(CreateRecord) == 24);
static_assert(offsetof(CreateRecord, errorFile) == 0);
static_assert(offsetof(CreateRecord, reserved) == 8);
static_assert(offsetof(CreateRecord, debugFile) == 16);
