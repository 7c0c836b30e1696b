// The view of a wave format, against the plainest arithmetic.

#include "metadata/WaveFormat.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <cstring>

namespace {

bool IsPcmOrFloat(const AudioFormat& format) {
    uint8_t guid[16] = {0, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    for (const uint8_t tag : {uint8_t{1}, uint8_t{3}}) {
        guid[0] = tag;
        const bool isSubFormat = format.wFormatTag == 0xFFFE && format.cbSize >= 22 &&
                                 std::memcmp(format.SubFormat, guid, sizeof guid) == 0;
        if (format.wFormatTag == tag || isSubFormat) {
            return true;
        }
    }
    return false;
}

/// What a signed 32-bit number keeps of a large one.
int64_t Signed32(uint64_t value) {
    value &= 0xFFFFFFFF;
    return static_cast<int64_t>(value) - (value >= 0x80000000 ? 0x100000000 : 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    AudioFormat format = {};
    std::memcpy(&format, data, std::min(size, sizeof format));
    uint64_t rate = format.nAvgBytesPerSec;
    if (IsPcmOrFloat(format)) {
        const int64_t block = Signed32(uint64_t{format.nChannels} * format.wBitsPerSample) / 8;
        rate = (static_cast<uint64_t>(block) & 0xFFFF) * format.nSamplesPerSec;
    }
    const WaveFormat view(format);
    Require(view.AvgBytesPerSec() == (Signed32(rate) != 0 ? Signed32(rate) : 1), "byte rate");
    Require(view.SamplesPerSec() == Signed32(format.nSamplesPerSec), "sample rate");
    Require(view.Channels() == format.nChannels && view.BitsPerSample() == format.wBitsPerSample,
            "taken over");
    return 0;
}
