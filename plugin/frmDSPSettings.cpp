#include "plugin/frmDSPSettings.h"

#include "plugin/ParseOptions.h"
#include "resources/resource.h"
#include "support/ModuleFolder.h"

#include <commdlg.h>

#include <iterator>
#include <vector>

/// Begins the module that this code is linked into; the linker defines it.
extern "C" IMAGE_DOS_HEADER __ImageBase; // NOLINT(bugprone-reserved-identifier)

namespace {

constexpr int kFieldSize = 260;             // units read from a field, the terminator included
constexpr int kIconSize = 24;               // pixels at 96 dots per inch
constexpr RECT kIconPlace = {284, 1, 1, 1}; // dialog units; only left and top count

HMODULE ResourceModule() noexcept {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

/// Restores the process's current folder at the end of the scope.
class CurrentFolderScope {
public:
    CurrentFolderScope() : m_folder(GetCurrentDirectoryW(0, nullptr) + size_t{1}) {
        GetCurrentDirectoryW(static_cast<DWORD>(m_folder.size()), m_folder.data());
    }
    ~CurrentFolderScope() { SetCurrentDirectoryW(m_folder.data()); }
    CurrentFolderScope(const CurrentFolderScope&) = delete;
    CurrentFolderScope& operator=(const CurrentFolderScope&) = delete;

private:
    std::vector<wchar_t> m_folder;
};

/// Puts a path into a field and scrolls to its end, so that the file's name is visible.
bool SetPath(HWND panel, const wchar_t* path) noexcept {
    const bool isSet = SetDlgItemTextW(panel, IDC_XSLT_FILE, path) != 0;
    const HWND field = GetDlgItem(panel, IDC_XSLT_FILE);
    const size_t end = TextSize(path);
    SendMessageW(field, EM_SETSEL, end, static_cast<LPARAM>(end));
    SendMessageW(field, EM_SCROLLCARET, 0, 0);
    return isSet;
}

/// Lets the user choose a style sheet for the panel's field. Works on the window alone: while the file dialog
/// is open, the host may close the panel and with it destroy the object behind it.
void Browse(HWND panel) {
    XString folder = ModuleFolder(ResourceModule());
    folder.Append(L"XSLT");
    wchar_t path[260] = {};
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = panel;
    dialog.lpstrFilter = L"XSL Files(*.xsl, *.xslt)\0*.xsl;*.xslt\0";
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = path;
    dialog.nMaxFile = static_cast<DWORD>(std::size(path));
    dialog.lpstrInitialDir = folder.Text();
    const CurrentFolderScope currentFolder; // the file dialog moves to the folder that it shows
    if (GetOpenFileNameW(&dialog)) {
        SetPath(panel, path);
    }
}

} // namespace

HWND frmDSPSettings::Show(HWND parent, int32_t x, int32_t y, const wchar_t* settings) {
    m_x = x;
    m_y = y;
    m_settings.Assign(settings);
    Destroy();
    m_filled = false;
    const HWND panel = CreateDialogParamW(ResourceModule(), MAKEINTRESOURCEW(IDD_SETTINGS), parent,
                                          DialogProc, reinterpret_cast<LPARAM>(static_cast<XWindow*>(this)));
    if (panel != nullptr && !m_filled) {
        // A panel that lacks its settings would hand the host empty ones.
        DestroyWindow(panel);
    }
    return Hwnd();
}

XString frmDSPSettings::ReadSettings() const {
    wchar_t xsltFile[kFieldSize] = {};
    wchar_t extension[kFieldSize] = {};
    if (Hwnd() != nullptr) {
        GetDlgItemTextW(Hwnd(), IDC_XSLT_FILE, xsltFile, kFieldSize);
        GetDlgItemTextW(Hwnd(), IDC_EXTENSION, extension, kFieldSize);
    }
    return FormatOptions(xsltFile, extension);
}

void frmDSPSettings::OnInit() {
    MoveTo(m_x, m_y);
    m_toolTip.Start(*this);
    m_icon.Load(ResourceModule(), IDI_PLUGIN, ScaleToScreen(kIconSize));
    m_labelFont = FitLabels(Hwnd());
    // The label stands behind its field, and screen readers take the label before a field.
    m_xsltFileName.Set(GetDlgItem(Hwnd(), IDC_XSLT_FILE), L"Apply XSLT file:");
    m_cmdHelp.Attach(GetDlgItem(Hwnd(), IDHELP)); // the layout of today has no such button

    // What is typed beyond what is read would be lost.
    for (const int field : {IDC_XSLT_FILE, IDC_EXTENSION}) {
        SendMessageW(GetDlgItem(Hwnd(), field), EM_LIMITTEXT, kFieldSize - 1, 0);
    }
    const std::vector<Option> options = ParseOptions(m_settings);
    m_filled = SetPath(Hwnd(), FindOption(options, L"xsltfile")) &&
               SetDlgItemTextW(Hwnd(), IDC_EXTENSION, FindOption(options, L"ext"));
}

bool frmDSPSettings::OnDestroy() {
    m_toolTip.Stop();
    m_xsltFileName.Clear();
    return true;
}

void frmDSPSettings::OnPaint() {
    RECT place = kIconPlace;
    MapDialogRect(Hwnd(), &place);
    PAINTSTRUCT paint;
    if (const HDC dc = BeginPaint(Hwnd(), &paint); dc != nullptr) {
        m_icon.Draw(dc, place.left, place.top);
        EndPaint(Hwnd(), &paint);
    }
}

LRESULT frmDSPSettings::OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, bool& handled) {
    const LRESULT result = m_toolTip.OnMessage(hwnd, message, wParam, lParam, handled);
    if (handled) {
        return result;
    }
    if (message == WM_COMMAND && LOWORD(wParam) == IDC_BROWSE) {
        handled = true;
        Browse(hwnd);
    }
    return 0;
}
