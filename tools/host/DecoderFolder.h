#pragma once

#include "decoders/DecoderRecords.h"
#include "support/XString.h"

#include <vector>

/// What the converter knows about a file.
struct FileReport {
    AudioInfo audioInfo = {};
    std::vector<uint8_t> idTags;     ///< packed tag list, or empty
    std::vector<uint8_t> properties; ///< packed tag list, or empty
};

/// Reads what `openFlags` (OpenFlags) ask for with the first library in the folder "decoder" beside the
/// program that lists the file's extension. The converter knows its libraries, so no registry cache is used.
/// False, after a message, when there is no such file, no library lists the extension or the library cannot
/// read the file.
bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, FileReport& out);
