#pragma once

#include "support/XString.h"

// Output of the program in UTF-8, each line ended by LF, so that it reads well in terminals of either system.

/// All pieces, zero-terminated texts and XStrings, one after the other.
template<class... Pieces>
XString Concat(const Pieces&... pieces) {
    XString text;
    (text.Append(pieces), ...);
    return text;
}

/// Writes one line to the standard output.
void PrintLine(const XString& text);

/// Writes one line to the standard error output.
void PrintError(const XString& text);
