#pragma once

#include "decoders/DecoderRecords.h"

/// A normalised copy of an audio format. For PCM and IEEE float, plain or extensible, block size and byte
/// rate are worked out anew from channels, bits and sample rate. The byte rate is never 0. Pure code.
class WaveFormat {
public:
    explicit WaveFormat(const AudioFormat& format) noexcept;

    uint16_t Channels() const noexcept { return m_format.nChannels; }
    uint16_t BitsPerSample() const noexcept { return m_format.wBitsPerSample; }

    /// Signed as the document writes them.
    int32_t SamplesPerSec() const noexcept { return static_cast<int32_t>(m_format.nSamplesPerSec); }
    int32_t AvgBytesPerSec() const noexcept { return static_cast<int32_t>(m_format.nAvgBytesPerSec); }

private:
    AudioFormat m_format;
};
