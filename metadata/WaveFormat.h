#pragma once

#include "decoders/DecoderRecords.h"

// What follows from an audio format. Pure code.

/// The format tag, or the one that the sub-format of an extensible format stands for.
uint16_t EffectiveTag(const AudioFormat& format) noexcept;

/// Bytes of audio per second. For PCM and IEEE float, plain or extensible, they are worked out anew from
/// channels, bits and sample rate. Never 0.
uint32_t ByteRate(const AudioFormat& format) noexcept;
