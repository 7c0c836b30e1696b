#pragma once

#include "support/ByteBuffer.h"
#include "support/DebugLog.h"
#include "support/XString.h"
#include "support/XStringList.h"

/// Transforms the document's lines by a style sheet through MSXML, on the calling thread. True with the
/// output bytes, as MSXML wrote them, in `out`; false after the failure has been reported under `scope`.
bool TransformDocument(const CreateRecord& log, const wchar_t* scope, const XStringList& lines,
                       const XString& styleSheetPath, ByteBuffer& out);
