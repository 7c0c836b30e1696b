#pragma once

#include "tools/host/Options.h"

#include <windows.h>

#include <cstdint>

/// The document that the plug-in is to write, watched from before the conversion on.
struct DocumentFile {
    /// The names follow from the settings and the converted file.
    explicit DocumentFile(const Options& options);

    /// Bytes of the document, or -1 when it was not written since construction.
    int64_t WrittenSize() const;

    XString path;
    XString styleSheet; ///< empty for none
    FILETIME writtenBefore;
};
