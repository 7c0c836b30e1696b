#include "plugin/HelpButton.h"
#include "support/ModuleFolder.h"
#include "tests/shared/CallStubs.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"

#include <commdlg.h>
#include <oleacc.h>
#include <shellapi.h>

#include <cstdio>
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

std::wstring FieldText(HWND panel, int id) {
    wchar_t text[1000] = {};
    GetDlgItemTextW(panel, id, text, static_cast<int>(std::size(text)));
    return text;
}

/// The plug-in as it ships, with a host window.
class Panel : public testing::Test {
public:
    void SetUp() override {
        SKIP_WITHOUT_DISPLAY(host.Get());
        stubs.AddImports(library);
    }

    HWND Show(const wchar_t* settings = L"", int32_t x = 0, int32_t y = 0) {
        return CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), host.Get(), x, y, settings);
    }

    std::wstring Read(int64_t mode) { return CALL_PLUGIN(DSP_RemoveConfigBit, plugin.Instance(), mode); }

    OwnedWindow host = MakeTopWindow();
    CallStubs stubs;       // destroyed after the library that calls through them
    PluginInstance plugin; // destroyed before its host window
    const HMODULE library = GetModuleHandleW(L"WriteMetadataFile.dll");
};

/// A line for a window of the panel: class, id, style, place in dialog units, whether its text is clipped at
/// the resolution that the screen has when the test runs, and the text.
std::string Described(HWND panel, HWND window) {
    RECT units = {0, 0, 4, 8};
    MapDialogRect(panel, &units); // the font's base units in pixels
    const RECT place = PlaceOf(window);
    char className[20] = {};
    char text[200] = {};
    GetClassNameA(window, className, sizeof className);
    GetWindowTextA(window, text, sizeof text);
    const HDC dc = GetDC(window);
    SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0)));
    RECT needed = {};
    RECT area = {};
    DrawTextA(dc, text, -1, &needed, DT_CALCRECT);
    GetClientRect(window, &area);
    ReleaseDC(window, dc);
    const bool isClipped = needed.right > area.right || needed.bottom > area.bottom;
    // The system drops WS_SYSMENU from a DS_CONTROL dialog and adds DS_3DLOOK to any. An edit control takes
    // WS_BORDER for itself.
    const LONG hidden = window == panel ? LONG{WS_SYSMENU | DS_3DLOOK} : LONG{WS_BORDER};
    const LONG style = GetWindowLongW(window, GWL_STYLE) & ~hidden;
    char line[300];
    std::snprintf(line, sizeof line, "%s %d, %08lX, %d %d %d %d%s \"%s\"\n", className, GetDlgCtrlID(window),
                  static_cast<DWORD>(style), MulDiv(place.left, 4, units.right),
                  MulDiv(place.top, 8, units.bottom), MulDiv(place.right - place.left, 4, units.right),
                  MulDiv(place.bottom - place.top, 8, units.bottom), isClipped ? " clipped" : "", text);
    return line;
}

TEST_F(Panel, HasItsControls) {
    const HWND panel = Show();
    std::string controls = Described(panel, panel);
    for (HWND control = GetWindow(panel, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        controls += Described(panel, control);
    }
    EXPECT_EQ(controls, ReadBytes(L"data\\panel.txt"));

    const HDC dc = GetDC(panel);
    LOGFONTW font = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(panel, WM_GETFONT, 0, 0)), sizeof(font), &font);
    // Windows may put in "MS Shell Dlg 2".
    EXPECT_TRUE(std::wstring(font.lfFaceName).starts_with(L"MS Shell Dlg")) << font.lfFaceName;
    EXPECT_EQ(font.lfHeight, -MulDiv(8, GetDeviceCaps(dc, LOGPIXELSY), 72));
    EXPECT_EQ(font.lfWeight, 400);
    EXPECT_FALSE(font.lfItalic);
    ReleaseDC(panel, dc);
}

