#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Builds a TagBlob byte by byte, well formed or not.
class TagBlob {
public:
    /// A well-formed entry.
    TagBlob& Add(const std::wstring& name, const std::wstring& value, const std::vector<uint8_t>& raw = {}) {
        std::vector<uint8_t> rest;
        for (const std::wstring* text : {&name, &value}) {
            const auto* bytes = reinterpret_cast<const uint8_t*>(text->c_str());
            rest.insert(rest.end(), bytes, bytes + 2 * (text->size() + 1));
        }
        rest.insert(rest.end(), raw.begin(), raw.end());
        return AddSized(static_cast<int32_t>(rest.size()) + 4, rest);
    }

    /// An entry with any size word and any bytes behind it.
    TagBlob& AddSized(int32_t size, const std::vector<uint8_t>& rest) {
        AddWord(m_entries, size);
        m_entries.insert(m_entries.end(), rest.begin(), rest.end());
        ++m_count;
        return *this;
    }

    std::vector<uint8_t> Bytes() const { return WithCount(m_count); }

    std::vector<uint8_t> WithCount(int32_t count) const {
        std::vector<uint8_t> bytes;
        AddWord(bytes, count);
        bytes.insert(bytes.end(), m_entries.begin(), m_entries.end());
        return bytes;
    }

private:
    static void AddWord(std::vector<uint8_t>& bytes, int32_t word) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<uint8_t>(static_cast<uint32_t>(word) >> shift));
        }
    }

    std::vector<uint8_t> m_entries;
    int32_t m_count = 0;
};
