#include "plugin/HelpButton.h"
#include "tests/TestWindow.h"
#include "toolkit/XIcon.h"
#include "tools/host/PluginLibrary.h"

#include <gtest/gtest.h>

#include <commdlg.h>
#include <oleacc.h>
#include <psapi.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>
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

RECT Mapped(HWND panel, RECT dialogUnits) {
    MapDialogRect(panel, &dialogUnits);
    return dialogUnits;
}

/// Position in the parent's client area, with width and height in place of right and bottom.
RECT PlaceOf(HWND window) {
    RECT rect;
    GetWindowRect(window, &rect);
    const LONG width = rect.right - rect.left;
    const LONG height = rect.bottom - rect.top;
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&rect), 1);
    return {rect.left, rect.top, width, height};
}

void ExpectEqual(const RECT& a, const RECT& b) {
    EXPECT_TRUE(EqualRect(&a, &b)) << a.left << " " << a.top << " " << a.right << " " << a.bottom << " and "
                                   << b.left << " " << b.top << " " << b.right << " " << b.bottom;
}

/// The plug-in as it ships, with a host window and a trace file.
class Panel : public testing::Test {
public:
    void SetUp() override {
        ASSERT_TRUE(plugin.Load(kPluginPath));
        SKIP_WITHOUT_DISPLAY(host.Get());
        wchar_t folder[MAX_PATH];
        wchar_t path[MAX_PATH];
        ASSERT_NE(GetTempPathW(MAX_PATH, folder), 0u);
        ASSERT_NE(GetTempFileNameW(folder, L"wmf", 0, path), 0u);
        trace = OwnedFile(CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        instance.emplace(plugin, CreateRecord{nullptr, nullptr, trace.Get()});
    }

    HWND Show(const wchar_t* settings = L"", int32_t x = 0, int32_t y = 0) {
        return plugin.showConfigBit(instance->Get(), host.Get(), x, y, settings);
    }

    std::wstring Read(int64_t mode) { return plugin.removeConfigBit(instance->Get(), mode); }

    std::wstring Trace() const {
        wchar_t text[1000] = {};
        DWORD size = 0;
        SetFilePointer(trace.Get(), 0, nullptr, FILE_BEGIN);
        ReadFile(trace.Get(), text, sizeof(text) - sizeof(wchar_t), &size, nullptr);
        return text;
    }

    PluginLibrary plugin;
    OwnedWindow host = MakeTopWindow();
    OwnedFile trace;
    std::optional<PluginInstance> instance; // goes before its trace, its host window and its library
};

TEST_F(Panel, HasItsControls) {
    const HWND panel = Show();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(GetParent(panel), host.Get());
    // The system drops WS_SYSMENU from a DS_CONTROL dialog and adds DS_3DLOOK to any.
    EXPECT_EQ(GetWindowLongW(panel, GWL_STYLE) & ~(WS_SYSMENU | DS_3DLOOK),
              LONG{WS_CHILD | WS_VISIBLE | DS_CONTROL | DS_SETFONT | DS_FIXEDSYS});
    EXPECT_NE(GetWindowLongW(panel, GWL_EXSTYLE) & WS_EX_CONTROLPARENT, 0);
    ExpectEqual(PlaceOf(panel), Mapped(panel, {0, 0, 300, 79}));

    LOGFONTW font = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(panel, WM_GETFONT, 0, 0)), sizeof(font), &font);
    EXPECT_STREQ(font.lfFaceName, L"MS Shell Dlg");
    EXPECT_EQ(font.lfWeight, 400);
    EXPECT_EQ(font.lfItalic, 0);

    constexpr DWORD kLabel = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_LEFT;
    constexpr DWORD kButton = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON;
    constexpr DWORD kEdit = WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_LEFT | ES_AUTOHSCROLL;
    const struct {
        int id;
        const wchar_t *className, *text;
        RECT place;
        DWORD style;
    } rows[] = {
        {-1,
         L"Static",
         L"This DSP writes to a file containing ID tags and audio properties.\n"
         L"The output file can be transformed to another format by using an XSLT file.",
         {3, 61, 255, 17},
         kLabel},
        {kBrowse, L"Button", L"Browse", {245, 0, 37, 14}, kButton},
        {kXsltFile, L"Edit", L"", {58, 0, 186, 14}, kEdit},
        {-1, L"Static", L"Apply XSLT file:", {3, 2, 50, 8}, kLabel},
        {-1, L"Static", L"File extension:", {3, 18, 48, 8}, kLabel},
        {kExtension, L"Edit", L"", {58, 15, 59, 14}, kEdit},
        {-1, L"Static", L"(default = .xml)", {120, 18, 52, 8}, kLabel | WS_DISABLED},
    };
    HWND control = GetWindow(panel, GW_CHILD);
    for (const auto& row : rows) {
        ASSERT_NE(control, nullptr);
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.text)) + std::to_string(row.id));
        wchar_t className[20] = {};
        GetClassNameW(control, className, static_cast<int>(std::size(className)));
        EXPECT_STREQ(className, row.className);
        EXPECT_EQ(GetDlgCtrlID(control), row.id);
        EXPECT_EQ(TextOf(control), row.text);
        // An edit control takes WS_BORDER for itself; its border shows in where its text begins.
        EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE)) & ~DWORD{WS_BORDER}, row.style);
        RECT textArea = {};
        SendMessageW(control, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&textArea));
        EXPECT_EQ(textArea.top > 0, row.style == kEdit);
        ExpectEqual(PlaceOf(control), Mapped(panel, row.place));
        control = GetWindow(control, GW_HWNDNEXT);
    }
    EXPECT_EQ(control, nullptr);
}

