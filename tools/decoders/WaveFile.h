#pragma once

#include "decoders/DecoderRecords.h"
#include "tools/decoders/BoundedFile.h"

#include <cstdint>
#include <vector>

/// Where the parts of a RIFF/WAVE file lie. All of it is within the file.
struct WaveFile {
    AudioFormat format = {}; ///< as stored, `cbSize` no larger than the bytes that are there
    uint64_t audioOffset = 0;
    uint64_t audioSize = 0;         ///< bytes
    std::vector<Section> infoLists; ///< contents of the LIST chunks of type INFO
};

/// A chunk or form type as it lies in the file.
constexpr uint32_t RiffId(const char (&text)[5]) noexcept {
    uint32_t id = 0;
    for (int i = 3; i >= 0; --i) {
        id = id << 8 | static_cast<uint8_t>(text[i]);
    }
    return id;
}

/// Reads the chunks up to the end of the file, whatever size the RIFF header states. The first format and the
/// first audio chunk count. A chunk larger than what is left is cut; an audio chunk whose size was never
/// filled in (0xFFFFFFFF, or 0 when by the RIFF header nothing follows it) extends to the end of the file.
/// False when the file is not RIFF/WAVE or has no format.
bool ReadWaveFile(BoundedFile& file, WaveFile& out);
