#pragma once

#include "decoders/DecoderRecords.h"
#include "tools/decoders/BoundedFile.h"
#include "tools/decoders/TagListBuilder.h"

#include <cstdint>

// What one decoder library knows about its file format. The exports, which are the same in all libraries, are
// written against these two functions; each library links one file that defines them.

/// What is read from a file. The sample libraries report the bitrate in kbit/s (1000 bits), the length in
/// milliseconds and the file size in bytes.
struct AudioFacts {
    AudioInfo info = {};
    TagListBuilder tags;
    TagListBuilder properties;
};

/// The file extension at `index`, from 0, with its dot; null past the last one.
const wchar_t* FormatExtension(uint32_t index) noexcept;

/// Fills the members of `facts` that `openFlags` (OpenFlags, any number of them) ask for; others may be
/// filled, too. The content of the file may be anything. False when it is not of this format or ends before
/// its audio format is known; after that point a damaged or cut file gives what could be read. Throws
/// std::bad_alloc.
bool ReadFormat(BoundedFile& file, uint32_t openFlags, AudioFacts& facts);
