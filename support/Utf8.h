#pragma once

#include "support/XString.h"

#include <string>

/// Appends the text in UTF-8, without byte-order mark or terminator (WideCharToMultiByte with CP_UTF8, flags
/// 0). An unpaired surrogate becomes U+FFFD.
void AppendUtf8(std::string& out, const XString& text);
