#pragma once

#include "support/Com.h"
#include "support/CreateRecord.h"
#include "support/XString.h"

#include <cstdint>
#include <vector>

/// Transforms the document by a style sheet through MSXML, on the calling thread. True with the
/// output bytes, as MSXML wrote them, in `out`; false after the failure has been reported under `scope`.
bool TransformDocument(const CreateRecord& log, const wchar_t* scope, const Bstr& document,
                       const XString& styleSheetPath, std::vector<uint8_t>& out);
