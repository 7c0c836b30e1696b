#pragma once

#include "support/Utf16View.h"

// Text tools of the document. They append to a writer (support/Utf8Writer.h, support/Utf16Writer.h) and take
// time in proportion to the text. Pure code.

/// Whether an element name loses the unit: one of # space & " ' < > ( ) / \ :
inline bool IsLeftOutOfNames(wchar_t unit) noexcept {
    switch (unit) {
    case L'#':
    case L' ':
    case L'&':
    case L'"':
    case L'\'':
    case L'<':
    case L'>':
    case L'(':
    case L')':
    case L'/':
    case L'\\':
    case L':':
        return true;
    default:
        return false;
    }
}

/// Appends the text with "&", the double quote, "'", "<" and ">" replaced by their entities. Everything else
/// passes through, control characters and unpaired surrogates included.
template<class Writer>
void EscapeXmlText(Writer& out, Utf16View text) {
    while (!text.IsEmpty()) {
        size_t done = 1;
        switch (text[0]) {
        case L'&':
            out.Append("&amp;");
            break;
        case L'"':
            out.Append("&quot;");
            break;
        case L'\'':
            out.Append("&apos;");
            break;
        case L'<':
            out.Append("&lt;");
            break;
        case L'>':
            out.Append("&gt;");
            break;
        default:
            if (text[0] < 0x80) {
                done = out.AppendAsciiUntil(text, L'&', L'"', L'\'', L'<', L'>');
            } else {
                out.AppendUnit(text[0]);
            }
        }
        text = text.After(done);
    }
}

/// Appends the name without the units that element names lose, otherwise unchanged: possibly nothing, and
/// possibly no name that XML allows.
template<class Writer>
void MakeElementName(Writer& out, Utf16View name) {
    for (;;) {
        name = name.After(out.AppendAsciiWithout([](wchar_t unit) { return IsLeftOutOfNames(unit); }, name));
        if (name.IsEmpty()) {
            return;
        }
        out.AppendUnit(name[0]);
        name = name.After(1);
    }
}

/// The first unit of the element name, or 0 when that is empty.
wchar_t FirstOfElementName(Utf16View name) noexcept;

/// Cuts a multi-valued text at each CR. An empty text has no piece at all; a text that ends in CR has an
/// empty last piece. LF is an ordinary character.
class SplitValues {
public:
    explicit SplitValues(Utf16View text) noexcept : m_rest(text), m_ended(text.IsEmpty()) {}

    /// False when there are no further pieces.
    bool Next(Utf16View& piece) noexcept;

private:
    Utf16View m_rest;
    bool m_ended;
};