/// At the resolution that the screen has when the test runs.
TEST_F(Panel, ClipsNoText) {
    const HWND panel = Show();
    const HDC dc = GetDC(panel);
    for (HWND control = GetWindow(panel, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        const std::wstring text = TextOf(control);
        const HGDIOBJ before =
            SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
        RECT needed = {};
        RECT area;
        DrawTextW(dc, text.c_str(), -1, &needed, DT_CALCRECT);
        GetClientRect(control, &area);
        EXPECT_LE(needed.right, area.right) << testing::PrintToString(text);
        EXPECT_LE(needed.bottom, area.bottom) << testing::PrintToString(text);
        SelectObject(dc, before);
    }
    ReleaseDC(panel, dc);
}

TEST_F(Panel, ShowsItsIcon) {
    const HWND panel = Show();
    RedrawWindow(panel, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    const HDC dc = GetDC(panel);
    const int size = 24 * GetDeviceCaps(dc, LOGPIXELSX) / 96;
    const RECT place = Mapped(panel, {284, 1, 1, 1});

    // The same surroundings in memory, with the icon that the library holds.
    constexpr int kMargin = 3;
    const int side = size + 2 * kMargin;
    const HDC expected = CreateCompatibleDC(dc);
    const HGDIOBJ bitmap = CreateCompatibleBitmap(dc, side, side);
    const HGDIOBJ before = SelectObject(expected, bitmap);
    const RECT all = {0, 0, side, side};
    FillRect(expected, &all, GetSysColorBrush(COLOR_3DFACE));
    const OwnedIcon icon(static_cast<HICON>(LoadImageW(GetModuleHandleW(L"WriteMetadataFile.dll"),
                                                       MAKEINTRESOURCEW(110), IMAGE_ICON, size, size, 0)));
    DrawIconEx(expected, kMargin, kMargin, icon.Get(), size, size, 0, nullptr, DI_NORMAL);
    int differing = 0;
    int painted = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const COLORREF pixel = GetPixel(dc, place.left + x - kMargin, place.top + y - kMargin);
            const bool isOnPanel = place.top + y >= kMargin; // no pixels above the panel's edge
            differing += isOnPanel && pixel != GetPixel(expected, x, y) ? 1 : 0;
            painted += pixel != GetSysColor(COLOR_3DFACE) ? 1 : 0;
        }
    }
    EXPECT_EQ(differing, 0);
    EXPECT_GT(painted, size * size / 2);
    SelectObject(expected, before);
    DeleteObject(bitmap);
    DeleteDC(expected);
    ReleaseDC(panel, dc);
}

