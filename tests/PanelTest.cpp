#include "plugin/HelpButton.h"
#include "support/ModuleFolder.h"
#include "tests/shared/CallStubs.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"
#include "toolkit/XIcon.h"
#include "tools/PrivateRegistry.h"

#include <commdlg.h>
#include <dlgs.h>
#include <oleacc.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int kBrowse = 1008;
constexpr int kXsltFile = 1009;
constexpr int kExtension = 1010;
constexpr int64_t kClose = 0;
constexpr int64_t kQuery = -123;

std::wstring TextOf(HWND window) {
    wchar_t text[1000] = {};
    GetWindowTextW(window, text, static_cast<int>(std::size(text)));
    return text;
}

std::wstring FieldText(HWND panel, int id) {
    return TextOf(GetDlgItem(panel, id));
}

HMODULE PluginModule() {
    return GetModuleHandleW(L"WriteMetadataFile.dll");
}

/// The plug-in as it ships, with a host window.
class Panel : public testing::Test {
public:
    void SetUp() override { SKIP_WITHOUT_DISPLAY(host.Get()); }

    HWND Show(const wchar_t* settings = L"", int32_t x = 0, int32_t y = 0) {
        return CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), host.Get(), x, y, settings);
    }

    std::wstring Read(int64_t mode) { return CALL_PLUGIN(DSP_RemoveConfigBit, plugin.Instance(), mode); }

    PrivateRegistry registry; // the file dialog remembers in it what was chosen
    OwnedWindow host = MakeTopWindow();
    CallStubs stubs;       // destroyed after the library that calls through them
    PluginInstance plugin; // destroyed before its host window
};

/// A line for a window of the panel: class, id, style, place in dialog units and text.
std::string Described(HWND panel, HWND window) {
    RECT units = {0, 0, 4, 8};
    MapDialogRect(panel, &units); // the font's base units in pixels
    const Place place = PlaceOf(window);
    char className[20] = {};
    char text[200] = {};
    GetClassNameA(window, className, sizeof className);
    GetWindowTextA(window, text, sizeof text);
    // The system drops WS_SYSMENU from a DS_CONTROL dialog and adds DS_3DLOOK to any. An edit control takes
    // WS_BORDER for itself; its border shows in another style, which Windows' dialogs give it, or in where
    // its text begins.
    const LONG hidden = window == panel ? LONG{WS_SYSMENU | DS_3DLOOK} : LONG{WS_BORDER};
    const LONG style = GetWindowLongW(window, GWL_STYLE) & ~hidden;
    RECT textArea = {};
    SendMessageW(window, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&textArea));
    const bool hasEdge = (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0 || textArea.top > 0;
    char line[300];
    std::snprintf(line, sizeof line, "%s %d, %08lX%s, %d %d %d %d \"%s\"\n", className, GetDlgCtrlID(window),
                  static_cast<DWORD>(style), hasEdge ? " edged" : "", MulDiv(place[0], 4, units.right),
                  MulDiv(place[1], 8, units.bottom), MulDiv(place[2], 4, units.right),
                  MulDiv(place[3], 8, units.bottom), text);
    return line;
}

TEST_F(Panel, HasItsControls) {
    const HWND panel = Show();
    ASSERT_NE(panel, nullptr);
    const HDC dc = GetDC(panel);
    LOGFONTW font = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(panel, WM_GETFONT, 0, 0)), sizeof(font), &font);
    // Windows may put in "MS Shell Dlg 2".
    EXPECT_TRUE(std::wstring(font.lfFaceName).starts_with(L"MS Shell Dlg")) << font.lfFaceName;
    EXPECT_EQ(font.lfHeight, -MulDiv(8, GetDeviceCaps(dc, LOGPIXELSY), 72));
    EXPECT_EQ(font.lfWeight, 400);

    std::string controls = Described(panel, panel);
    for (HWND control = GetWindow(panel, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        controls += Described(panel, control);
        // No text is clipped at the resolution that the screen has when the test runs.
        SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
        RECT needed = {};
        RECT area;
        DrawTextW(dc, TextOf(control).c_str(), -1, &needed, DT_CALCRECT);
        GetClientRect(control, &area);
        EXPECT_TRUE(needed.right <= area.right && needed.bottom <= area.bottom) << TextOf(control);
    }
    EXPECT_EQ(controls, ReadBytes(L"data\\panel.txt"));
    ReleaseDC(panel, dc);
}

