#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Collects names and values and packs them into one tag list (decoders/DecoderRecords.h).
///
/// Texts end at their first zero unit, because that is how the list marks their ends. What would make the
/// list larger than its signed 32-bit size can express is left out.
class TagListBuilder {
public:
    /// Adds a text entry. A name that was added before, in whatever case of its ASCII letters, keeps its
    /// place and first spelling, and the value is appended to the earlier ones after a CR.
    void Add(std::wstring_view name, std::wstring_view value);

    /// Adds an entry of its own with binary content, which must not be empty: an entry without any counts as
    /// text.
    void AddBinary(std::wstring_view name, std::wstring_view value, std::vector<uint8_t>&& data);

    std::vector<uint8_t> Pack() const;

private:
    struct Entry {
        std::wstring name;
        std::wstring value;
        std::vector<uint8_t> data;

        size_t PackedSize() const noexcept;
    };

    bool TakeRoom(size_t bytes) noexcept;

    std::vector<Entry> m_entries;
    // A tree, not a hash table: no names in a file can make it slow.
    std::map<std::wstring, size_t> m_indexByFoldedName;
    size_t m_packedSize = sizeof(int32_t);
};
