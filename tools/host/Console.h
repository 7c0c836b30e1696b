#pragma once

#include "support/XString.h"

// Output of the program in UTF-8 with lines ended by LF alone, so that it reads well in terminals of either
// system. A last line end is added where there is none.

/// All parts, zero-terminated texts and XStrings, one after the other.
template<class... Parts>
XString Concat(const Parts&... parts) {
    XString text;
    (text.Append(parts), ...);
    return text;
}

/// Writes to the standard output.
void PrintLine(const XString& text);

/// Writes to the standard error output.
void PrintError(const XString& text);
