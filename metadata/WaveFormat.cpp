#include "metadata/WaveFormat.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr uint16_t kPcm = 1;
constexpr uint16_t kIeeeFloat = 3;
constexpr uint16_t kExtensible = 0xFFFE;
constexpr uint16_t kExtensionSize = 22;

/// The sub-format of a plain tag is the tag followed by these bytes.
constexpr uint8_t kSubFormatTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                        0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

uint16_t EffectiveTag(const AudioFormat& format) noexcept {
    if (format.wFormatTag != kExtensible || format.cbSize < kExtensionSize ||
        !std::equal(std::begin(kSubFormatTail), std::end(kSubFormatTail),
                    format.SubFormat + sizeof(uint16_t))) {
        return format.wFormatTag;
    }
    uint16_t tag = 0;
    std::memcpy(&tag, format.SubFormat, sizeof tag);
    return tag;
}

} // namespace

WaveFormat::WaveFormat(const AudioFormat& format) noexcept : m_format(format) {
    const uint16_t tag = EffectiveTag(m_format);
    if (tag == kPcm || tag == kIeeeFloat) {
        // The product is a signed 32-bit number and the block size has 16 bits, whatever that cuts off.
        const uint32_t bits = uint32_t{m_format.nChannels} * m_format.wBitsPerSample;
        m_format.nBlockAlign = static_cast<uint16_t>(static_cast<int32_t>(bits) / 8);
        m_format.nAvgBytesPerSec = m_format.nBlockAlign * m_format.nSamplesPerSec;
    }
    if (m_format.nAvgBytesPerSec == 0) {
        m_format.nAvgBytesPerSec = 1;
    }
}