TEST_F(Panel, ShowsItsIconInTheScreensSize) {
    stubs.AddImports(PluginModule());
    stubs["GetDeviceCaps"].target = reinterpret_cast<void*>(+[](HDC, int) { return 120; }); // dots per inch
    constexpr int kSize = 24 * 120 / 96;
    const HWND panel = Show();
    RedrawWindow(panel, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    const HDC dc = GetDC(panel);
    RECT place = {284, 1, 1, 1};
    MapDialogRect(panel, &place);
    const RECT around = {place.left - 3, place.top - 3, place.left + kSize + 3, place.top + kSize + 3};
    const auto picture = [](HDC from, const RECT& area) {
        std::vector<COLORREF> pixels;
        for (LONG y = area.top; y < area.bottom; ++y) {
            for (LONG x = area.left; x < area.right; ++x) {
                pixels.push_back(GetPixel(from, x, y));
            }
        }
        return pixels;
    };
    const std::vector<COLORREF> shown = picture(dc, around);
    FillRect(dc, &around, GetSysColorBrush(COLOR_3DFACE));
    EXPECT_NE(shown, picture(dc, around));
    const OwnedIcon icon(
        static_cast<HICON>(LoadImageW(PluginModule(), MAKEINTRESOURCEW(110), IMAGE_ICON, kSize, kSize, 0)));
    DrawIconEx(dc, place.left, place.top, icon.Get(), kSize, kSize, 0, nullptr, DI_NORMAL);
    EXPECT_EQ(shown, picture(dc, around));
    ReleaseDC(panel, dc);

    // Windows' font leaves 28 pixels from the icon's place to the panel's edge. The last of them, and those
    // beyond, have to stay free.
    const HDC free = GetDC(host.Get());
    const RECT right = {627, 300, 630, 330};
    const std::vector<COLORREF> before = picture(free, right);
    DrawIconEx(free, 600, 300, icon.Get(), kSize, kSize, 0, nullptr, DI_NORMAL);
    EXPECT_EQ(picture(free, right), before);
    ReleaseDC(host.Get(), free);
}

/// Whether the field shows the end of its text, with the caret there.
bool ShowsItsEnd(HWND field) {
    const auto size = static_cast<DWORD>(GetWindowTextLengthW(field));
    DWORD begin = 0;
    DWORD end = 0;
    SendMessageW(field, EM_GETSEL, reinterpret_cast<WPARAM>(&begin), reinterpret_cast<LPARAM>(&end));
    RECT area = {};
    GetClientRect(field, &area);
    const LRESULT last = SendMessageW(field, EM_POSFROMCHAR, size - 1, 0);
    return begin == size && end == size && LOWORD(last) < area.right;
}

TEST_F(Panel, FillsItsFieldsAndReadsThem) {
    const std::wstring read(259, L'x'); // of each field, at most
    const struct {
        std::wstring settings, xsltFile, extension;
    } rows[] = {
        {L"--ext = txt -XsltFile=\"C:\\a b\\c-d.xsl\"", L"C:\\a b\\c-d.xsl", L"txt"},
        {L"-EXT=.a -ext=.b -filename=n -xsltfile -xsltfile=c", L"", L".a"}, // the first ones count
        {L"-xsltfile=\"\u65e5\u672c\U0001F3B5.xsl\"", L"\u65e5\u672c\U0001F3B5.xsl", L""},
        {L"-xsltfile=" + read + L"yz -ext=" + read + L"y", read, read},
    };
    for (const auto& row : rows) {
        const HWND panel = Show(row.settings.c_str());
        EXPECT_TRUE(FieldText(panel, kXsltFile).starts_with(row.xsltFile)) << "shown whole, however long";
        EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)) || row.xsltFile.empty()) << row.xsltFile;
        EXPECT_EQ(Read(kQuery), L"-xsltfile=\"" + row.xsltFile + L"\" -ext=\"" + row.extension + L"\"");
    }
    // No more can be typed than is read.
    const HWND panel = Show(nullptr);
    for (const int id : {kXsltFile, kExtension}) {
        for (int i = 0; i < 300; ++i) {
            SendDlgItemMessageW(panel, id, WM_CHAR, L'x', 0);
        }
        EXPECT_EQ(FieldText(panel, id), read);
    }
}

