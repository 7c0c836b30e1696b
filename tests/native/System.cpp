#include <windows.h>

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
