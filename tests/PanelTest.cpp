#include "plugin/HelpButton.h"
#include "support/ModuleFolder.h"
#include "tests/shared/CallStubs.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"
#include "toolkit/LabelFont.h"
#include "toolkit/XIcon.h"

#include <commdlg.h>
#include <dlgs.h>
#include <oleacc.h>
#include <shellapi.h>

#include <cstdlib>
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

Place Mapped(HWND panel, RECT dialogUnits) {
    MapDialogRect(panel, &dialogUnits);
    return {dialogUnits.left, dialogUnits.top, dialogUnits.right, dialogUnits.bottom};
}

/// The plug-in as it ships, with a host window.
class Panel : public testing::Test {
public:
    void SetUp() override { SKIP_WITHOUT_DISPLAY(host.Get()); }

    HWND Show(const wchar_t* settings = L"", int32_t x = 0, int32_t y = 0) {
        return CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), host.Get(), x, y, settings);
    }

    std::wstring Read(int64_t mode) { return CALL_PLUGIN(DSP_RemoveConfigBit, plugin.Instance(), mode); }

    OwnedWindow host = MakeTopWindow();
    CallStubs stubs;       // destroyed after the library that calls through them
    PluginInstance plugin; // destroyed before its host window
};

TEST_F(Panel, HasItsControls) {
    const HWND panel = Show();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(GetParent(panel), host.Get());
    // The system drops WS_SYSMENU from a DS_CONTROL dialog and adds DS_3DLOOK to any.
    EXPECT_EQ(GetWindowLongW(panel, GWL_STYLE) & ~(WS_SYSMENU | DS_3DLOOK),
              LONG{WS_CHILD | WS_VISIBLE | DS_CONTROL | DS_SETFONT | DS_FIXEDSYS});
    EXPECT_EQ(PlaceOf(panel), Mapped(panel, {0, 0, 300, 79}));
    const HDC dc = GetDC(panel);
    LOGFONTW font = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(panel, WM_GETFONT, 0, 0)), sizeof(font), &font);
    // Windows may put in "MS Shell Dlg 2".
    EXPECT_TRUE(std::wstring(font.lfFaceName).starts_with(L"MS Shell Dlg")) << font.lfFaceName;
    EXPECT_EQ(font.lfHeight, -MulDiv(8, GetDeviceCaps(dc, LOGPIXELSY), 72));
    EXPECT_EQ(font.lfWeight, 400);

    constexpr DWORD kLabel = WS_CHILD | WS_VISIBLE | WS_GROUP;
    constexpr DWORD kButton = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    constexpr DWORD kEdit = kButton | ES_AUTOHSCROLL;
    constexpr auto kPurpose = L"This DSP writes to a file containing ID tags and audio properties.\n"
                              L"The output file can be transformed to another format by using an XSLT file.";
    const struct {
        int id;
        const wchar_t *className, *text;
        RECT place;
        DWORD style;
    } rows[] = {
        {-1, L"Static", kPurpose, {3, 61, 255, 17}, kLabel},
        {kBrowse, L"Button", L"Browse", {245, 0, 37, 14}, kButton},
        {kXsltFile, L"Edit", L"", {58, 0, 186, 14}, kEdit},
        {-1, L"Static", L"Apply XSLT file:", {3, 2, 50, 8}, kLabel},
        {-1, L"Static", L"File extension:", {3, 18, 48, 8}, kLabel},
        {kExtension, L"Edit", L"", {58, 15, 59, 14}, kEdit},
        {-1, L"Static", L"(default = .xml)", {120, 18, 52, 8}, kLabel | WS_DISABLED},
    };
    HWND control = GetWindow(panel, GW_CHILD);
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.className << row.id << ' ' << row.text);
        wchar_t className[20] = {};
        GetClassNameW(control, className, 20);
        EXPECT_STREQ(className, row.className);
        EXPECT_EQ(GetDlgCtrlID(control), row.id);
        EXPECT_EQ(TextOf(control), row.text);
        EXPECT_EQ(PlaceOf(control), Mapped(panel, row.place));
        // An edit control takes WS_BORDER for itself; its border shows in another style, which Windows'
        // dialogs give it, or in where its text begins.
        EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE)) & ~DWORD{WS_BORDER}, row.style);
        RECT textArea = {};
        SendMessageW(control, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&textArea));
        const bool hasEdge = (GetWindowLongW(control, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0;
        EXPECT_EQ(hasEdge || textArea.top > 0, row.style == kEdit);
        // No text is clipped at the resolution that the screen has when the test runs.
        SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
        RECT needed = {};
        RECT area;
        DrawTextW(dc, row.text, -1, &needed, DT_CALCRECT);
        GetClientRect(control, &area);
        EXPECT_LE(needed.right, area.right);
        EXPECT_LE(needed.bottom, area.bottom);
        control = GetWindow(control, GW_HWNDNEXT);
    }
    EXPECT_EQ(control, nullptr);
    ReleaseDC(panel, dc);
}

