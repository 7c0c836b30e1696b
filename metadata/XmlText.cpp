#include "metadata/XmlText.h"

#include "support/UnitBlock.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

/// What a code unit becomes.
struct Escaped {
    wchar_t text[kMostEscapedUnits]; // the entity, or zeros
    wchar_t keptBits; // of the unit itself, which stands in place of the first zero: all or none
    uint16_t size;
};
constexpr Escaped kUnchanged = {L"", 0xFFFF, 1};

/// By code unit; the last entry, that of "?", also serves all units above it.
constexpr std::array<Escaped, 64> kEscaped = [] {
    std::array<Escaped, 64> table{};
    table.fill(kUnchanged);
    table[L'&'] = {{L'&', L'a', L'm', L'p', L';'}, 0, 5};
    table[L'"'] = {{L'&', L'q', L'u', L'o', L't', L';'}, 0, 6};
    table[L'\''] = {{L'&', L'a', L'p', L'o', L's', L';'}, 0, 6};
    table[L'<'] = {{L'&', L'l', L't', L';'}, 0, 4};
    table[L'>'] = {{L'&', L'g', L't', L';'}, 0, 4};
    return table;
}();

/// Has no branch: where these characters stand in a text cannot be predicted.
size_t EscapeUnit(wchar_t unit, std::span<wchar_t> out) noexcept {
    const Escaped& escaped = kEscaped[std::min(size_t{unit}, kEscaped.size() - 1)];
    std::memcpy(out.first(kMostEscapedUnits).data(), escaped.text, sizeof escaped.text);
    out[0] = static_cast<wchar_t>(escaped.text[0] | (unit & escaped.keptBits));
    return escaped.size;
}

bool IsLeftOutOfNames(wchar_t unit) noexcept {
    switch (unit) {
    case L'#':
    case L' ':
    case L'&':
    case L'"':
    case L'\'':
    case L'<':
    case L'>':
    case L'(':
    case L')':
    case L'/':
    case L'\\':
    case L':':
        return true;
    default:
        return false;
    }
}

} // namespace

size_t EscapeXmlText(Utf16View text, std::span<wchar_t> out) noexcept {
    size_t size = 0;
    size_t index = 0;
    while (index < text.Size()) {
        size_t end = text.Size();
        if (end - index >= UnitBlock::kSize) {
            const UnitBlock block = text.BlockAt(index);
            if (!block.HasMarkup()) {
                block.Store(out.subspan(size).first<UnitBlock::kSize>());
                index += UnitBlock::kSize;
                size += UnitBlock::kSize;
                continue;
            }
            end = index + UnitBlock::kSize;
        }
        for (; index < end; ++index) {
            size += EscapeUnit(text[index], out.subspan(size));
        }
    }
    return size;
}

size_t MakeElementName(Utf16View name, std::span<wchar_t> out) noexcept {
    size_t size = 0;
    for (size_t i = 0; i < name.Size(); ++i) {
        out[size] = name[i];
        size += IsLeftOutOfNames(name[i]) ? 0u : 1u;
    }
    return size;
}

wchar_t FirstOfElementName(Utf16View name) noexcept {
    for (size_t i = 0; i < name.Size(); ++i) {
        if (!IsLeftOutOfNames(name[i])) {
            return name[i];
        }
    }
    return 0;
}

bool SplitValues::Next(Utf16View& part) noexcept {
    if (m_ended) {
        return false;
    }
    const size_t size = m_rest.Find(L'\r');
    part = m_rest.First(size);
    m_ended = size == m_rest.Size();
    m_rest = m_ended ? Utf16View() : m_rest.After(size + 1);
    return true;
}
