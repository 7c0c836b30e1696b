#pragma once

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>
#include <span>

/// Eight UTF-16 code units in one SSE2 register, which every x64 processor has. Pure code.
class UnitBlock {
public:
    static constexpr size_t kSize = 8;

    /// Reads eight units from any address.
    explicit UnitBlock(const void* units) noexcept
        : m_units(_mm_loadu_si128(static_cast<const __m128i*>(units))) {}

    /// Whether one of the units is `unit`.
    bool Has(wchar_t unit) const noexcept { return Any(Equal(unit)); }

    /// Whether one of the units is & " ' < or >.
    bool HasMarkup() const noexcept {
        const __m128i quotes = _mm_or_si128(Equal(L'"'), Equal(L'\''));
        const __m128i brackets = _mm_or_si128(Equal(L'<'), Equal(L'>'));
        return Any(_mm_or_si128(Equal(L'&'), _mm_or_si128(quotes, brackets)));
    }

    /// Whether all units are below 0x80.
    bool IsAscii() const noexcept {
        return !Any(_mm_cmpgt_epi16(_mm_srli_epi16(m_units, 7), _mm_setzero_si128()));
    }

    void Store(std::span<wchar_t, kSize> out) const noexcept {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out.data()), m_units);
    }

    /// Stores each unit as one byte; non-ASCII units give unspecified bytes.
    void StoreAsBytes(std::span<char, kSize> out) const noexcept {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out.data()), _mm_packus_epi16(m_units, m_units));
    }

private:
    /// All bits set in the lanes of the units that equal `unit`.
    __m128i Equal(wchar_t unit) const noexcept {
        return _mm_cmpeq_epi16(m_units, _mm_set1_epi16(static_cast<int16_t>(unit)));
    }

    static bool Any(__m128i lanes) noexcept { return _mm_movemask_epi8(lanes) != 0; }

    __m128i m_units;
};
