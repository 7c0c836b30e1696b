#include "bench/Texts.h"

#include <random>

std::wstring MakeText(const TextKind& kind, size_t size) {
    constexpr std::u32string_view kLetters = U"the quick brown fox jumps over a lazy dog";
    std::mt19937 random;
    std::bernoulli_distribution isDrawn(kind.share);
    std::wstring text;
    for (size_t i = 0; i < size; ++i) {
        const std::u32string_view from = isDrawn(random) ? kind.characters : kLetters;
        const char32_t character = from[random() % from.size()];
        if (character >= 0x10000) {
            text += static_cast<wchar_t>(0xD7C0 + (character >> 10));
            text += static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        } else {
            text += static_cast<wchar_t>(character);
        }
    }
    return text;
}
