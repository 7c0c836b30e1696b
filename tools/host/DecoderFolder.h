#pragma once

#include "decoders/DecoderRecords.h"
#include "support/ByteBuffer.h"
#include "support/XString.h"

/// What the converter knows about a file from its decoder libraries.
struct FileFacts {
    AudioInfo audioInfo = {};
    ByteBuffer idTags;          ///< packed tag list, or empty
    ByteBuffer audioProperties; ///< packed tag list, or empty
};

/// Reads what `openFlags` (OpenFlags) ask for with the first library in the folder "decoder" beside the
/// program that lists the file's extension. The converter knows its libraries, so no registry cache is used.
/// False, after a message, when no library lists the extension or the library cannot read the file.
bool ReadFileFacts(const XString& fileName, uint32_t openFlags, FileFacts& facts);