TEST_F(Panel, ShowsItsIconInTheScreensSize) {
    static std::vector<int> loaded, drawn;
    const auto load = [](HINSTANCE module, LPCWSTR name, UINT type, int width, int height, UINT flags) {
        loaded = {static_cast<int>(reinterpret_cast<intptr_t>(name)), width, height, static_cast<int>(flags)};
        return LoadImageW(module, name, type, width, height, flags);
    };
    const auto draw = [](HDC, int x, int y, HICON icon, int width, int height, UINT, HBRUSH background,
                         UINT flags) -> BOOL {
        EXPECT_EQ(background, GetSysColorBrush(COLOR_3DFACE));
        drawn = {icon != nullptr, x, y, width, height, static_cast<int>(flags)};
        return TRUE;
    };
    const auto dotsPerInch = [](HDC, int which) { return which == LOGPIXELSX ? 120 : 0; };
    stubs["GetDeviceCaps"].target = reinterpret_cast<void*>(+dotsPerInch);
    stubs["LoadImageW"].target = reinterpret_cast<void*>(+load);
    stubs["DrawIconEx"].target = reinterpret_cast<void*>(+draw);
    const HWND panel = Show();
    UpdateWindow(panel);
    RECT place = {284, 1, 1, 1};
    MapDialogRect(panel, &place);
    EXPECT_EQ(loaded, std::vector({110, 30, 30, LR_DEFAULTCOLOR}));
    EXPECT_EQ(drawn, std::vector<int>({true, place.left, place.top, 30, 30, DI_NORMAL}));
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
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"C:\\a b\\\u65e5\u672c\U0001F3B5.xsl", L"txt"}, {read + L"yz", read + L"y"}, {L"", L""}};
    for (const auto& [xsltFile, extension] : rows) {
        const auto settings = [&](size_t size) {
            return L"-xsltfile=\"" + xsltFile.substr(0, size) + L"\" -ext=\"" + extension.substr(0, size) +
                   L"\"";
        };
        const HWND panel = Show(settings(1000).c_str());
        EXPECT_EQ(FieldText(panel, kXsltFile), xsltFile) << "shown whole, however long";
        EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)) || xsltFile.empty()) << xsltFile;
        EXPECT_EQ(Read(kQuery), settings(read.size()));
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
}

TEST_F(Panel, AppearsWhereTheHostPlacesIt) {
    const struct {
        int32_t x, y;
        LONG left, top;
    } rows[] = {{30, 40, 30, 40}, {-12345, 40, 0, 40}, {30, -12345, 30, 0}, {-5, -12344, -5, -12344}};
    for (const DWORD layout : {DWORD{0}, DWORD{WS_EX_LAYOUTRTL}}) {
        const OwnedWindow top = MakeTopWindow();
        host = OwnedWindow(CreateWindowExW(layout, L"STATIC", L"", WS_CHILD, 7, 9, 800, 300, top.Get(),
                                           nullptr, nullptr, nullptr));
        for (const auto& row : rows) {
            const OwnedWindow sibling(CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 10, 10, host.Get(),
                                                      nullptr, nullptr, nullptr));
            const HWND panel = Show(L"", row.x, row.y);
            EXPECT_EQ(GetWindow(panel, GW_HWNDPREV), sibling.Get()) << "it stays below older siblings";
            const RECT place = PlaceOf(panel);
            EXPECT_EQ(place.left, row.left) << layout;
            EXPECT_EQ(place.top, row.top) << layout;
        }
    }
}

