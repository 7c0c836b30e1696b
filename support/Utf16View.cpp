#include "support/Utf16View.h"

size_t Utf16View::Find(wchar_t unit) const noexcept {
    // Four units at a time while none of them is the one: then no lane of `lanes` is zero.
    constexpr uint64_t kOnes = 0x0001'0001'0001'0001;
    constexpr size_t kLanes = sizeof kOnes / sizeof unit;
    size_t index = 0;
    while (m_size - index >= kLanes) {
        uint64_t lanes = 0;
        std::memcpy(&lanes, m_bytes + index * sizeof unit, sizeof lanes);
        lanes ^= kOnes * static_cast<uint16_t>(unit);
        if (((lanes - kOnes) & ~lanes & (kOnes << 15)) != 0) {
            break;
        }
        index += kLanes;
    }
    while (index < m_size && (*this)[index] != unit) {
        ++index;
    }
    return index;
}