TEST_F(Panel, ClosesUnlessQueried) {
    const auto traced = [](const std::wstring& call) {
        return L"->->  [clDSP_WriteMetadataFile::" + call + L"]\r\n<-<-  [clDSP_WriteMetadataFile::" + call +
               L"]\r\n";
    };
    for (const int64_t mode : {kQuery, kClose, int64_t{123}, int64_t{-124}, int64_t{0xFFFFFF85}}) {
        SCOPED_TRACE(mode);
        const HWND panel = Show(L"-ext=.a");
        EXPECT_EQ(plugin.Trace(), traced(L"ShowConfigBit"));
        EXPECT_EQ(Read(mode), L"-xsltfile=\"\" -ext=\".a\"");
        EXPECT_EQ(IsWindow(panel), mode == kQuery);
        EXPECT_EQ(plugin.Trace(), mode == kQuery ? L"" : traced(L"RemoveConfigBit"));
    }
}

TEST_F(Panel, ClosesWithItsParentOrInstanceAndWhenReplaced) {
    const std::function<void()> ends[] = {
        [this] { EXPECT_NE(Show(), nullptr); },
        [this] { DestroyWindow(GetWindow(host.Get(), GW_CHILD)); },
        [this] { host = MakeTopWindow(); },
        [this] { plugin.Destroy(); },
    };
    for (const auto& end : ends) {
        SCOPED_TRACE(&end - ends);
        const HWND panel = Show(L"-ext=.a");
        ASSERT_TRUE(IsWindow(panel));
        end();
        EXPECT_FALSE(IsWindow(panel));
        if (plugin.Instance() != nullptr) {
            EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\"\"");
        }
        EXPECT_EQ(GetWindow(host.Get(), GW_CHILD), nullptr);
    }
    PumpMessages();
}

TEST_F(Panel, AppearsWhereTheHostPlacesIt) {
    const struct {
        int32_t x, y;
        LONG left, top;
    } rows[] = {{30, 40, 30, 40}, {-12345, 40, 0, 40}, {30, -12345, 30, 0}, {-5, -12344, -5, -12344}};
    for (const DWORD layout : {DWORD{0}, DWORD{WS_EX_LAYOUTRTL}}) {
        host = MakeTopWindow(layout);
        for (const auto& row : rows) {
            const OwnedWindow sibling(CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 10, 10, host.Get(),
                                                      nullptr, nullptr, nullptr));
            const HWND panel = Show(L"", row.x, row.y);
            EXPECT_EQ(GetWindow(panel, GW_HWNDPREV), sibling.Get()) << "it stays below older siblings";
            const Place place = PlaceOf(panel);
            EXPECT_EQ(place[0], row.left) << layout;
            EXPECT_EQ(place[1], row.top) << layout;
        }
    }
}

