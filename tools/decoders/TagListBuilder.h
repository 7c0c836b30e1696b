#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Collects names and values and packs them into a TagBlob (decoders/DecoderRecords.h). Texts end at their
/// first zero unit, because that is how the list marks their ends.
class TagListBuilder {
public:
    /// Adds a text entry, or one with binary content, which must outlive the builder. A text whose name was
    /// added before, in whatever case of its ASCII letters, keeps that one's place and spelling, and the
    /// value is appended to the earlier ones after a CR.
    void Add(std::wstring_view name, std::wstring_view value, std::string_view data = {});

    /// An entry that would make the list larger than its signed 32-bit size can express is left out.
    std::vector<uint8_t> Pack() const;

private:
    struct Entry {
        std::wstring name;
        std::wstring value;
        std::string_view data;
    };

    std::vector<Entry> m_entries;
    // A tree, not a hash table: no names in a file can make it slow.
    std::map<std::wstring, size_t> m_indexByFoldedName; // of texts
};
