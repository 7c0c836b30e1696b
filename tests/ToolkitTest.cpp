#include "tests/shared/TestWindow.h"
#include "toolkit/LabelFont.h"
#include "toolkit/XButton.h"
#include "toolkit/XWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr LRESULT kTaken = 4711; // what OnMessage answers when it takes a message
constexpr LRESULT kNotifyResult = 99;
constexpr UINT_PTR kTimer = 5;

enum class Mode {
    Ignore, // no operation handles what it gets
    Handle, // all but OnMessage do
    Take,   // OnMessage does
};

/// Records the operations that one message calls, with their arguments, and answers all of them alike.
class Recorder : public XWindow {
public:
    ~Recorder() override { Destroy(); }

    std::string calls;

    /// Begins to record one message; the system sends others at any time, which are not recorded.
    void Watch(UINT message, WPARAM wParam, Mode mode = Mode::Ignore) {
        calls.clear();
        m_message = message;
        m_wParam = wParam;
        m_mode = mode;
    }

protected:
    LRESULT OnMessage(HWND, UINT message, WPARAM wParam, LPARAM, bool& handled) override {
        m_isWatched = message == m_message && wParam == m_wParam;
        handled = m_mode == Mode::Take;
        return kTaken;
    }
    // clang-format off
    bool OnActivate(HWND other, bool minimised, UINT state) override { return Note("Activate", other, minimised, state); }
    bool OnContextMenu(HWND window, int x, int y) override { return Note("ContextMenu", window, x, y); }
    bool OnCommand(UINT id, HWND control, UINT notification) override { return Note("Command", id, control, notification); }
    void OnInit() override { Note("Init"); }
    bool OnDestroy() override { return Note("Destroy"); }
    bool OnEraseBackground(HDC dc) override { return Note("EraseBackground", dc); }
    bool OnMouseDown(int x, int y, UINT message, UINT keys) override { return Note("MouseDown", x, y, message, keys); }
    bool OnMouseWheel(int x, int y, int delta, UINT keys) override { return Note("MouseWheel", x, y, delta, keys); }
    bool OnNotify(NMHDR* header, LRESULT& result) override { result = m_mode == Mode::Handle ? kNotifyResult : 0; return Note("Notify", header->code); }
    void OnPaint() override { Note("Paint"); }
    bool OnSize(int width, int height, UINT type) override { return Note("Size", width, height, type); }
    void OnSysCommand(UINT command) override { Note("SysCommand", command); }
    bool OnTimer(UINT_PTR id, uint64_t userWord) override { return Note("Timer", static_cast<int64_t>(id), static_cast<int64_t>(userWord)); }
    HBRUSH OnCtlColorStatic(HDC dc) override { return Note("ColorStatic", dc) ? GetSysColorBrush(COLOR_INFOBK) : nullptr; }
    bool OnOK() override { return Note("OK"); }
    bool OnYes() override { return Note("Yes"); }
    // clang-format on

private:
    static int64_t Number(const void* handle) { return reinterpret_cast<intptr_t>(handle); }
    static int64_t Number(int64_t value) { return value; }

    template<class... Arguments>
    bool Note(const char* name, Arguments... arguments) {
        if (m_isWatched) {
            calls += name;
            ((calls += " " + std::to_string(Number(arguments))), ...);
            calls += ";";
        }
        return m_mode == Mode::Handle;
    }

    UINT m_message = 0;
    WPARAM m_wParam = 0;
    Mode m_mode = Mode::Ignore;
    bool m_isWatched = false;
};

/// Gives an object an ordinary top-level window.
void MakeWindow(XWindow& object) {
    const WNDPROC procedure = [](HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        return XWindow::Find(hwnd)->Dispatch(hwnd, message, wParam, lParam);
    };
    const HWND hwnd =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 10, 20, 300, 200, nullptr, nullptr, nullptr, nullptr);
    object.Register(hwnd, false);
    SetWindowLongPtrW(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
}

void MakeDialog(XWindow& object) {
    struct alignas(DWORD) {
        DLGTEMPLATE head = {WS_POPUP | DS_SETFONT, 0, 0, 0, 0, 100, 50};
        WORD menuClassTitle[3] = {};
        WORD fontSize = 18;
        wchar_t font[7] = L"Tahoma";
    } dialog;
    CreateDialogIndirectParamW(GetModuleHandleW(nullptr), &dialog.head, nullptr, XWindow::DialogProc,
                               reinterpret_cast<LPARAM>(&object));
}

