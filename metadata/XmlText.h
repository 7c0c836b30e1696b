#pragma once

#include "support/XString.h"
#include "support/XStringList.h"

// Text tools of the document. Each takes time in proportion to the text. Pure code.

/// The text with "&", the double quote, "'", "<" and ">" replaced by their entities. Everything else passes
/// through, control characters and unpaired surrogates included.
XString EscapeXmlText(const XString& text);

/// The name without the twelve characters # space & " ' < > ( ) / \ : and otherwise unchanged; possibly
/// empty, and possibly no name that XML allows.
XString MakeElementName(const XString& name);

/// Cuts a multi-valued text at each CR, replacing what `out` held. An empty text has no piece at all; a text
/// that ends in CR has an empty last piece. LF is an ordinary character.
void SplitValues(XStringList& out, const XString& text);
