#pragma once

#include "support/Owner.h"

#include <windows.h>

/// An icon from LoadImageW.
using OwnedIcon = Owner<HICON, DestroyIcon>;

/// An icon of a module's resources at one size.
class XIcon {
public:
    /// Loads icon group `id`, scaled to `size` by `size` pixels, unless an icon is loaded already. Nothing is
    /// loaded when there is no such resource.
    void Load(HMODULE module, int id, int size) noexcept;

    /// Draws the icon with this top left corner, on the dialog face colour; nothing without an icon.
    void Draw(HDC dc, int x, int y) const noexcept;

private:
    OwnedIcon m_icon;
    int m_size = 0;
};

/// Pixels at 96 dots per inch as pixels of the screen, rounded towards zero. The screen's horizontal
/// resolution is read once.
int ScaleToScreen(int pixels) noexcept;
