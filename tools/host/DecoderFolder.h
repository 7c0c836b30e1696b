#pragma once

#include "decoders/clZentaroDecoder.h"

/// Reads what `openFlags` (OpenFlags) ask for with the first library in the folder "decoder" beside the
/// program that lists the file's extension; `decoder` then holds it, and with it what `report` points to. The
/// converter knows its libraries, so no registry cache is used. False, after a message, when there is no such
/// file, no library lists the extension or the library cannot read the file.
bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, clZentaroDecoder& decoder,
                     DecoderReport& report);