TEST_F(Panel, WorksBesideAnother) {
    PluginInstance other;
    static UINT milliseconds = 0;
    const auto setTimer = [](HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
        return SetTimer(window, id, milliseconds = period, procedure);
    };
    stubs["SetTimer"].target = reinterpret_cast<void*>(+setTimer);
    const HWND first = Show(L"-ext=.a");
    const HWND second = CALL_PLUGIN(DSP_ShowConfigBit, other.Instance(), host.Get(), 0, 0, L"-ext=.b");
    EXPECT_EQ(milliseconds, 50u);
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

TEST_F(Panel, NamesItsFirstField) {
    // Stands in for the system's service: a COM object is a pointer to the table of its methods.
    static std::wstring calls;
    static const auto isNameOfField = [](HWND control, DWORD object, DWORD child, const MSAAPROPID& id) {
        return GetDlgCtrlID(control) == kXsltFile && object == static_cast<DWORD>(OBJID_CLIENT) &&
               child == CHILDID_SELF && id == PROPID_ACC_NAME;
    };
    const auto release = [](void*) -> ULONG { return 1; };
    const auto set = [](void*, HWND control, DWORD object, DWORD child, const MSAAPROPID* id,
                        const wchar_t* name) {
        calls += isNameOfField(control, object, child, *id) ? name : L"?";
        return S_OK;
    };
    const auto clear = [](void*, HWND control, DWORD object, DWORD child, const MSAAPROPID* id, int count) {
        calls += isNameOfField(control, object, child, *id) && count == 1 ? L" cleared;" : L"?";
        return S_OK;
    };
    static const void* methods[10] = {};
    methods[2] = reinterpret_cast<void*>(+release);
    methods[7] = reinterpret_cast<void*>(+set); // which gets the large id by its address
    methods[9] = reinterpret_cast<void*>(+clear);
    static const void* const* service = methods;
    const auto create = [](const CLSID& classId, IUnknown*, DWORD, const IID& id, void** result) {
        const bool isService = classId == CLSID_AccPropServices && id == IID_IAccPropServices;
        *result = isService ? &service : nullptr;
        return isService ? S_OK : REGDB_E_CLASSNOTREG;
    };
    stubs["CoCreateInstance"].target = reinterpret_cast<void*>(+create);
    Show();
    Read(kQuery);
    EXPECT_EQ(calls, L"Apply XSLT file:");
    Read(kClose);
    Show();
    plugin.Destroy();
    EXPECT_EQ(calls, L"Apply XSLT file: cleared;Apply XSLT file: cleared;");
}

/// Sends what the button sends its parent when it is pressed: on Windows, BM_CLICK may fail in a dialog that
/// is not active.
void PressBrowse(HWND panel) {
    SendMessageW(panel, WM_COMMAND, MAKEWPARAM(kBrowse, BN_CLICKED), 0);
}

TEST_F(Panel, AsksTheFileDialogForAStyleSheet) {
    static std::function<BOOL(OPENFILENAMEW&)> answer;
    const auto stub = [](OPENFILENAMEW* dialog) { return answer(*dialog); };
    stubs["GetOpenFileNameW"].target = reinterpret_cast<void*>(+stub);
    const std::wstring chosen = L"C:\\" + std::wstring(200, L'x') + L".xsl";
    HWND panel = Show(L"-xsltfile=old");
    int press = 0;
    answer = [&](const OPENFILENAMEW& dialog) {
        EXPECT_EQ(dialog.lStructSize, sizeof dialog);
        EXPECT_EQ(dialog.hwndOwner, panel);
        const std::wstring filter(L"XSL Files(*.xsl, *.xslt)\0*.xsl;*.xslt\0\0", 39);
        EXPECT_EQ(std::wstring(dialog.lpstrFilter, filter.size()), filter);
        EXPECT_EQ(dialog.lpstrInitialDir,
                  std::filesystem::absolute(LoadedPlugin::kPath).parent_path() / L"XSLT");
        EXPECT_STREQ(dialog.lpstrFile, L"");
        EXPECT_EQ(dialog.nMaxFile, 260u) << "units";
        EXPECT_EQ(dialog.Flags, 0u);
        // The dialog moves to the folder that it shows, and the host may replace the panel meanwhile.
        SetCurrentDirectoryW(L"C:\\");
        panel = ++press == 3 ? Show(L"-xsltfile=new") : panel;
        std::wcscpy(dialog.lpstrFile, chosen.c_str());
        return press > 1; // at first the user cancels
    };
    const auto currentFolder = std::filesystem::current_path();
    PressBrowse(panel);
    EXPECT_EQ(FieldText(panel, kXsltFile), L"old");
    PressBrowse(panel);
    EXPECT_EQ(FieldText(panel, kXsltFile), chosen);
    EXPECT_TRUE(ShowsItsEnd(GetDlgItem(panel, kXsltFile)));
    PressBrowse(panel);
    EXPECT_EQ(FieldText(panel, kXsltFile), L"new");
    EXPECT_EQ(std::filesystem::current_path(), currentFolder);
}

} // namespace

