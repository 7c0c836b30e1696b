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

} // namespace

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

uint32_t ByteRate(const AudioFormat& format) noexcept {
    uint32_t rate = format.nAvgBytesPerSec;
    const uint16_t tag = EffectiveTag(format);
    if (tag == kPcm || tag == kIeeeFloat) {
        // The product is a signed 32-bit number and the block size has 16 bits, whatever that cuts off.
        const uint32_t bits = uint32_t{format.nChannels} * format.wBitsPerSample;
        rate = static_cast<uint16_t>(static_cast<int32_t>(bits) / 8) * format.nSamplesPerSec;
    }
    return rate != 0 ? rate : 1;
}
