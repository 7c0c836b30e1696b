#pragma once

#include "support/CreateRecord.h"
#include "support/XString.h"

/// What the metadata code borrows from one plug-in instance for the length of a call.
struct MetadataContext {
    const CreateRecord& log;        ///< owner of every trace and error line
    void* decoderContext;           ///< handed through to the decoder libraries' Create
    const XString& xsltFile;        ///< path of the style sheet; empty for none
    const XString& outputExtension; ///< appended as it stands; empty means ".xml"
    const XString& outputName;      ///< replaces the whole output path; empty for none
};
