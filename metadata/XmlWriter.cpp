#include "metadata/XmlWriter.h"

#include "metadata/XmlText.h"
#include "support/UnitBlock.h"
#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

/// Code units that one becomes at most, in "&quot;" or "&apos;".
constexpr size_t kMaxEscapedUnits = 6;

/// Texts are appended in slices of this many units, so that a slice fits the chunk whatever it becomes.
constexpr size_t kSliceSize = 1024;
static_assert(kSliceSize * kMaxEscapedUnits < XmlWriter::kChunkSize);

/// What a code unit becomes.
struct Escaped {
    wchar_t changedBits; // to make the unit the first one stored: none, or those that make it "&"
    wchar_t rest[kMaxEscapedUnits - 1]; // what follows, and zeros
    uint32_t size;                      // units, the first included
};

/// By code unit. Units above "?", the last entry, need no escaping either and are looked up there.
constexpr std::array<Escaped, 64> kEscaped = [] {
    std::array<Escaped, 64> table{};
    table.fill({0, {}, 1});
    table[L'&'] = {L'&' ^ L'&', {L'a', L'm', L'p', L';'}, 5};
    table[L'"'] = {L'"' ^ L'&', {L'q', L'u', L'o', L't', L';'}, 6};
    table[L'\''] = {L'\'' ^ L'&', {L'a', L'p', L'o', L's', L';'}, 6};
    table[L'<'] = {L'<' ^ L'&', {L'l', L't', L';'}, 4};
    table[L'>'] = {L'>' ^ L'&', {L'g', L't', L';'}, 4};
    return table;
}();

/// Has no branch: where these characters stand in a text cannot be predicted. To choose between the unit and
/// "&" was slower than to flip bits.
size_t EscapeUnit(wchar_t unit, std::span<wchar_t> out) noexcept {
    const Escaped& escaped = kEscaped[std::min(size_t{unit}, kEscaped.size() - 1)];
    out[0] = unit ^ escaped.changedBits;
    std::memcpy(out.subspan<1, kMaxEscapedUnits - 1>().data(), escaped.rest, sizeof escaped.rest);
    return escaped.size;
}

/// Stores the escaped text in `out`, which must have kMaxEscapedUnits for each code unit of the text.
/// Returns the number of units stored.
size_t EscapeXmlText(Utf16View text, std::span<wchar_t> out) noexcept {
    size_t size = 0;
    for (size_t index = 0; index < text.Size();) {
        const size_t rest = text.Size() - index;
        if (rest >= UnitBlock::kSize && !text.BlockAt(index).HasMarkup()) {
            text.BlockAt(index).Store(out.subspan(size).first<UnitBlock::kSize>());
            index += UnitBlock::kSize;
            size += UnitBlock::kSize;
            continue;
        }
        for (const size_t end = index + std::min(rest, UnitBlock::kSize); index < end; ++index) {
            size += EscapeUnit(text[index], out.subspan(size));
        }
    }
    return size;
}

/// As EscapeXmlText, with the element name; `out` must have a unit for each of the name's.
size_t MakeElementName(Utf16View name, std::span<wchar_t> out) noexcept {
    size_t size = 0;
    for (size_t i = 0; i < name.Size(); ++i) {
        out[size] = name[i];
        size += IsLeftOutOfNames(name[i]) ? 0u : 1u;
    }
    return size;
}

Utf16View TakeSlice(Utf16View& text) noexcept {
    const Utf16View slice = text.First(std::min(text.Size(), kSliceSize));
    text = text.After(slice.Size());
    return slice;
}

} // namespace

XmlWriter::XmlWriter(std::string_view lineEnd, Take take)
    : m_lineEnd(lineEnd), m_take(std::move(take)), m_chunk(new wchar_t[kChunkSize]) {}

void XmlWriter::AppendEscaped(Utf16View text) {
    while (!text.IsEmpty()) {
        const Utf16View slice = TakeSlice(text);
        m_size += EscapeXmlText(slice, MakeRoom(slice.Size() * kMaxEscapedUnits));
    }
}

void XmlWriter::AppendElementName(Utf16View name) {
    while (!name.IsEmpty()) {
        const Utf16View slice = TakeSlice(name);
        m_size += MakeElementName(slice, MakeRoom(slice.Size()));
    }
}

void XmlWriter::Flush() {
    m_take({m_chunk.get(), m_size});
    m_size = 0;
}

void XmlWriter::HandOn() {
    const wchar_t last = m_chunk[m_size - 1];
    const bool isHalf = IsHighSurrogate(last); // its other half may come next
    m_size -= isHalf ? 1 : 0;
    Flush();
    if (isHalf) {
        m_chunk[m_size++] = last;
    }
}
