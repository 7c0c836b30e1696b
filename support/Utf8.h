#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// UTF-8 from UTF-16. Pure code.

/// Bytes that one code unit becomes, at most; a surrogate pair becomes four.
inline constexpr size_t kMaxUtf8Bytes = 3;

inline bool IsHighSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
inline bool IsLowSurrogate(uint32_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

/// Stores the text at the beginning of `out`, which must have kMaxUtf8Bytes for each code unit, and returns
/// the number of bytes stored. An unpaired surrogate becomes U+FFFD, as with WideCharToMultiByte.
size_t EncodeUtf8(std::wstring_view text, std::span<char> out) noexcept;