TEST_F(Panel, WorksBesideAnother) {
    PluginInstance other;
    const HWND first = Show(L"-ext=.a");
    const HWND second = CALL_PLUGIN(DSP_ShowConfigBit, other.Instance(), host.Get(), 0, 0, L"-ext=.b");
    // The tooltips' timers; KillTimer fails when there is none of that id.
    EXPECT_FALSE(KillTimer(first, 7789));
    EXPECT_TRUE(KillTimer(first, 7788));
    EXPECT_TRUE(KillTimer(second, 7789));
    for (WPARAM id = IDOK; id <= IDHELP; ++id) { // as for the keys Return and Escape
        SendMessageW(first, WM_COMMAND, id, 0);
    }
    EXPECT_TRUE(IsWindowVisible(first)) << "the host alone closes it";
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\".a\"");
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(second));
    EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, other.Instance(), kClose), L"-xsltfile=\"\" -ext=\".b\"");
}

/// Stands in for the system's service for accessible names and for the factory of that service: a COM object
/// with the methods of both at their places in the table. Only the named ones are called.
class NameService final {
public:
    virtual HRESULT QueryInterface(const IID& id, void** result) {
        const bool known = id == IID_IUnknown || id == IID_IClassFactory || id == IID_IAccPropServices;
        *result = known ? this : nullptr; // COM may ask for more, such as a marshaller
        return known ? S_OK : E_NOINTERFACE;
    }
    virtual ULONG AddRef() { return 1; }
    virtual ULONG Release() { return 1; }
    virtual HRESULT CreateInstance(IUnknown*, const IID& id, void** result) {
        return QueryInterface(id, result);
    }
    virtual void Unused4() {}
    virtual void Unused5() {}
    virtual void Unused6() {}
    virtual HRESULT SetHwndPropStr(HWND control, DWORD object, DWORD child, MSAAPROPID id,
                                   const wchar_t* name) {
        calls += IsNameOfField(control, object, child, id) ? name : L"?";
        return S_OK;
    }
    virtual void Unused8() {}
    virtual HRESULT ClearHwndProps(HWND control, DWORD object, DWORD child, const MSAAPROPID* id, int count) {
        calls += IsNameOfField(control, object, child, *id) && count == 1 ? L" cleared;" : L"?";
        return S_OK;
    }

    std::wstring calls; // the names that were set

private:
    static bool IsNameOfField(HWND control, DWORD object, DWORD child, const MSAAPROPID& id) {
        return GetDlgCtrlID(control) == kXsltFile && object == static_cast<DWORD>(OBJID_CLIENT) &&
               child == CHILDID_SELF && id == PROPID_ACC_NAME;
    }
};

TEST_F(Panel, NamesItsFirstField) {
    NameService service;
    CoInitialize(nullptr);
    DWORD cookie = 0;
    ASSERT_EQ(CoRegisterClassObject(CLSID_AccPropServices, reinterpret_cast<IUnknown*>(&service),
                                    CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie),
              S_OK);
    Show();
    Read(kQuery);
    EXPECT_EQ(service.calls, L"Apply XSLT file:");
    Read(kClose);
    Show();
    plugin.Destroy();
    EXPECT_EQ(service.calls, L"Apply XSLT file: cleared;Apply XSLT file: cleared;");
    CoRevokeClassObject(cookie);
    CoUninitialize();
}

