#pragma once

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

/// Eight UTF-16 code units, looked at all at once: one register of SSE2, which every 64-bit processor of this
/// kind has. Pure code.
class UnitBlock {
public:
    static constexpr size_t kSize = 8;

    /// The eight units at `units`, any address.
    explicit UnitBlock(const void* units) noexcept
        : m_units(_mm_loadu_si128(static_cast<const __m128i*>(units))) {}

    /// Whether one of the units is `unit`.
    bool Has(wchar_t unit) const noexcept { return _mm_movemask_epi8(Equal(unit)) != 0; }

    /// Whether all units are ASCII and none is one of `stops`.
    template<class... Stops>
    bool IsAsciiWithout(Stops... stops) const noexcept {
        __m128i stop = _mm_subs_epu16(m_units, _mm_set1_epi16(0x7F)); // 0 in the lanes of ASCII units
        ((stop = _mm_or_si128(stop, Equal(stops))), ...);
        return _mm_movemask_epi8(_mm_cmpeq_epi16(stop, _mm_setzero_si128())) == 0xFFFF;
    }

    /// Stores the eight units as bytes; those beyond ASCII become others.
    void StoreAsBytes(char* out) const noexcept {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(m_units, m_units));
    }

private:
    /// All bits set in the lanes of the units that equal `unit`.
    __m128i Equal(wchar_t unit) const noexcept {
        return _mm_cmpeq_epi16(m_units, _mm_set1_epi16(static_cast<int16_t>(unit)));
    }

    __m128i m_units;
};
