#pragma once

#include "decoders/DecoderRecords.h"
#include "tools/decoders/Reader.h"

#include <vector>

/// The parts of a RIFF/WAVE file, where they lie.
struct WaveFile {
    AudioFormat format = {}; ///< as stored, `cbSize` no larger than the bytes that are there
    std::string_view audio;
    std::vector<Reader> infoLists; ///< contents of the LIST chunks of type INFO
};

/// Reads the chunks up to the end of the file, whatever size the RIFF header states. The first format and the
/// first audio chunk count. A chunk larger than what remains is cut; an audio chunk whose size was never
/// filled in (0xFFFFFFFF, or 0 when by the RIFF header nothing follows it) extends to the end of the file.
/// False when the file is not RIFF/WAVE or has no format.
bool ReadWaveFile(std::string_view file, WaveFile& out);
