#pragma once

#include <cstdint>

// The part of <windows.h> that code under test uses where there is no Windows: 8-bit text. Only ASCII is
// decoded: as UTF-8 every other byte counts as invalid.

using UINT = unsigned;
using DWORD = uint32_t;

constexpr UINT CP_ACP = 0, CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 8;

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, wchar_t* out, int outSize);
