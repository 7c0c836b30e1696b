#include "tools/host/Panel.h"

#include "tools/host/Console.h"
#include "tools/host/resource.h"

namespace {

constexpr int64_t kClose = 0;              // mode of DSP_RemoveConfigBit
constexpr RECT kPanelPlace = {7, 7, 1, 1}; // dialog units; only left and top count

/// The plug-in whose panel is shown, and the text that goes in and comes out.
struct ShownPanel {
    const PluginInstance& instance;
    XString& settings;

    HWND Open(HWND host) const {
        RECT place = kPanelPlace;
        MapDialogRect(host, &place);
        return instance.Plugin().showConfigBit(instance.Get(), host, place.left, place.top, settings.Text());
    }
    XString Close() const { return XString(instance.Plugin().removeConfigBit(instance.Get(), kClose)); }
};

/// The panel comes before the buttons in the tab order and gets the focus.
bool OpenPanel(HWND host, const ShownPanel& shown) {
    const HWND panel = shown.Open(host);
    if (panel == nullptr) {
        return false;
    }
    SetWindowPos(panel, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    SetFocus(GetNextDlgTabItem(host, nullptr, FALSE));
    return true;
}

INT_PTR CALLBACK HostProc(HWND host, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(host, GWLP_USERDATA, lParam);
        if (!OpenPanel(host, *reinterpret_cast<const ShownPanel*>(lParam))) {
            EndDialog(host, -1);
        }
        return FALSE; // the focus is set
    }
    if (message == WM_COMMAND && (wParam == IDOK || wParam == IDCANCEL)) {
        const auto* shown = reinterpret_cast<const ShownPanel*>(GetWindowLongPtrW(host, GWLP_USERDATA));
        XString settings = shown->Close();
        if (wParam == IDOK) {
            shown->settings = std::move(settings);
        }
        EndDialog(host, static_cast<INT_PTR>(wParam));
        return TRUE;
    }
    return FALSE;
}

} // namespace

bool ShowPanel(const PluginInstance& instance, XString& settings) {
    if (instance.Plugin().showConfigBit == nullptr || instance.Plugin().removeConfigBit == nullptr) {
        PrintError(XString(L"The plug-in has no settings panel"));
        return false;
    }
    const ShownPanel shown = {instance, settings};
    const INT_PTR answer = DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_HOST), nullptr,
                                           HostProc, reinterpret_cast<LPARAM>(&shown));
    if (answer != IDOK) {
        PrintError(XString(answer == IDCANCEL ? L"Cancelled" : L"The settings panel cannot be shown"));
    }
    return answer == IDOK;
}
