#include "tools/decoders/Text.h"

#include <windows.h>

namespace {

/// Empty also when the flags make the system refuse the text.
std::wstring Convert(UINT codePage, DWORD flags, std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0'); // no text takes more units than bytes
    const int units = MultiByteToWideChar(codePage, flags, text.data(), bytes, wide.data(), bytes);
    wide.resize(static_cast<size_t>(units));
    return wide;
}

} // namespace

std::wstring FromUtf8(std::string_view text) {
    return Convert(CP_UTF8, 0, text);
}

std::wstring FromUtf8OrAnsi(std::string_view text) {
    std::wstring wide = Convert(CP_UTF8, MB_ERR_INVALID_CHARS, text);
    return wide.empty() ? Convert(CP_ACP, 0, text) : wide;
}

std::wstring Hex(uint32_t value, int digits) {
    std::wstring text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        text += L"0123456789abcdef"[value >> shift & 15];
    }
    return text;
}
