#pragma once

#include "support/XString.h"
#include "support/XStringList.h"

/// The options of a settings text, in its order: entry i of `values` belongs to entry i of `names`. A value
/// may be empty.
struct OptionLists {
    XStringList names;
    XStringList values;
};

/// Splits a settings text such as `-xsltfile="C:\a b.xsl" -ext=.txt`, replacing what the lists held. One or
/// two hyphens begin a name; spaces and equals signs in any number stand before its value; a value in double
/// quotes may hold anything but a quote, and one without ends at the first space. Nothing is an error: an
/// option without a name is skipped, one without a value has an empty one, and after a quote that is never
/// closed parsing goes on just behind it. Pure code.
void ParseOptions(OptionLists& lists, const XString& text);

/// The value of the first option of that name, ASCII letters in any case; empty when there is none. Valid as
/// long as the lists are unchanged.
const wchar_t* FindOption(const OptionLists& lists, const wchar_t* name) noexcept;

/// The settings text of the two values, `-xsltfile="…" -ext="…"`, taken as they are: nothing is escaped.
XString FormatOptions(const wchar_t* xsltFile, const wchar_t* extension);