NMHDR notifyHeader = {nullptr, 0, 32};
const LPARAM kBrush = reinterpret_cast<LPARAM>(GetSysColorBrush(COLOR_INFOBK));
const LPARAM kLeftAbove = MAKELPARAM(-3, -4);

enum Handled { Never, Always, AsAnswered };

const struct Row {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    const char* calls;
    Handled handled = AsAnswered;
    LRESULT result = 0; // when handled
} kRows[] = {
    {WM_ACTIVATE, MAKEWPARAM(WA_CLICKACTIVE, 1), 17, "Activate 17 1 2;"},
    {WM_CONTEXTMENU, 17, kLeftAbove, "ContextMenu 17 -3 -4;"},
    {WM_COMMAND, MAKEWPARAM(1, 0), 17, "OK;Command 1 17 0;"},
    {WM_COMMAND, MAKEWPARAM(6, 0), 0, "Yes;Command 6 0 0;"},
    {WM_COMMAND, MAKEWPARAM(1, 5), 17, "Command 1 17 5;"},
    {WM_COMMAND, MAKEWPARAM(10, 0), 17, "Command 10 17 0;"},
    {WM_INITDIALOG, 0, 0, "Init;", Always},
    {WM_DESTROY, 0, 0, "Destroy;"},
    {WM_ERASEBKGND, 17, 0, "EraseBackground 17;", AsAnswered, 1},
    {WM_LBUTTONDOWN, MK_SHIFT, kLeftAbove, "MouseDown -3 -4 513 4;"},
    {WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, -120), kLeftAbove, "MouseWheel -3 -4 -120 8;"},
    {WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notifyHeader), "Notify 32;", AsAnswered, kNotifyResult},
    {WM_PAINT, 0, 0, "Paint;", Never},
    {WM_SIZE, SIZE_MAXIMIZED, MAKELPARAM(640, 40000), "Size 640 40000 2;"},
    {WM_SYSCOMMAND, 0xE123, 0, "SysCommand 57632;", Never},
    {WM_TIMER, kTimer, 0, "Timer 5 77;"},
    {WM_TIMER, kTimer + 1, 0, "", Never},
    {WM_CTLCOLORSTATIC, 17, 0, "ColorStatic 17;", AsAnswered, kBrush},
    {WM_CTLCOLOREDIT, 17, 0, "", Never},
};

TEST(Dispatch, CallsTheOperationOfEachMessage) {
    Recorder window;
    Recorder dialog;
    XWindow bare; // a dialog without overrides handles nothing but the start
    MakeDialog(dialog);
    SKIP_WITHOUT_DISPLAY(dialog.Hwnd());
    MakeDialog(bare);
    MakeWindow(window);
    window.StartTimer(kTimer, 1000000, 77);
    dialog.StartTimer(kTimer, 1000000, 77);
    for (const Row& row : kRows) {
        for (const Mode mode : {Mode::Ignore, Mode::Handle, Mode::Take}) {
            SCOPED_TRACE("message " + std::to_string(row.message) + " with " + std::to_string(row.wParam));
            const bool takes = mode == Mode::Take;
            const bool handled =
                takes || row.handled == Always || (row.handled == AsAnswered && mode == Mode::Handle);
            const LRESULT result = takes ? kTaken : handled ? row.result : 0;
            const char* calls = takes ? "" : row.calls;

            window.Watch(row.message, row.wParam, mode);
            const LRESULT fromWindow = SendMessageW(window.Hwnd(), row.message, row.wParam, row.lParam);
            EXPECT_EQ(window.calls, calls);
            EXPECT_TRUE(fromWindow == result || !handled) << fromWindow;

            // What the dialog procedure answers and what it leaves behind as the message's result.
            const bool isBrush = result == kBrush;
            dialog.Watch(row.message, row.wParam, mode);
            SetWindowLongPtrW(dialog.Hwnd(), DWLP_MSGRESULT, -1);
            EXPECT_EQ(XWindow::DialogProc(dialog.Hwnd(), row.message, row.wParam, row.lParam),
                      isBrush ? kBrush : handled);
            EXPECT_EQ(GetWindowLongPtrW(dialog.Hwnd(), DWLP_MSGRESULT), isBrush ? -1 : result);
            EXPECT_EQ(dialog.calls, calls);
        }
        EXPECT_EQ(XWindow::DialogProc(bare.Hwnd(), row.message, row.wParam, row.lParam),
                  row.handled == Always);
    }
}

