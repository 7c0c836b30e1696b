#include "toolkit/XIcon.h"

void XIcon::Load(HMODULE module, int id, int size) noexcept {
    if (!m_icon.IsValid()) {
        m_icon.Reset(static_cast<HICON>(
            LoadImageW(module, MAKEINTRESOURCEW(id), IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
        m_size = size;
    }
}

void XIcon::Draw(HDC dc, int x, int y) const noexcept {
    if (m_icon.IsValid()) {
        DrawIconEx(dc, x, y, m_icon.Get(), m_size, m_size, 0, GetSysColorBrush(COLOR_3DFACE), DI_NORMAL);
    }
}

int ScaleToScreen(int pixels) noexcept {
    static const int dpi = [] {
        const HDC screen = GetDC(nullptr);
        const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
        ReleaseDC(nullptr, screen);
        return resolution;
    }();
    return pixels * dpi / 96;
}
