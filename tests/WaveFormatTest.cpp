#include "metadata/WaveFormat.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(WaveFormat, WorksOutTheByteRateOfPcmAndFloat) {
    const auto plain = [](uint16_t tag, uint16_t channels, uint16_t bits, uint32_t rate) {
        AudioFormat format = {};
        format.wFormatTag = tag;
        format.nChannels = channels;
        format.wBitsPerSample = bits;
        format.nSamplesPerSec = rate;
        format.nAvgBytesPerSec = 777;
        return format;
    };
    const auto extensible = [&](uint8_t subFormat, uint16_t cbSize, uint8_t last = 0x71) {
        AudioFormat format = plain(0xFFFE, 2, 24, 48000);
        format.cbSize = cbSize;
        const uint8_t guid[16] = {subFormat, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, last};
        std::memcpy(format.SubFormat, guid, sizeof guid);
        return format;
    };
    const struct {
        const char* label;
        AudioFormat format;
        uint32_t expected;
    } rows[] = {
        {"PCM", plain(1, 2, 16, 44100), 176400},
        {"other formats keep theirs", plain(85, 2, 0, 44100), 777},
        {"extensible PCM", extensible(1, 22), 288000},
        {"extensible float", extensible(3, 0xFFFF), 288000},
        {"extension too short", extensible(1, 21), 777},
        {"sub-format that is no plain tag", extensible(1, 22, 0x72), 777},
        {"block size is cut to whole bytes", plain(1, 3, 12, 8000), 32000},
        // 65535 x 65535 is -131071 as a signed number; an eighth of it is 0xC001 in 16 bits.
        {"block size wraps", plain(1, 0xFFFF, 0xFFFF, 1), 0xC001},
        {"byte rate wraps", plain(1, 1, 16, 0xC0000000), 0x80000000},
        {"never 0", plain(1, 0, 16, 44100), 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ByteRate(row.format), row.expected) << row.label;
    }
}

} // namespace
