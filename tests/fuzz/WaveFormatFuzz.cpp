// What is read of a wave format, compared with plain arithmetic.

#include "metadata/WaveFormat.h"
#include "tests/fuzz/PlainDocument.h"
#include "tests/fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    AudioFormat format = {};
    std::memcpy(&format, data, std::min(size, sizeof format));
    const WaveFormat view(format);
    Require(view.AvgBytesPerSec() == PlainByteRate(format), "byte rate");
    Require(view.SamplesPerSec() == static_cast<int32_t>(format.nSamplesPerSec), "sample rate");
    Require(view.Channels() == format.nChannels && view.BitsPerSample() == format.wBitsPerSample,
            "taken over");
    return 0;
}
