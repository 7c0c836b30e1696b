#pragma once

#include "support/Utf16View.h"

#include <string>

/// The units as the tests compare them.
inline std::wstring Wide(Utf16View text) {
    std::wstring units;
    for (size_t i = 0; i < text.Size(); ++i) {
        units += text[i];
    }
    return units;
}