TEST_F(Panel, ShowsItsIcon) {
    const HWND panel = Show();
    RedrawWindow(panel, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    const HDC dc = GetDC(panel);
    const int size = 24 * GetDeviceCaps(dc, LOGPIXELSX) / 96;
    const Place place = Mapped(panel, {284, 1, 1, 1});
    const RECT around = {place[0] - 3, place[1] - 3, place[0] + size + 3, place[1] + size + 3};
    const auto picture = [dc, around] {
        std::vector<COLORREF> pixels;
        for (LONG y = around.top; y < around.bottom; ++y) {
            for (LONG x = around.left; x < around.right; ++x) {
                pixels.push_back(GetPixel(dc, x, y));
            }
        }
        return pixels;
    };
    const std::vector<COLORREF> shown = picture();
    // At 120 dots per inch Windows' font leaves 28 pixels from the icon's place to the panel's edge, and the
    // icon has 30. The last of the 28 has to stay free.
    for (int y = 0; y < size; ++y) {
        for (int x = size * 27 / 30; x < size; ++x) {
            EXPECT_EQ(GetPixel(dc, place[0] + x, place[1] + y), GetSysColor(COLOR_3DFACE)) << x << ' ' << y;
        }
    }
    FillRect(dc, &around, GetSysColorBrush(COLOR_3DFACE));
    EXPECT_NE(shown, picture());
    const OwnedIcon icon(
        static_cast<HICON>(LoadImageW(PluginModule(), MAKEINTRESOURCEW(110), IMAGE_ICON, size, size, 0)));
    DrawIconEx(dc, place[0], place[1], icon.Get(), size, size, 0, nullptr, DI_NORMAL);
    EXPECT_EQ(shown, picture());
    ReleaseDC(panel, dc);
}

TEST_F(Panel, FillsItsFieldsAndReadsThem) {
    const struct {
        const wchar_t* settings;
        std::wstring xsltFile, extension;
    } rows[] = {
        {L"-xsltfile=\"C:\\x.xsl\" -ext=\".htm\"", L"C:\\x.xsl", L".htm"},
        {L"--ext = txt -XsltFile=\"C:\\a b\\c-d.xsl\"", L"C:\\a b\\c-d.xsl", L"txt"},
        {L"-EXT=.a -ext=.b -filename=n -xsltfile -xsltfile=c", L"", L".a"}, // the first ones count
        {L"-xsltfile=\"\u65e5\u672c\U0001F3B5.xsl\"", L"\u65e5\u672c\U0001F3B5.xsl", L""},
        {nullptr, L"", L""},
    };
    for (const auto& row : rows) {
        const HWND panel = Show(row.settings);
        EXPECT_EQ(FieldText(panel, kXsltFile), row.xsltFile);
        EXPECT_EQ(FieldText(panel, kExtension), row.extension);
        EXPECT_EQ(Read(kQuery), L"-xsltfile=\"" + row.xsltFile + L"\" -ext=\"" + row.extension + L"\"");
    }
    const HWND panel = Show();
    const std::wstring longest = L" a\"b " + std::wstring(254, L'x');
    SetDlgItemTextW(panel, kXsltFile, (longest + L"yz").c_str());
    SetDlgItemTextW(panel, kExtension, (longest + L"y").c_str());
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"" + longest + L"\" -ext=\"" + longest + L"\"");
}

