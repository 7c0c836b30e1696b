#pragma once

#include "support/UnitBlock.h"
#include "support/XString.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

/// UTF-16 code units that the view does not own: not terminated, and at any address, odd ones included.
/// Pure code.
class Utf16View {
public:
    Utf16View() noexcept = default;
    Utf16View(const void* units, size_t size) noexcept
        : m_bytes(static_cast<const uint8_t*>(units)), m_size(size) {}
    Utf16View(const XString& text) noexcept : Utf16View(text.Text(), text.Size()) {}

    size_t Size() const noexcept { return m_size; }
    bool IsEmpty() const noexcept { return m_size == 0; }

    /// `index` counts from 0 and must be below Size().
    wchar_t operator[](size_t index) const noexcept {
        wchar_t unit = 0;
        std::memcpy(&unit, m_bytes + index * sizeof unit, sizeof unit);
        return unit;
    }

    /// The first `size` units; `size` must not exceed Size().
    Utf16View First(size_t size) const noexcept { return Utf16View(m_bytes, size); }

    /// The units after the first `size`; `size` must not exceed Size().
    Utf16View After(size_t size) const noexcept {
        return Utf16View(m_bytes + size * sizeof(wchar_t), m_size - size);
    }

    /// The eight units from `index` on, all of which must lie in the view.
    UnitBlock BlockAt(size_t index) const noexcept { return UnitBlock(m_bytes + index * sizeof(wchar_t)); }

    /// Index of the first `unit`, or Size() when there is none.
    size_t Find(wchar_t unit) const noexcept {
        size_t index = 0;
        while (m_size - index >= UnitBlock::kSize && !BlockAt(index).Has(unit)) {
            index += UnitBlock::kSize;
        }
        while (index < m_size && (*this)[index] != unit) {
            ++index;
        }
        return index;
    }

private:
    const uint8_t* m_bytes = nullptr;
    size_t m_size = 0;
};
