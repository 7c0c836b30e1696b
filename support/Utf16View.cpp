#include "support/Utf16View.h"

size_t Utf16View::Find(wchar_t unit) const noexcept {
    size_t index = 0;
    while (m_size - index >= UnitBlock::kSize && !BlockAt(index).Has(unit)) {
        index += UnitBlock::kSize;
    }
    while (index < m_size && (*this)[index] != unit) {
        ++index;
    }
    return index;
}
