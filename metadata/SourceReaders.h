#pragma once

#include "decoders/DecoderRecords.h"
#include "metadata/MetadataContext.h"
#include "support/XString.h"

#include <cstdint>
#include <vector>

// Reads from a file on disk what the converter's decoder library for its extension reports, in three parts,
// and the file's times.
//
// The three readers answer -1 after an error line (the file is missing, no library decodes it, or the library
// fails to open it) and otherwise 1. A library that cannot be loaded a second time, or makes no second
// instance, answers 1 too: only a changed `out` shows that something was read. The document is written either
// way, so its writer ignores the results. Nothing is kept between calls; the library is loaded anew.

int32_t GetAudioInfo(const MetadataContext& context, const XString& fileName, AudioInfo& out);

/// `out` receives a TagBlob, and stays as it was when the library has none.
int32_t GetAudioProperties(const MetadataContext& context, const XString& fileName,
                           std::vector<uint8_t>& out);

/// As GetAudioProperties.
int32_t GetIDTags(const MetadataContext& context, const XString& fileName, std::vector<uint8_t>& out);

enum class FileTime { Created = 1, Modified = 2, Accessed = 3 };

/// One time of the file in UTC, as "2024-03-07T14:05:09" (GetFileTime); empty, after an error line, when
/// there is no such file. A file that cannot be opened has the zero time, 1601-01-01T00:00:00.
XString GetFormattedFileDateTime(const MetadataContext& context, const XString& fileName, FileTime which);
