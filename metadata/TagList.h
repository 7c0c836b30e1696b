#pragma once

#include "support/ByteBuffer.h"
#include "support/XString.h"

#include <cstdint>
#include <vector>

/// One named value of an audio file: an ID tag or an audio property.
struct TagEntry {
    XString name;
    XString value;
    ByteBuffer rawData; ///< binary content, such as a picture; empty for a text entry
};

using TagList = std::vector<TagEntry>;

/// Parses a packed tag list (decoders/DecoderRecords.h) in its order, replacing what `out` held. The bytes
/// may be at any address and hold anything: nothing at or past `data + size` is read, and the parse ends at
/// the first entry that does not fit, keeping what was read so far. Null or a size below 1 gives an empty
/// list. Pure code.
void ParseTagBlob(TagList& out, const void* data, int32_t size);
