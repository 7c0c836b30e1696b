#pragma once

#include <cstddef>
#include <cstdint>

// The parts of <windows.h> that code under test and the tests use where there is no Windows.

using BOOL = int;
using BYTE = uint8_t;
using UINT = unsigned;
using DWORD = uint32_t;
using LONGLONG = int64_t;
using HANDLE = void*;
using HMODULE = void*;
using HKEY = void*;

struct LARGE_INTEGER {
    LONGLONG QuadPart;
};

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(intptr_t{-1});

// One file, whatever the path, whose content is in memory (TheFile.h).

constexpr DWORD GENERIC_READ = 0x80000000, OPEN_EXISTING = 3, FILE_ATTRIBUTE_NORMAL = 0x80, FILE_BEGIN = 0;
constexpr DWORD FILE_SHARE_READ = 1, FILE_SHARE_WRITE = 2, FILE_SHARE_DELETE = 4;

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD flags, HANDLE pattern);
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER offset, LARGE_INTEGER* position, DWORD origin);
BOOL ReadFile(HANDLE file, void* out, DWORD size, DWORD* read, void* overlapped);
BOOL CloseHandle(HANDLE handle);

// 8-bit text. Only ASCII is decoded: as UTF-8 every other byte counts as invalid.

constexpr UINT CP_ACP = 0, CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 8;

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, wchar_t* out, int outSize);

// Named by owners that are not used here.

BOOL FindClose(HANDLE search);
BOOL FreeLibrary(HMODULE module);
DWORD RegCloseKey(HKEY key);
