#pragma once

#include "support/Utf16View.h"

// Names and values of tags as the document needs them. Pure code.

/// Whether an element name loses the unit.
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

/// The first unit of a name that its element name keeps, or 0 when there is none.
inline wchar_t FirstOfElementName(Utf16View name) noexcept {
    for (size_t i = 0; i < name.Size(); ++i) {
        if (!IsLeftOutOfNames(name[i])) {
            return name[i];
        }
    }
    return 0;
}

/// Cuts a multi-valued text at each CR. An empty text has no part at all; a text that ends in CR has an empty
/// last part. LF is an ordinary character.
class SplitValues {
public:
    explicit SplitValues(Utf16View text) noexcept : m_rest(text), m_ended(text.IsEmpty()) {}

    /// False when there are no further parts.
    bool Next(Utf16View& part) noexcept {
        if (m_ended) {
            return false;
        }
        const size_t size = m_rest.Find(L'\r');
        part = m_rest.First(size);
        m_ended = size == m_rest.Size();
        m_rest = m_ended ? Utf16View() : m_rest.After(size + 1);
        return true;
    }

private:
    Utf16View m_rest;
    bool m_ended;
};