TEST_F(Panel, FillsItsFields) {
    const struct {
        const wchar_t *settings, *xsltFile, *extension;
    } rows[] = {
        {L"-xsltfile=\"C:\\x.xsl\" -ext=\".htm\"", L"C:\\x.xsl", L".htm"},
        {L"--ext = txt -XsltFile=\"C:\\a b\\c-d.xsl\"", L"C:\\a b\\c-d.xsl", L"txt"},
        {L"-EXT=.a -ext=.b -filename=n", L"", L".a"},
        {L"-ext -xsltfile=\"", L"", L""},
        {L"-xsltfile=\"\u65e5\u672c\U0001F3B5.xsl\"", L"\u65e5\u672c\U0001F3B5.xsl", L""},
        {L"", L"", L""},
        {nullptr, L"", L""},
    };
    for (const auto& row : rows) {
        const HWND panel = Show(row.settings);
        EXPECT_EQ(FieldText(panel, kXsltFile), row.xsltFile);
        EXPECT_EQ(FieldText(panel, kExtension), row.extension);
    }
}

TEST_F(Panel, ReadsWhatIsTyped) {
    const std::wstring longest(259, L'x');
    const struct {
        std::wstring xsltFile, extension, settings;
    } rows[] = {
        {L"", L"", L"-xsltfile=\"\" -ext=\"\""},
        {L"C:\\x.xsl", L".htm", L"-xsltfile=\"C:\\x.xsl\" -ext=\".htm\""},
        {L" a\"b ", L"\"", L"-xsltfile=\" a\"b \" -ext=\"\"\""},
        {longest + std::wstring(41, L'y'), longest + L"y",
         L"-xsltfile=\"" + longest + L"\" -ext=\"" + longest + L"\""},
    };
    for (const auto& row : rows) {
        const HWND panel = Show(L"-xsltfile=old -ext=old");
        SetDlgItemTextW(panel, kXsltFile, row.xsltFile.c_str());
        SetDlgItemTextW(panel, kExtension, row.extension.c_str());
        EXPECT_EQ(Read(kQuery), row.settings);
        EXPECT_EQ(Read(kClose), row.settings);
    }
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\"\"") << "no panel";
}

TEST_F(Panel, ClosesUnlessQueried) {
    const struct {
        int64_t mode;
        bool closes;
    } rows[] = {{-123, false}, {0, true}, {1, true}, {123, true}, {0xFFFFFF85, true}, {INT64_MIN, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mode);
        const HWND panel = Show(L"-ext=.a");
        const std::wstring before = Trace();
        EXPECT_EQ(Read(row.mode), L"-xsltfile=\"\" -ext=\".a\"");
        EXPECT_EQ(IsWindow(panel), !row.closes);
        EXPECT_EQ(Trace().substr(before.size()), row.closes
                                                     ? L"->->  [clDSP_WriteMetadataFile::RemoveConfigBit]\r\n"
                                                       L"<-<-  [clDSP_WriteMetadataFile::RemoveConfigBit]\r\n"
                                                     : L"");
        SetFilePointer(trace.Get(), 0, nullptr, FILE_BEGIN);
        SetEndOfFile(trace.Get());
    }
    Show();
    EXPECT_EQ(Trace(), L"->->  [clDSP_WriteMetadataFile::ShowConfigBit]\r\n"
                       L"<-<-  [clDSP_WriteMetadataFile::ShowConfigBit]\r\n");
}

