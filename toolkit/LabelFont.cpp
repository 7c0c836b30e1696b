#include "toolkit/LabelFont.h"

#include "support/XString.h"

#include <iterator>

namespace {

constexpr int kMaxSteps = 3; // pixels off the height

template<class Visit>
void ForEachLabel(HWND dialog, Visit visit) {
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        wchar_t className[8] = {};
        GetClassNameW(control, className, static_cast<int>(std::size(className)));
        if (Compare(className, L"static", 0, true) == 0) {
            visit(control);
        }
    }
}

bool LabelsFit(HWND dialog, HFONT font) {
    const HDC dc = GetDC(dialog);
    if (dc == nullptr) {
        return true; // nothing to measure with
    }
    const HGDIOBJ before = SelectObject(dc, font);
    bool fit = true;
    ForEachLabel(dialog, [&](HWND label) {
        wchar_t text[256];
        const int size = GetWindowTextW(label, text, static_cast<int>(std::size(text)));
        RECT needed = {};
        RECT area = {};
        DrawTextW(dc, text, size, &needed, DT_CALCRECT);
        GetClientRect(label, &area);
        fit = fit && needed.right <= area.right && needed.bottom <= area.bottom;
    });
    SelectObject(dc, before);
    ReleaseDC(dialog, dc);
    return fit;
}

} // namespace

OwnedFont FitLabels(HWND dialog) noexcept {
    const auto dialogFont = reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0));
    LOGFONTW shape = {};
    if (LabelsFit(dialog, dialogFont) || GetObjectW(dialogFont, sizeof(shape), &shape) == 0) {
        return OwnedFont();
    }
    for (int step = 0; step < kMaxSteps; ++step) {
        ++shape.lfHeight; // negative: the height of the characters
        OwnedFont font(CreateFontIndirectW(&shape));
        if (LabelsFit(dialog, font.Get())) {
            ForEachLabel(dialog, [&font](HWND label) {
                SendMessageW(label, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
            });
            return font;
        }
    }
    return OwnedFont();
}
