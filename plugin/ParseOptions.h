#pragma once

#include "support/XString.h"

#include <vector>

/// One option of a settings text. The name is never empty; the value may be.
struct Option {
    XString name;
    XString value;
};

/// The options of a settings text such as `-xsltfile="C:\a b.xsl" -ext=.txt`, in its order. One or two
/// hyphens begin a name; spaces and equals signs in any number stand before its value; a value in double
/// quotes may hold anything but a quote, and one without ends at the first space. Nothing is an error: an
/// option without a name is skipped, one without a value has an empty one, and after a quote that is never
/// closed parsing goes on just behind it. Pure code.
std::vector<Option> ParseOptions(const XString& settings);

/// The value of the first option of that name, ASCII letters in any case; empty when there is none. Valid as
/// long as the options are unchanged.
const wchar_t* FindOption(const std::vector<Option>& options, const wchar_t* name) noexcept;

/// The settings text of the two values, `-xsltfile="…" -ext="…"`, taken as they are: nothing is escaped.
XString FormatOptions(const wchar_t* xsltFile, const wchar_t* extension);
