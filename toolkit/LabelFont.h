#pragma once

#include "support/Owner.h"

#include <windows.h>

/// A font from CreateFontIndirectW.
using OwnedFont = Owner<HFONT, DeleteObject>;

/// Prevents labels of a dialog from being cut off where the system's dialog font is wider than the layout
/// allows for: all its static texts then get that font at the largest smaller size at which every one fits.
/// Returns the new font, which the labels use until they are destroyed, or none when all fit as they are or
/// none fits at a legible size.
OwnedFont FitLabels(HWND dialog) noexcept;