TEST_F(Panel, EndsWithWhateverEndsItsTime) {
    const struct {
        const char* label;
        std::function<void()> end;
    } rows[] = {
        {"shown again", [this] { EXPECT_NE(Show(), nullptr); }},
        {"its window destroyed", [this] { DestroyWindow(GetWindow(host.Get(), GW_CHILD)); }},
        {"host window destroyed", [this] { host = MakeTopWindow(); }},
        {"instance destroyed", [this] { instance.reset(); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const HWND panel = Show(L"-ext=.a");
        ASSERT_TRUE(IsWindow(panel));
        row.end();
        EXPECT_FALSE(IsWindow(panel));
        if (instance) {
            EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\"\"");
        }
        EXPECT_EQ(GetWindow(host.Get(), GW_CHILD), nullptr);
    }
    PumpMessages();
}

TEST_F(Panel, IsRefusedWithoutInstanceOrParent) {
    EXPECT_EQ(plugin.showConfigBit(nullptr, host.Get(), 0, 0, L""), nullptr);
    EXPECT_EQ(plugin.removeConfigBit(nullptr, kClose), nullptr);
    EXPECT_EQ(Trace(), L"");
    EXPECT_EQ(plugin.showConfigBit(instance->Get(), nullptr, 0, 0, L""), nullptr);
    EXPECT_EQ(Read(kQuery), L"-xsltfile=\"\" -ext=\"\"");
}

TEST_F(Panel, StandsWhereTheHostWantsIt) {
    const struct {
        int32_t x, y;
        LONG left, top;
    } rows[] = {{30, 40, 30, 40}, {-12345, 40, 0, 40}, {30, -12345, 30, 0}, {-5, -12344, -5, -12344}};
    for (const auto& row : rows) {
        const HWND panel = Show(L"", row.x, row.y);
        const RECT size = Mapped(panel, {0, 0, 300, 79});
        ExpectEqual(PlaceOf(panel), {row.left, row.top, size.right, size.bottom});
    }
}

TEST_F(Panel, SharesTheProcessWithAnother) {
    PluginInstance other(plugin, CreateRecord{});
    const HWND first = Show(L"-ext=.a");
    const HWND second = plugin.showConfigBit(other.Get(), host.Get(), 0, 0, L"-ext=.b");
    // The tooltips' timers; killing one tells whether there is one.
    EXPECT_FALSE(KillTimer(first, 7789));
    EXPECT_TRUE(KillTimer(first, 7788));
    EXPECT_TRUE(KillTimer(second, 7789));
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"\" -ext=\".a\"");
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(second));
    EXPECT_STREQ(plugin.removeConfigBit(other.Get(), kClose), L"-xsltfile=\"\" -ext=\".b\"");
}

