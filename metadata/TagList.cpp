#include "metadata/TagList.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int32_t kSizeWord = sizeof(int32_t);

bool TakeInt32(std::span<const uint8_t>& bytes, int32_t& value) noexcept {
    if (bytes.size() < sizeof value) {
        return false;
    }
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes = bytes.subspan(sizeof value);
    return true;
}

/// Takes the code units up to a zero, and the zero, or all there are. Of an odd number of bytes without a
/// zero the last one is left.
Utf16View TakeText(std::span<const uint8_t>& bytes) noexcept {
    const Utf16View units(bytes.data(), bytes.size() / sizeof(wchar_t));
    const size_t size = units.Find(0);
    bytes = bytes.subspan((size < units.Size() ? size + 1 : size) * sizeof(wchar_t));
    return units.First(size);
}

/// Reads what follows an entry's size word; false when the list ends with this entry.
bool ReadEntry(TagEntry& entry, std::span<const uint8_t> bytes) noexcept {
    // A lone byte is too short for any text and is binary data at once.
    if (bytes.size() > 1) {
        entry.name = TakeText(bytes);
    }
    if (bytes.empty()) {
        return false;
    }
    entry.value = TakeText(bytes);
    entry.rawData = bytes;
    return true;
}

} // namespace

void TagList::Iterator::Read() noexcept {
    int32_t entrySize = 0;
    m_ended = m_count < 1 || !TakeInt32(m_bytes, entrySize) || entrySize < 0 ||
              (entrySize > kSizeWord && static_cast<size_t>(entrySize - kSizeWord) > m_bytes.size());
    if (m_ended) {
        return;
    }
    // An entry that does not even cover its own size word is listed and ends the list.
    const size_t rest = static_cast<size_t>(std::max(entrySize - kSizeWord, 0));
    m_entry = {};
    m_count = ReadEntry(m_entry, m_bytes.first(rest)) ? m_count - 1 : 0;
    m_bytes = m_bytes.subspan(rest);
}

TagList ParseTagBlob(const void* data, int32_t size) noexcept {
    if (data == nullptr || size < 1) {
        return {};
    }
    std::span<const uint8_t> bytes(static_cast<const uint8_t*>(data), static_cast<size_t>(size));
    int32_t count = 0;
    return TakeInt32(bytes, count) ? TagList(bytes, count) : TagList();
}