TEST_F(Panel, LimitsTypingToWhatItReads) {
    const HWND panel = Show();
    for (const int id : {kXsltFile, kExtension}) {
        const HWND field = GetDlgItem(panel, id);
        for (int i = 0; i < 300; ++i) {
            SendMessageW(field, WM_CHAR, L'x', 0);
        }
        EXPECT_EQ(TextOf(field), std::wstring(259, L'x'));
    }
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

TEST_F(Panel, ShowsTheEndOfAPath) {
    const std::wstring path = L"C:\\" + std::wstring(296, L'x') + L"y";
    const HWND panel = Show((L"-xsltfile=\"" + path + L"\"").c_str());
    EXPECT_EQ(FieldText(panel, kXsltFile), path) << "longer than what is read";
    EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)));
}

TEST_F(Panel, ClosesUnlessQueried) {
    const auto traced = [](const std::wstring& call) {
        return L"->->  [clDSP_WriteMetadataFile::" + call + L"]\r\n<-<-  [clDSP_WriteMetadataFile::" + call +
               L"]\r\n";
    };
    for (const int64_t mode : {kQuery, kClose, int64_t{123}, int64_t{0xFFFFFF85}}) {
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

TEST_F(Panel, IsRefusedWithoutInstanceOrParent) {
    EXPECT_EQ(CALL_PLUGIN(DSP_ShowConfigBit, nullptr, host.Get(), 0, 0, L""), nullptr);
    EXPECT_EQ(CALL_PLUGIN(DSP_RemoveConfigBit, nullptr, kClose), nullptr);
    EXPECT_EQ(plugin.Trace(), L"");
    EXPECT_EQ(CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), nullptr, 0, 0, L"-ext=.a"), nullptr);
    EXPECT_EQ(Read(kQuery), L"-xsltfile=\"\" -ext=\"\"") << "no panel";
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\"\"") << "no panel";
}

TEST_F(Panel, AppearsWhereTheHostPlacesIt) {
    const struct {
        int32_t x, y;
        LONG left, top;
    } rows[] = {{30, 40, 30, 40}, {-12345, 40, 0, 40}, {30, -12345, 30, 0}, {-5, -12344, -5, -12344}};
    for (const auto& row : rows) {
        const OwnedWindow sibling(CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 10, 10, host.Get(),
                                                  nullptr, nullptr, nullptr));
        const HWND panel = Show(L"", row.x, row.y);
        EXPECT_EQ(GetWindow(panel, GW_HWNDPREV), sibling.Get()) << "it stays below older siblings";
        const Place size = Mapped(panel, {0, 0, 300, 79});
        EXPECT_EQ(PlaceOf(panel), (Place{row.left, row.top, size[2], size[3]}));
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
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\".a\"");
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(second));
    EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, other.Instance(), kClose), L"-xsltfile=\"\" -ext=\".b\"");
}

TEST_F(Panel, IsClosedByTheHostAlone) {
    const HWND panel = Show(L"-ext=.a");
    for (const WPARAM key : {WPARAM{VK_RETURN}, WPARAM{VK_ESCAPE}}) {
        MSG message = {GetDlgItem(panel, kExtension), WM_KEYDOWN, key, 0, 0, {}};
        EXPECT_TRUE(IsDialogMessageW(panel, &message));
    }
    for (WPARAM id = IDOK; id <= IDHELP; ++id) {
        SendMessageW(panel, WM_COMMAND, id, 0);
    }
    SendMessageW(panel, WM_CLOSE, 0, 0);
    PumpMessages();
    EXPECT_TRUE(IsWindowVisible(panel));
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\".a\"");
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

TEST_F(Panel, LeavesTheThreadsApartmentToTheHost) {
    for (const DWORD apartment : {COINIT_MULTITHREADED, COINIT_APARTMENTTHREADED}) {
        Show();
        EXPECT_EQ(CoInitializeEx(nullptr, apartment), S_OK) << "COM is not entered while the panel is open";
        Read(kClose);
        EXPECT_EQ(CoInitializeEx(nullptr, apartment), S_FALSE) << "and left no more often than entered";
        CoUninitialize();
        CoUninitialize();
    }
}

