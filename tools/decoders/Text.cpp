#include "tools/decoders/Text.h"

#include <windows.h>

namespace {

/// Empty also when the flags make the system refuse the text.
std::wstring Convert(UINT codePage, DWORD flags, std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int units = bytes == 0 ? 0 : MultiByteToWideChar(codePage, flags, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<size_t>(units), L'\0');
    if (units != 0) {
        MultiByteToWideChar(codePage, flags, text.data(), bytes, wide.data(), units);
    }
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

std::wstring HexText(const uint8_t* bytes, size_t size) {
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring text;
    text.reserve(2 * size);
    for (size_t i = 0; i < size; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}
