#include "metadata/TagList.h"

#include <cstring>
#include <utility>

namespace {

/// Bytes still to be read; every read checks that they are there.
class Reader {
public:
    Reader(const uint8_t* bytes, size_t size) noexcept : m_bytes(bytes), m_size(size) {}

    size_t Size() const noexcept { return m_size; }

    bool ReadInt32(int32_t& value) noexcept {
        if (m_size < sizeof value) {
            return false;
        }
        std::memcpy(&value, m_bytes, sizeof value);
        Skip(sizeof value);
        return true;
    }

    /// Splits off the next `size` bytes, which must be there.
    Reader Take(size_t size) noexcept {
        const Reader taken(m_bytes, size);
        Skip(size);
        return taken;
    }

    /// The code units up to a zero, which is passed over, or up to the end. An odd last byte stays.
    XString ReadText() {
        const size_t units = m_size / sizeof(wchar_t);
        size_t count = 0;
        while (count < units && !IsZeroUnit(count)) {
            ++count;
        }
        XString text = XString::FromBytes(m_bytes, count);
        Skip((count < units ? count + 1 : count) * sizeof(wchar_t));
        return text;
    }

    ByteBuffer ReadRest() {
        ByteBuffer rest;
        rest.Assign(m_bytes, static_cast<uint32_t>(m_size));
        Skip(m_size);
        return rest;
    }

private:
    bool IsZeroUnit(size_t index) const noexcept {
        return (m_bytes[2 * index] | m_bytes[2 * index + 1]) == 0;
    }

    void Skip(size_t size) noexcept {
        m_bytes += size;
        m_size -= size;
    }

    const uint8_t* m_bytes;
    size_t m_size;
};

/// Reads what follows an entry's size word; false when the list ends with this entry.
bool ReadEntry(TagEntry& entry, Reader bytes) {
    // A lone byte is too short for any text and is binary data at once.
    if (bytes.Size() > 1) {
        entry.name = bytes.ReadText();
    }
    if (bytes.Size() == 0) {
        return false;
    }
    entry.value = bytes.ReadText();
    entry.rawData = bytes.ReadRest();
    return true;
}

} // namespace

void ParseTagBlob(TagList& out, const void* data, int32_t size) {
    out.clear();
    if (data == nullptr || size < 1) {
        return;
    }
    Reader bytes(static_cast<const uint8_t*>(data), static_cast<size_t>(size));
    int32_t count = 0;
    if (!bytes.ReadInt32(count)) {
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        constexpr int32_t kSizeWord = sizeof(int32_t);
        int32_t entrySize = 0;
        if (!bytes.ReadInt32(entrySize) || entrySize < 0 ||
            (entrySize > kSizeWord && static_cast<size_t>(entrySize - kSizeWord) > bytes.Size())) {
            return;
        }
        TagEntry& entry = out.emplace_back();
        // An entry that does not even cover its own size word is listed and ends the list.
        if (entrySize < kSizeWord ||
            !ReadEntry(entry, bytes.Take(static_cast<size_t>(entrySize - kSizeWord)))) {
            return;
        }
    }
}
