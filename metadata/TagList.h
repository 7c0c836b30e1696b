#pragma once

#include "support/Utf16View.h"

#include <cstdint>
#include <iterator>
#include <span>

/// One named value of an audio file, an ID tag or an audio property, as it stands in a TagBlob.
struct TagEntry {
    Utf16View name;
    Utf16View value;
    std::span<const uint8_t> rawData; ///< binary content, such as a picture; empty for a text entry
};

/// The entries of a TagBlob (decoders/DecoderRecords.h) in their order, read in place as a range: the blob's
/// bytes must outlive it and what it yields. Pure code.
class TagList {
public:
    class Iterator {
    public:
        Iterator(std::span<const uint8_t> bytes, int32_t count) noexcept : m_bytes(bytes), m_count(count) {
            Read();
        }
        const TagEntry& operator*() const noexcept { return m_entry; }
        Iterator& operator++() noexcept {
            Read();
            return *this;
        }
        bool operator==(std::default_sentinel_t) const noexcept { return m_ended; }

    private:
        void Read() noexcept;

        std::span<const uint8_t> m_bytes; // not read yet
        int32_t m_count;                  // of entries to come, at most
        TagEntry m_entry;
        bool m_ended = false;
    };

    /// A list without entries.
    TagList() noexcept = default;

    /// `bytes` begins behind the count.
    TagList(std::span<const uint8_t> bytes, int32_t count) noexcept : m_bytes(bytes), m_count(count) {}

    Iterator begin() const noexcept { return Iterator(m_bytes, m_count); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    std::span<const uint8_t> m_bytes;
    int32_t m_count = 0;
};

/// The list in the TagBlob at `data`, which may be at any address and hold anything: nothing at or past
/// `data + size` is read, and the list ends at the first entry that does not fit. Null or a size below 1
/// gives an empty list.
TagList ParseTagBlob(const void* data, int32_t size) noexcept;

/// Cuts a multi-valued text at each CR. An empty text has no part at all; a text that ends in CR has an empty
/// last part. LF is an ordinary character.
class SplitValues {
public:
    explicit SplitValues(Utf16View text) noexcept : m_rest(text), m_ended(text.IsEmpty()) {}

    /// False when there are no further parts.
    bool Next(Utf16View& part) noexcept {
        if (m_ended) {
            return false;
        }
        const size_t size = m_rest.Find(L'\r');
        part = m_rest.First(size);
        m_ended = size == m_rest.Size();
        m_rest = m_ended ? Utf16View() : m_rest.After(size + 1);
        return true;
    }

private:
    Utf16View m_rest;
    bool m_ended;
};
