#pragma once

#include "support/Utf16View.h"

#include <cstddef>
#include <span>

// Text tools of the document. Each takes time in proportion to the text. Pure code.

/// Code units that EscapeXmlText makes of one, at most: those of "&quot;" and "&apos;".
inline constexpr size_t kMostEscapedUnits = 6;

/// Stores the text with "&", the double quote, "'", "<" and ">" replaced by their entities. Everything else
/// is stored as it is, control characters and unpaired surrogates included. `out` must have kMostEscapedUnits
/// for each code unit of the text. Returns the number of units stored.
size_t EscapeXmlText(Utf16View text, std::span<wchar_t> out) noexcept;

/// Stores the name without every # space & " ' < > ( ) / \ and : in it. What is left may be empty or no name
/// that XML allows. `out` must have a unit for each of the name's. Returns the number of units stored.
size_t MakeElementName(Utf16View name, std::span<wchar_t> out) noexcept;

/// The first unit of the element name that MakeElementName stores, or 0 when that is empty.
wchar_t FirstOfElementName(Utf16View name) noexcept;

/// Cuts a multi-valued text at each CR. An empty text has no part at all; a text that ends in CR has an empty
/// last part. LF is an ordinary character.
class SplitValues {
public:
    explicit SplitValues(Utf16View text) noexcept : m_rest(text), m_ended(text.IsEmpty()) {}

    /// False when there are no further parts.
    bool Next(Utf16View& part) noexcept;

private:
    Utf16View m_rest;
    bool m_ended;
};
