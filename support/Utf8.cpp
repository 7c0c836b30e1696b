#include "support/Utf8.h"

#include "support/UnitBlock.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

constexpr char Lead(uint32_t marker, uint32_t bits) noexcept {
    return static_cast<char>(marker | bits);
}
constexpr char Tail(uint32_t bits) noexcept {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

/// The one or two bytes of a character below U+0800.
using ShortForm = std::array<char, 2>;
using ShortForms = std::array<ShortForm, 0x800>;

constexpr ShortForms MakeShortForms() noexcept {
    ShortForms forms{};
    for (uint32_t c = 0; c < forms.size(); ++c) {
        forms[c] = c < 0x80 ? ShortForm{static_cast<char>(c)} : ShortForm{Lead(0xC0, c >> 6), Tail(c)};
    }
    return forms;
}
constexpr ShortForms kShortForms = MakeShortForms();

/// Encodes the character at `index`, moves `index` past it, and returns the number of bytes.
size_t EncodeCharacter(std::wstring_view text, size_t& index, std::span<char> out) noexcept {
    uint32_t character = text[index++];
    if (character < kShortForms.size()) {
        // No branch between one byte and two: in most languages their order cannot be predicted.
        std::memcpy(out.first(sizeof(ShortForm)).data(), kShortForms[character].data(), sizeof(ShortForm));
        return character < 0x80 ? 1 : 2;
    }
    if (IsHighSurrogate(character) && index < text.size() && IsLowSurrogate(text[index])) {
        character = 0x10000 + ((character & 0x3FF) << 10) + (text[index++] & 0x3FFu);
        out[0] = Lead(0xF0, character >> 18);
        out[1] = Tail(character >> 12);
        out[2] = Tail(character >> 6);
        out[3] = Tail(character);
        return 4;
    }
    if (IsHighSurrogate(character) || IsLowSurrogate(character)) {
        character = kReplacement;
    }
    out[0] = Lead(0xE0, character >> 12);
    out[1] = Tail(character >> 6);
    out[2] = Tail(character);
    return 3;
}

} // namespace

size_t EncodeUtf8(std::wstring_view text, std::span<char> out) noexcept {
    size_t size = 0;
    for (size_t index = 0; index < text.size();) {
        const size_t rest = text.size() - index;
        if (rest >= UnitBlock::kSize) {
            const UnitBlock block(&text[index]);
            if (block.IsAscii()) {
                block.StoreAsBytes(out.subspan(size).first<UnitBlock::kSize>());
                index += UnitBlock::kSize;
                size += UnitBlock::kSize;
                continue;
            }
        }
        for (const size_t end = index + std::min(rest, UnitBlock::kSize); index < end;) {
            size += EncodeCharacter(text, index, out.subspan(size));
        }
    }
    return size;
}
