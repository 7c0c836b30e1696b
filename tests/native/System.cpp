#include "tests/native/TheFile.h"

#include <windows.h>

#include <algorithm>

namespace {

const uint8_t* fileBytes = nullptr;
size_t fileSize = 0;
size_t reportedFileSize = 0;
size_t filePosition = 0;

} // namespace

void SetTheFile(const uint8_t* bytes, size_t size, size_t reportedSize) {
    fileBytes = bytes;
    fileSize = size;
    reportedFileSize = reportedSize;
}

HANDLE CreateFileW(const wchar_t*, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) {
    filePosition = 0;
    return &fileBytes;
}

BOOL GetFileSizeEx(HANDLE /*file*/, LARGE_INTEGER* size) {
    size->QuadPart = static_cast<LONGLONG>(reportedFileSize);
    return 1;
}

BOOL SetFilePointerEx(HANDLE /*file*/, LARGE_INTEGER offset, LARGE_INTEGER* /*position*/, DWORD /*origin*/) {
    filePosition = static_cast<size_t>(offset.QuadPart);
    return offset.QuadPart >= 0;
}

BOOL ReadFile(HANDLE /*file*/, void* out, DWORD size, DWORD* read, void* /*overlapped*/) {
    const size_t left = fileSize - std::min(filePosition, fileSize);
    *read = static_cast<DWORD>(std::min<size_t>(size, left));
    std::copy_n(fileBytes + filePosition, *read, static_cast<uint8_t*>(out));
    filePosition += *read;
    return 1;
}

BOOL CloseHandle(HANDLE /*handle*/) {
    return 1;
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, wchar_t* out, int outSize) {
    for (int i = 0; i < size; ++i) {
        const uint8_t byte = static_cast<uint8_t>(text[i]);
        const bool invalid = codePage == CP_UTF8 && byte >= 0x80;
        if (invalid && flags == MB_ERR_INVALID_CHARS) {
            return 0;
        }
        if (i < outSize) {
            out[i] = invalid ? L'\xFFFD' : static_cast<wchar_t>(byte);
        }
    }
    return size;
}
