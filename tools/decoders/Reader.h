#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Reads bytes from front to back. Sizes found in them can be used unchecked: a read that would go beyond the
/// end fails and changes nothing. The bytes must outlive it and what it gives out.
class Reader {
public:
    explicit Reader(std::string_view bytes) noexcept : m_rest(bytes) {}

    size_t Remaining() const noexcept { return m_rest.size(); }

    /// The next `size` bytes, or all that remain.
    std::string_view Take(size_t size) noexcept {
        const std::string_view taken = m_rest.substr(0, size);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    bool Read(std::string_view& out, size_t size) noexcept {
        const bool isThere = size <= Remaining();
        out = isThere ? Take(size) : out;
        return isThere;
    }

    /// A number or an array of bytes, as it lies there: little-endian.
    template<class Value>
    bool Read(Value& value) noexcept {
        std::string_view bytes;
        if (!Read(bytes, sizeof value)) {
            return false;
        }
        std::memcpy(&value, bytes.data(), sizeof value);
        return true;
    }

    bool ReadBig(uint32_t& value) noexcept {
        uint8_t bytes[4];
        if (!Read(bytes)) {
            return false;
        }
        value = uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
        return true;
    }

private:
    std::string_view m_rest;
};