// What the help button opens by the ShellExecuteW that it calls in this program.
static std::vector<std::wstring> opened;

static HINSTANCE WINAPI RecordShellExecute(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                                           LPCWSTR folder, INT show) {
    const bool plain = owner == nullptr && verb == nullptr && parameters == nullptr && show == SW_SHOWDEFAULT;
    opened.push_back((plain ? L"" : L"not plain ") + std::wstring(file) + L" in " + folder);
    return nullptr;
}
extern "C" {
decltype(&ShellExecuteW) __imp_ShellExecuteW = RecordShellExecute;
}

TEST(HelpButton, OpensTheHelpPageAtEachClick) {
    const OwnedWindow host = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(host.Get());
    struct Parent : XSubClassCtrl {
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
            if (message == WM_COMMAND) {
                DestroyWindow(destroyed);
            }
            return XSubClassCtrl::WindowProc(message, wParam, lParam);
        }
        HWND destroyed = nullptr; // by the next command
    } parent;
    parent.Attach(host.Get());
    const HWND control = CreateWindowExW(0, L"BUTTON", L"Help", WS_CHILD | WS_VISIBLE, 0, 0, 80, 30,
                                         host.Get(), nullptr, nullptr, nullptr);
    const LONG_PTR procedure = GetWindowLongPtrW(control, GWLP_WNDPROC);
    HelpButton button;
    button.Attach(control);
    const std::wstring folder = std::wstring(ModuleFolder(nullptr).Text()) + L"Help\\kbn\\";
    const std::vector<std::wstring> once = {folder + L"DSP.htm in " + folder};
    constexpr LPARAM kInside = MAKELPARAM(60, 5);
    const struct {
        const char* label;
        UINT down, up;
        WPARAM wParam;
        LPARAM upAt;
        bool isClick;
    } rows[] = {{"by message", WM_NULL, BM_CLICK, 0, 0, true},
                {"mouse", WM_LBUTTONDOWN, WM_LBUTTONUP, 0, kInside, true},
                {"released outside", WM_LBUTTONDOWN, WM_LBUTTONUP, 0, MAKELPARAM(200, 5), false},
                {"released only", WM_NULL, WM_LBUTTONUP, 0, kInside, false},
                {"space", WM_KEYDOWN, WM_KEYUP, VK_SPACE, 0, true},
                {"other key", WM_LBUTTONDOWN, WM_KEYUP, VK_F5, 0, false}};
    for (const auto& row : rows) {
        opened.clear();
        SendMessageW(control, row.down, row.wParam, kInside);
        SendMessageW(control, row.up, row.wParam, row.upAt);
        EXPECT_EQ(opened, row.isClick ? once : std::vector<std::wstring>()) << row.label;
    }
    button.Attach(nullptr);
    EXPECT_EQ(GetWindowLongPtrW(control, GWLP_WNDPROC), procedure) << "the control is as it was";

    button.Attach(control);
    opened.clear();
    parent.destroyed = control;
    SendMessageW(control, BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindow(control));
    EXPECT_EQ(button.Hwnd(), nullptr);
    EXPECT_TRUE(opened.empty()) << "no click when the parent destroys the control";
}
