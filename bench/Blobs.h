#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Blob = std::vector<uint8_t>;

/// What the values of a packed tag list are made of.
enum class Text {
    Ordinary,   ///< one special character and one beyond ASCII in 55
    Special,    ///< every tenth character needs an entity
    Ampersands, ///< nothing else
    ManyValues, ///< ten characters, then a CR
};

/// A packed tag list (decoders/DecoderRecords.h) of entries "Tag 0", "Tag 1", … whose values have `valueSize`
/// characters, each beginning at another place of the text.
Blob PackTags(int32_t count, size_t valueSize = 20, Text text = Text::Ordinary);

/// A packed tag list of one entry with `dataSize` bytes of binary content.
Blob PackPicture(size_t dataSize);

/// One entry of a packed tag list, in place.
struct PackedEntry {
    const wchar_t* name; ///< zero-terminated, like the value
    const wchar_t* value;
    bool hasData;
};

/// Calls `visit` for each entry of a list that PackTags or PackPicture made.
template<class Visit>
void ForEachEntry(const Blob& blob, Visit visit) {
    for (size_t at = sizeof(int32_t); at < blob.size();) {
        const uint8_t* const entry = blob.data() + at;
        const size_t size = *reinterpret_cast<const uint32_t*>(entry);
        const auto* const name = reinterpret_cast<const wchar_t*>(entry + sizeof(uint32_t));
        const wchar_t* const value = name + std::char_traits<wchar_t>::length(name) + 1;
        const wchar_t* const rest = value + std::char_traits<wchar_t>::length(value) + 1;
        at += size;
        visit(PackedEntry{name, value, reinterpret_cast<const uint8_t*>(rest) < entry + size});
    }
}