TEST_F(Panel, IsUsedWithTheKeyboard) {
    const HWND panel = Show(L"-ext=.a");
    const OwnedWindow ok(CreateWindowExW(0, L"BUTTON", L"OK", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 300, 50,
                                         20, host.Get(), nullptr, nullptr, nullptr));
    HWND control = GetDlgItem(panel, kBrowse);
    for (const HWND next : {GetDlgItem(panel, kXsltFile), GetDlgItem(panel, kExtension), ok.Get(),
                            GetDlgItem(panel, kBrowse)}) {
        EXPECT_EQ(GetNextDlgTabItem(host.Get(), next, TRUE), control);
        control = GetNextDlgTabItem(host.Get(), control, FALSE);
        EXPECT_EQ(control, next);
    }

    for (const WPARAM key : {WPARAM{VK_RETURN}, WPARAM{VK_ESCAPE}}) {
        SetFocus(GetDlgItem(panel, kExtension));
        MSG message = {GetFocus(), WM_KEYDOWN, key, 0, 0, {}};
        EXPECT_EQ(GetFocus(), GetDlgItem(panel, kExtension));
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

/// A COM object that stands in for the system's service for accessible names and for its factory: pointers to
/// plain functions, of which only those that are called do anything.
struct StandInObject {
    void* const* methods;
};
std::vector<std::wstring> accessibleNames; // what was set, and an empty text for what was cleared

HRESULT Unused() {
    return E_NOTIMPL;
}
ULONG Count(StandInObject*) {
    return 1;
}
HRESULT GiveSelf(StandInObject* self, const IID&, void** result) {
    *result = self;
    return S_OK;
}
HRESULT SetName(StandInObject*, HWND control, DWORD object, DWORD child, MSAAPROPID id, const wchar_t* name) {
    const bool isName = object == static_cast<DWORD>(OBJID_CLIENT) && child == 0 && id == PROPID_ACC_NAME;
    accessibleNames.push_back(isName && GetDlgCtrlID(control) == kXsltFile ? name : L"?");
    return S_OK;
}
HRESULT ClearName(StandInObject*, HWND control, DWORD, DWORD, const MSAAPROPID* id, int count) {
    accessibleNames.push_back(IsWindow(control) && count == 1 && *id == PROPID_ACC_NAME ? L"" : L"?");
    return S_OK;
}

template<class Function>
void* Method(Function* function) {
    return reinterpret_cast<void*>(function);
}

TEST_F(Panel, NamesItsFirstField) {
    void* const unused = Method(Unused);
    void* const serviceMethods[] = {Method(GiveSelf), Method(Count),    Method(Count), unused,
                                    unused,           unused,           unused,        Method(SetName),
                                    unused,           Method(ClearName)};
    static StandInObject service;
    service = {serviceMethods};
    const auto create = [](StandInObject*, IUnknown*, const IID&, void** result) -> HRESULT {
        *result = &service;
        return S_OK;
    };
    void* const factoryMethods[] = {Method(GiveSelf), Method(Count), Method(Count), Method(+create), unused};
    StandInObject factory = {factoryMethods};
    CoInitialize(nullptr);
    DWORD cookie = 0;
    ASSERT_EQ(CoRegisterClassObject(CLSID_AccPropServices, reinterpret_cast<IUnknown*>(&factory),
                                    CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie),
              S_OK);
    Show();
    Read(kQuery);
    EXPECT_EQ(accessibleNames, std::vector<std::wstring>{L"Apply XSLT file:"});
    Read(kClose);
    EXPECT_EQ(accessibleNames, (std::vector<std::wstring>{L"Apply XSLT file:", L""}));
    Show();
    instance.reset();
    EXPECT_EQ(accessibleNames.size(), 4u);
    CoRevokeClassObject(cookie);
    CoUninitialize();
}

constexpr int kFileName = 0x47c; // controls of the system's file dialog
constexpr int kFileTypes = 0x470;

/// The file dialog that belongs to the window, once it is there; other tests may have one open as well.
HWND WaitForFileDialog(HWND owner) {
    for (int tries = 0; tries < 1000; ++tries, Sleep(10)) {
        HWND dialog = nullptr;
        while ((dialog = FindWindowExW(nullptr, dialog, MAKEINTRESOURCEW(32770), nullptr)) != nullptr) {
            if (GetWindow(dialog, GW_OWNER) == owner && IsWindowVisible(dialog)) {
                return dialog;
            }
        }
    }
    return nullptr;
}

/// Presses Browse and lets `answer` deal with the file dialog, from a thread of its own.
void Browse(HWND panel, const std::function<void(HWND dialog)>& answer) {
    const HWND owner = GetAncestor(panel, GA_ROOT);
    std::thread user([&answer, owner] {
        const HWND dialog = WaitForFileDialog(owner);
        EXPECT_NE(dialog, nullptr);
        answer(dialog);
    });
    SendDlgItemMessageW(panel, kBrowse, BM_CLICK, 0, 0);
    user.join();
}

TEST_F(Panel, BrowsesForAStyleSheet) {
    // A copy of the plug-in with a folder of style sheets beside it.
    wchar_t folder[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, folder);
    const std::wstring home = std::wstring(folder) + L"\\browse\\";
    CreateDirectoryW(home.c_str(), nullptr);
    CreateDirectoryW((home + L"XSLT").c_str(), nullptr);
    ASSERT_TRUE(CopyFileW(kPluginPath, (home + L"plugin.dll").c_str(), FALSE));
    PluginLibrary copy;
    ASSERT_TRUE(copy.Load((home + L"plugin.dll").c_str()));
    const PluginInstance own(copy, CreateRecord{});

    const HWND panel = copy.showConfigBit(own.Get(), host.Get(), 0, 0, L"-xsltfile=old");
    Browse(panel, [](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); });
    EXPECT_EQ(FieldText(panel, kXsltFile), L"old");

    std::wstring fileName, fileType;
    LRESULT fileTypeCount = 0;
    Browse(panel, [&](HWND dialog) {
        fileName = FieldText(dialog, kFileName);
        fileType = FieldText(dialog, kFileTypes);
        fileTypeCount = SendDlgItemMessageW(dialog, kFileTypes, CB_GETCOUNT, 0, 0);
        SetDlgItemTextW(dialog, kFileName, L"new one.xsl");
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    EXPECT_EQ(fileName, L"");
    EXPECT_EQ(fileType, L"XSL Files(*.xsl, *.xslt)");
    EXPECT_EQ(fileTypeCount, 1);
    EXPECT_EQ(FieldText(panel, kXsltFile), home + L"XSLT\\new one.xsl");
}

TEST_F(Panel, MayBeReplacedWhileTheUserBrowses) {
    static Panel* test; // for the timer's procedure, which runs on the host's thread
    test = this;
    Browse(Show(), [this](HWND dialog) {
        const auto replace = [](HWND window, UINT, UINT_PTR timer, DWORD) {
            KillTimer(window, timer);
            test->Show(L"-xsltfile=new");
        };
        SetTimer(host.Get(), 1, 1, replace);
        for (int tries = 0; tries < 500 && FieldText(GetWindow(host.Get(), GW_CHILD), kXsltFile).empty();
             ++tries) {
            Sleep(10);
        }
        SetDlgItemTextW(dialog, kFileName, L"chosen.xsl");
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    EXPECT_EQ(Read(kClose), L"-xsltfile=\"new\" -ext=\"\"");
}

/// What the process holds. Wine counts neither handles nor objects, so the highest values that fresh ones get
/// stand in for their numbers: freed values are used again first.
struct Use {
    DWORD gdi = 0;
    DWORD user = 0;
    DWORD handles = 0;
    WORD highestGdi = 0;
    WORD highestWindow = 0;
    uintptr_t highestHandle = 0;
    SIZE_T memory = 0;

    static Use Now() {
        Use use;
        PROCESS_MEMORY_COUNTERS memory = {};
        GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
        GetProcessHandleCount(GetCurrentProcess(), &use.handles);
        use.gdi = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
        use.user = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
        use.memory = memory.PagefileUsage;

        std::vector<HGDIOBJ> brushes;
        std::vector<OwnedWindow> windows;
        std::vector<OwnedHandle> events;
        for (COLORREF i = 0; i < 100; ++i) {
            brushes.push_back(CreateSolidBrush(i));
            windows.emplace_back(
                CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
            events.emplace_back(CreateEventW(nullptr, FALSE, FALSE, nullptr));
            use.highestGdi = std::max(use.highestGdi, LOWORD(brushes.back()));
            use.highestWindow = std::max(use.highestWindow, LOWORD(windows.back().Get()));
            use.highestHandle = std::max(use.highestHandle, reinterpret_cast<uintptr_t>(events.back().Get()));
        }
        std::for_each(brushes.begin(), brushes.end(), DeleteObject);
        return use;
    }
};

TEST_F(Panel, LeavesNothingBehind) {
    const auto rounds = [this](int count) {
        for (int i = 0; i < count; ++i) {
            UpdateWindow(Show(L"-xsltfile=C:\\x.xsl -ext=.htm"));
            Read(kClose);
            PumpMessages();
        }
    };
    // As on a host's thread; else the system loads its accessibility library anew for each panel.
    CoInitialize(nullptr);
    rounds(20);
    const Use before = Use::Now();
    rounds(500);
    const Use after = Use::Now();
    EXPECT_EQ(after.gdi, before.gdi);
    EXPECT_EQ(after.user, before.user);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_LE(after.highestGdi, before.highestGdi + 50);
    EXPECT_LE(after.highestWindow, before.highestWindow + 50 * 2); // user handles are even
    EXPECT_LE(after.highestHandle, before.highestHandle + 50 * 4);
    EXPECT_LE(after.memory, before.memory + 200 * 1024);
    CoUninitialize();
}

} // namespace

// What the help button's import of ShellExecuteW leads to in this program.
struct {
    int count;
    std::wstring file, folder;
} shellCalls;

static HINSTANCE WINAPI RecordShellExecute(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                                           LPCWSTR folder, INT show) {
    const bool plain = owner == nullptr && verb == nullptr && parameters == nullptr && show == SW_SHOWDEFAULT;
    shellCalls = {shellCalls.count + (plain ? 1 : 100), file, folder};
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
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring path = program;
    const std::wstring folder = path.substr(0, path.rfind(L'\\') + 1);
    EXPECT_EQ(shellCalls.count, 1);
    EXPECT_EQ(shellCalls.file, folder + L"Help\\kbn\\DSP.htm");
    EXPECT_EQ(shellCalls.folder, folder + L"Help\\kbn\\");
}
