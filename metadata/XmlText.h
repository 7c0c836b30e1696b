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