/// Sends what the button sends its parent when it is pressed: on Windows, BM_CLICK may fail in a dialog that
/// is not active.
void PressBrowse(HWND panel) {
    const HWND button = GetDlgItem(panel, kBrowse);
    SendMessageW(panel, WM_COMMAND, MAKEWPARAM(kBrowse, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

TEST_F(Panel, GivesTheFileDialogRoomForAPath) {
    static OPENFILENAMEW asked;
    const auto stub = [](OPENFILENAMEW* dialog) -> BOOL {
        asked = *dialog;
        return FALSE;
    };
    stubs.AddImports(PluginModule());
    stubs["GetOpenFileNameW"].target = reinterpret_cast<void*>(+stub);
    PressBrowse(Show());
    EXPECT_EQ(asked.nMaxFile, 260u) << "units";
    EXPECT_EQ(asked.Flags, 0u);
}

/// Presses Browse and calls `answer` with the file dialog once it is open, from inside its message loop.
void Browse(HWND panel, const std::function<void(HWND dialog)>& answer) {
    static const std::function<void(HWND)>* user;
    static ULONGLONG end;
    user = &answer;
    end = GetTickCount64() + 60'000;
    const auto look = [](HWND host, UINT, UINT_PTR timer, DWORD) {
        HWND dialog = nullptr; // other tests may have one open as well
        do {
            dialog = FindWindowExW(nullptr, dialog, MAKEINTRESOURCEW(32770), nullptr);
        } while (dialog != nullptr && GetWindow(dialog, GW_OWNER) != host);
        if (IsWindowVisible(dialog)) {
            KillTimer(host, timer);
            (*user)(dialog);
        } else if (GetTickCount64() > end) {
            ADD_FAILURE() << "no file dialog";
            std::_Exit(1); // the plug-in waits for it
        }
    };
    SetTimer(GetAncestor(panel, GA_ROOT), 1, 10, look);
    PressBrowse(panel);
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

void Choose(HWND dialog, const wchar_t* file) {
    SetWindowTextW(FileNameField(dialog), file);
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
}

TEST_F(Panel, BrowsesForAStyleSheet) {
    const HWND panel = Show();
    const auto currentFolder = std::filesystem::current_path();
    // The folder that the system remembers from now on.
    wchar_t other[MAX_PATH] = {};
    GetWindowsDirectoryW(other, MAX_PATH);
    const std::wstring old = other + std::wstring(L"\\old.xsl");
    Browse(panel, [&](HWND dialog) { Choose(dialog, old.c_str()); });
    EXPECT_EQ(FieldText(panel, kXsltFile), old);
    Browse(panel, [](HWND dialog) {
        EXPECT_EQ(TextOf(FileNameField(dialog)), L"");
        // Windows may add the patterns.
        EXPECT_TRUE(FieldText(dialog, cmb1).starts_with(L"XSL Files(*.xsl, *.xslt)"));
        EXPECT_EQ(SendDlgItemMessageW(dialog, cmb1, CB_GETCOUNT, 0, 0), 1);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(FieldText(panel, kXsltFile), old);
    Browse(panel, [](HWND dialog) { Choose(dialog, L"new one.xsl"); });
    const std::wstring chosen = FieldText(panel, kXsltFile);
    EXPECT_TRUE(chosen.ends_with(L"\\new one.xsl")) << chosen;
    if (RunsUnderWine()) { // since Windows 7 the folder that the user chose last may go before the plug-in's
        EXPECT_EQ(chosen, ModuleFolder(PluginModule()).Text() + std::wstring(L"XSLT\\new one.xsl"));
    }
    EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)));
    EXPECT_EQ(std::filesystem::current_path(), currentFolder);
}

TEST_F(Panel, MayBeReplacedWhileTheUserBrowses) {
    Browse(Show(), [this](HWND dialog) {
        Show(L"-xsltfile=new");
        Choose(dialog, L"chosen.xsl");
    });
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"new\" -ext=\"\"");
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
