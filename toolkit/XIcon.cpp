#include "toolkit/XIcon.h"

#include <atomic>

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
    // Two threads at once may both read it, with one result. Not a static that is initialised here: for that
    // GCC's runtime takes a lock that it keeps when the library is unloaded.
    static std::atomic<int> dpi = 0;
    if (dpi == 0) {
        const HDC screen = GetDC(nullptr);
        dpi = GetDeviceCaps(screen, LOGPIXELSX);
        ReleaseDC(nullptr, screen);
    }
    return pixels * dpi / 96;
}