TEST(WindowObject, DetachesFromAWindowThatEndsAndDestroysItsOwn) {
    const OwnedWindow top = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(top.Get());
    void (*const ends[])(std::unique_ptr<Recorder>&) = {
        [](auto& object) { object->Destroy(); },
        [](auto& object) { DestroyWindow(object->Hwnd()); },
        [](auto& object) { object.reset(); },
    };
    for (const auto& end : ends) {
        SCOPED_TRACE(&end - ends);
        auto object = std::make_unique<Recorder>();
        MakeDialog(*object);
        const HWND hwnd = object->Hwnd();
        EXPECT_EQ(XWindow::Find(hwnd), object.get());
        object->StartTimer(kTimer, 1000000, 0);
        object->Watch(WM_DESTROY, 0);
        end(object);
        EXPECT_FALSE(IsWindow(hwnd));
        EXPECT_EQ(XWindow::Find(hwnd), nullptr);
        if (object != nullptr) {
            EXPECT_EQ(object->calls, "Destroy;");
            EXPECT_EQ(object->Hwnd(), nullptr);
            MakeDialog(*object);
            EXPECT_EQ(XWindow::Find(object->Hwnd()), object.get());
            object->Watch(WM_TIMER, kTimer);
            SendMessageW(object->Hwnd(), WM_TIMER, kTimer, 0);
            EXPECT_EQ(object->calls, "") << "timers end with their window";
        }
    }
    XWindow detached;
    detached.MoveTo(1, 2);
    EXPECT_EQ(detached.Dispatch(top.Get(), WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_EQ(XWindow::DialogProc(top.Get(), WM_CLOSE, 0, reinterpret_cast<LPARAM>(&detached)), FALSE);
    EXPECT_EQ(detached.Hwnd(), nullptr);
}

TEST(WindowObject, TimersTickUntilStopped) {
    Recorder window;
    MakeWindow(window);
    SKIP_WITHOUT_DISPLAY(window.Hwnd());
    window.StartTimer(kTimer, 10, 1);
    window.StartTimer(kTimer, 10, 2);
    window.StopTimer(kTimer + 1);
    window.Watch(WM_TIMER, kTimer);
    while (window.calls.empty()) { // one message at a time: the next tick may have come by then
        MSG message;
        GetMessageW(&message, nullptr, 0, 0);
        DispatchMessageW(&message);
    }
    EXPECT_EQ(window.calls, "Timer 5 2;");
    window.StopTimer(kTimer);
    EXPECT_FALSE(KillTimer(window.Hwnd(), kTimer)) << "there is none left";
}

TEST(Button, HandlesItsClicks) {
    struct CountingButton : XButton {
        int clicks = 0;
        void OnClick() override { ++clicks; }
    };
    Recorder parent;
    MakeWindow(parent);
    SKIP_WITHOUT_DISPLAY(parent.Hwnd());
    ShowWindow(parent.Hwnd(), SW_SHOWNOACTIVATE);
    const HWND control = CreateWindowExW(0, L"BUTTON", L"Help", WS_CHILD | WS_VISIBLE, 0, 0, 80, 30,
                                         parent.Hwnd(), nullptr, nullptr, nullptr);
    const LONG_PTR procedure = GetWindowLongPtrW(control, GWLP_WNDPROC);
    constexpr LPARAM kInside = MAKELPARAM(5, 5);
    const struct {
        const char* label;
        UINT down, up;
        WPARAM wParam;
        LPARAM upAt;
        int clicks;
    } rows[] = {{"by message", WM_NULL, BM_CLICK, 0, 0, 1},
                {"mouse", WM_LBUTTONDOWN, WM_LBUTTONUP, 0, kInside, 1},
                {"released outside", WM_LBUTTONDOWN, WM_LBUTTONUP, 0, MAKELPARAM(200, 5), 0},
                {"released only", WM_NULL, WM_LBUTTONUP, 0, kInside, 0},
                {"space", WM_KEYDOWN, WM_KEYUP, VK_SPACE, 0, 1},
                {"other key", WM_LBUTTONDOWN, WM_KEYUP, VK_F5, 0, 0}};
    {
        CountingButton button;
        button.Attach(control);
        for (const auto& row : rows) {
            button.clicks = 0;
            parent.Watch(WM_COMMAND, 0);
            SendMessageW(control, row.down, row.wParam, kInside);
            SendMessageW(control, row.up, row.wParam, row.upAt);
            EXPECT_EQ(button.clicks, row.clicks) << row.label;
            EXPECT_EQ(parent.calls.empty(), row.clicks == 0) << row.label;
        }
    }
    EXPECT_EQ(GetWindowLongPtrW(control, GWLP_WNDPROC), procedure) << "the control is as it was";

    CountingButton button;
    button.Attach(control);
    DestroyWindow(control);
    EXPECT_EQ(button.Hwnd(), nullptr);
}

TEST(LabelFont, IsTheLargestInWhichEveryLabelFits) {
    constexpr auto kText = L"A label of some length";
    constexpr SIZE kAmple = {2000, 200};
    constexpr int kMostSteps = 3;
    Recorder dialog;
    MakeDialog(dialog);
    SKIP_WITHOUT_DISPLAY(dialog.Hwnd());
    HWND labels[2] = {};
    for (HWND& label : labels) {
        label = CreateWindowExW(0, L"STATIC", kText, WS_CHILD, 0, 0, kAmple.cx, kAmple.cy, dialog.Hwnd(),
                                nullptr, nullptr, nullptr);
    }
    LOGFONTW shape = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(dialog.Hwnd(), WM_GETFONT, 0, 0)), sizeof shape, &shape);
    const LONG height = shape.lfHeight;
    std::vector<LONG> sizes[2]; // the text's widths and heights in lower and lower fonts
    const HDC screen = GetDC(nullptr);
    for (; shape.lfHeight <= height + kMostSteps + 1; ++shape.lfHeight) {
        const OwnedFont lower(CreateFontIndirectW(&shape));
        const HGDIOBJ before = SelectObject(screen, lower.Get());
        RECT text = {};
        DrawTextW(screen, kText, -1, &text, DT_CALCRECT);
        SelectObject(screen, before);
        sizes[0].push_back(text.right);
        sizes[1].push_back(text.bottom);
        for (const auto& side : sizes) {
            // The first label gets the room that the text needs in this font.
            SetWindowPos(labels[0], nullptr, 0, 0, &side == sizes ? text.right : kAmple.cx,
                         &side == sizes ? kAmple.cy : text.bottom, 0);
            const auto step = std::find(side.begin(), side.end(), side.back()) - side.begin();
            const OwnedFont font = FitLabels(dialog.Hwnd());
            LOGFONTW got = {};
            GetObjectW(font.Get(), sizeof got, &got);
            EXPECT_EQ(got.lfHeight, step == 0 || step > kMostSteps ? 0 : height + step) << shape.lfHeight;
            for (const HWND label : labels) {
                const auto used = reinterpret_cast<HFONT>(SendMessageW(label, WM_GETFONT, 0, 0));
                EXPECT_TRUE(used == font.Get() || !font.IsValid());
            }
        }
    }
    ReleaseDC(nullptr, screen);
}

TEST(Button, MayBeDestroyedByItsClick) {
    struct Parent : XWindow {
        ~Parent() override { Destroy(); }
        bool OnCommand(UINT, HWND control, UINT) override {
            DestroyWindow(control);
            button->~XButton();
            std::fill_n(memory, sizeof memory, std::byte{0xDD});
            return true;
        }
        alignas(XButton) std::byte memory[sizeof(XButton)];
        XButton* button = new (memory) XButton;
    };
    Parent parent;
    MakeWindow(parent);
    SKIP_WITHOUT_DISPLAY(parent.Hwnd());
    const HWND control = CreateWindowExW(0, L"BUTTON", L"Help", WS_CHILD, 0, 0, 80, 30, parent.Hwnd(),
                                         nullptr, nullptr, nullptr);
    parent.button->Attach(control);
    SendMessageW(control, BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindow(control));
}

} // namespace
