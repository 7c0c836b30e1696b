#pragma once

#include "decoders/clZentaroDecoder.h"
#include "support/XString.h"

/// Finds the first library in the folder "decoder" below `programFolder` that decodes the extension, in the
/// order in which the system lists them. On success `decoder` holds the library with an instance made with
/// `context`; on failure nothing is kept.
bool FindDecoderInFolder(const XString& programFolder, const XString& extension, clZentaroDecoder& decoder,
                         void* context);

/// Finds the decoder library for a file by its extension alone: the registry cache first, then as
/// FindDecoderInFolder below the folder of the process's program. On success the choice is stored in the
/// cache; on failure a stale entry stays as it was.
bool FindDecoderForFile(const XString& fileName, clZentaroDecoder& decoder, void* context);
