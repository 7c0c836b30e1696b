#include "support/Utf8.h"

#include <windows.h>

#include <algorithm>

void AppendUtf8(std::string& out, const XString& text) {
    // Piece by piece through a small buffer: no second pass to learn the size, and no limit of the call's
    // 32-bit counts on the length of a text.
    constexpr size_t kPiece = 4096;
    constexpr size_t kMostBytesPerUnit = 3;
    char bytes[kPiece * kMostBytesPerUnit];

    const wchar_t* rest = text.Text();
    const wchar_t* const end = rest + text.Size();
    while (rest < end) {
        size_t count = std::min(kPiece, static_cast<size_t>(end - rest));
        if (rest + count < end && IS_HIGH_SURROGATE(rest[count - 1])) {
            --count; // a pair stays together
        }
        const int written = WideCharToMultiByte(CP_UTF8, 0, rest, static_cast<int>(count), bytes,
                                                static_cast<int>(sizeof bytes), nullptr, nullptr);
        out.append(bytes, static_cast<size_t>(written));
        rest += count;
    }
}
