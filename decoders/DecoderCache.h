#pragma once

#include "support/XString.h"

// The per-user registry cache that maps a file extension to the library that last decoded it: one REG_SZ
// value per extension, named with its dot and in the case of the file name, holding the library's full path.
// Other processes may write it at the same time; the last writer wins.

/// The path stored for an extension; empty when there is none or the registry refuses.
XString ReadCacheEntry(const XString& extension);

/// Stores the path for an extension; a failure is ignored.
void WriteCacheEntry(const XString& extension, const XString& libraryPath);
