#pragma once

#include "decoders/clZentaroDecoder.h"
#include "support/XFileFind.h"
#include "support/XString.h"

/// The libraries in the folder "decoder" below `programFolder`: every "*.dll", sub-folders of such a name
/// included.
XFileFind ListDecoderLibraries(const XString& programFolder);

/// Finds the decoder library for a file by its extension alone: the registry cache first, then every library
/// in the folder "decoder" beside the process's program, in the order in which the system lists them. On
/// success `decoder` holds the library with an instance made with `context`, and the choice is stored in the
/// cache. On failure nothing is kept and a stale cache entry stays as it was.
bool FindDecoderForFile(const XString& fileName, clZentaroDecoder& decoder, void* context);
