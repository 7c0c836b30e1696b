#pragma once

#include "decoders/DecoderRecords.h"
#include "tools/decoders/TagListBuilder.h"

#include <cstdint>
#include <string_view>

// What one decoder library knows about its file format. The exports, which are the same in all libraries, are
// written against these two functions; each library links one file that defines them.

/// What is read from a file. The sample libraries report the bitrate in kbit/s (1000 bits), the length in
/// milliseconds and the file size in bytes.
struct FileContent {
    AudioInfo info = {};
    TagListBuilder tags;
    TagListBuilder properties;
};

/// The file extension at `index`, from 0, with its dot; null past the last one.
const wchar_t* FormatExtension(uint32_t index) noexcept;

/// Reads a file of any content, which must outlive `out`. False when it is not of this format or ends before
/// its audio format is known; after that point a damaged or cut file gives what could be read. Throws
/// std::bad_alloc.
bool ReadFormat(std::string_view file, FileContent& out);