/// Sends what the button sends its parent when it is pressed: on Windows, BM_CLICK may fail in a dialog that
/// is not active.
void PressBrowse(HWND panel) {
    const HWND button = GetDlgItem(panel, kBrowse);
    SendMessageW(panel, WM_COMMAND, MAKEWPARAM(kBrowse, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

TEST_F(Panel, AsksTheFileDialogForAStyleSheet) {
    static std::function<BOOL(OPENFILENAMEW&)> answer;
    const auto stub = [](OPENFILENAMEW* dialog) { return answer(*dialog); };
    stubs.AddImports(PluginModule());
    stubs["GetOpenFileNameW"].target = reinterpret_cast<void*>(+stub);
    const HWND panel = Show(L"-xsltfile=old");
    answer = [](const OPENFILENAMEW& dialog) {
        const std::wstring filter(L"XSL Files(*.xsl, *.xslt)\0*.xsl;*.xslt\0", 38);
        EXPECT_EQ(std::wstring(dialog.lpstrFilter, filter.size()), filter);
        EXPECT_EQ(dialog.lpstrInitialDir, ModuleFolder(PluginModule()).Text() + std::wstring(L"XSLT"));
        EXPECT_STREQ(dialog.lpstrFile, L"");
        EXPECT_EQ(dialog.nMaxFile, 260u) << "units";
        EXPECT_EQ(dialog.Flags, 0u);
        return FALSE;
    };
    PressBrowse(panel);
    EXPECT_EQ(FieldText(panel, kXsltFile), L"old");

    // The dialog moves to the folder that it shows, and the host may replace the panel meanwhile.
    const auto currentFolder = std::filesystem::current_path();
    answer = [this](const OPENFILENAMEW& dialog) {
        Show(L"-xsltfile=new");
        std::wcscpy(dialog.lpstrFile, L"C:\\chosen.xsl");
        return SetCurrentDirectoryW(L"C:\\");
    };
    PressBrowse(panel);
    EXPECT_EQ(std::filesystem::current_path(), currentFolder);
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"new\" -ext=\"\"");
}

/// The edit field of the file dialog: by itself in the older dialog, else within one or two combo boxes.
HWND FileNameField(HWND dialog) {
    HWND field = GetDlgItem(dialog, cmb13);
    field = field != nullptr ? field : GetDlgItem(dialog, edt1);
    while (const HWND inner = GetWindow(field, GW_CHILD)) {
        field = inner;
    }
    return field;
}

TEST_F(Panel, TakesWhatTheUserChooses) {
    const HWND panel = Show();
    static ULONGLONG end;
    end = GetTickCount64() + 60'000;
    const auto choose = [](HWND owner, UINT, UINT_PTR timer, DWORD) {
        HWND dialog = nullptr; // other tests may have one open as well
        do {
            dialog = FindWindowExW(nullptr, dialog, MAKEINTRESOURCEW(32770), nullptr);
        } while (dialog != nullptr && GetWindow(dialog, GW_OWNER) != owner);
        if (IsWindowVisible(dialog)) {
            KillTimer(owner, timer);
            SetWindowTextW(FileNameField(dialog), L"new one.xsl");
            PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        } else if (GetTickCount64() > end) {
            ADD_FAILURE() << "no file dialog";
            std::_Exit(1); // the plug-in waits for it
        }
    };
    SetTimer(host.Get(), 1, 10, choose);
    PressBrowse(panel);
    const std::wstring chosen = FieldText(panel, kXsltFile);
    EXPECT_TRUE(chosen.ends_with(L"\\new one.xsl")) << chosen;
    if (RunsUnderWine()) { // since Windows 7 the folder that the user chose last may go before the plug-in's
        EXPECT_EQ(chosen, ModuleFolder(PluginModule()).Text() + std::wstring(L"XSLT\\new one.xsl"));
    }
    EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)));
}

} // namespace

// The ShellExecuteW that the help button calls in this program.
static std::wstring shellCall;

static HINSTANCE WINAPI RecordShellExecute(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                                           LPCWSTR folder, INT show) {
    const bool plain = owner == nullptr && verb == nullptr && parameters == nullptr && show == SW_SHOWDEFAULT;
    shellCall = (plain ? L"" : L"not plain ") + std::wstring(file) + L" in " + folder;
    return nullptr;
}
extern "C" {
decltype(&ShellExecuteW) __imp_ShellExecuteW = RecordShellExecute;
}

TEST(HelpButton, OpensTheHelpPage) {
    const OwnedWindow host = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(host.Get());
    HelpButton button;
    button.Attach(CreateWindowExW(0, L"BUTTON", L"Help", WS_CHILD | WS_VISIBLE, 0, 0, 50, 20, host.Get(),
                                  nullptr, nullptr, nullptr));
    SendMessageW(button.Hwnd(), BM_CLICK, 0, 0);
    const std::wstring folder = std::wstring(ModuleFolder(nullptr).Text()) + L"Help\\kbn\\";
    EXPECT_EQ(shellCall, folder + L"DSP.htm in " + folder);
}
