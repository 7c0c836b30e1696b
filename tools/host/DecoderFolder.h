#pragma once

#include "decoders/DecoderRecords.h"
#include "support/ByteBuffer.h"
#include "support/XString.h"

/// What a decoder library reports to the converter about a file.
struct DecoderReport {
    AudioInfo audioInfo = {};
    ByteBuffer idTags;          ///< packed tag list, or empty
    ByteBuffer audioProperties; ///< packed tag list, or empty
};

/// Reads what `openFlags` (OpenFlags) ask for with the first library in the folder "decoder" beside the
/// program that lists the file's extension. The converter knows its libraries, so no registry cache is used.
/// False, after a message, when there is no such file, no library lists the extension or the library cannot
/// read the file.
bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, DecoderReport& report);
