#include "tests/shared/TestWindow.h"
#include "toolkit/LabelFont.h"
#include "toolkit/XWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr LRESULT kTaken = 4711; // what OnMessage answers when it takes a message
constexpr UINT_PTR kTimer = 5;

enum class Mode {
    Ignore, // no operation handles what it gets
    Handle, // all but OnMessage do
    Take,   // OnMessage does
};

/// Records the operations that messages call, with their arguments, and answers all of them alike.
class Recorder : public XWindow {
public:
    ~Recorder() override { Destroy(); }

    std::ostringstream calls;
    Mode mode = Mode::Ignore;

protected:
    LRESULT OnMessage(HWND, UINT, WPARAM, LPARAM, bool& handled) override {
        handled = mode == Mode::Take;
        return kTaken;
    }
    // clang-format off
    bool OnCommand(UINT id, HWND control, UINT notification) override { return Note("Command", id, control, notification); }
    void OnInit() override { Note("Init"); }
    bool OnDestroy() override { return Note("Destroy"); }
    bool OnEraseBackground(HDC dc) override { return Note("EraseBackground", dc); }
    void OnPaint() override { Note("Paint"); }
    bool OnTimer(UINT_PTR id, uint64_t userWord) override { return Note("Timer", id, userWord); }
    HBRUSH OnCtlColorStatic(HDC dc) override { return Note("ColorStatic", dc) ? GetSysColorBrush(COLOR_INFOBK) : nullptr; }
    bool OnOK() override { return Note("OK"); }
    // clang-format on

private:
    template<class... Arguments>
    bool Note(const char* name, Arguments... arguments) {
        calls << name;
        ((calls << ' ' << arguments), ...);
        calls << ';';
        return mode == Mode::Handle;
    }
};

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

const LPARAM kBrush = reinterpret_cast<LPARAM>(GetSysColorBrush(COLOR_INFOBK));

enum Handled { Never, Always, AsAnswered };

const struct Row {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    const char* calls;
    Handled handled = AsAnswered;
    LRESULT result = 0; // when handled
} kRows[] = {
    {WM_COMMAND, MAKEWPARAM(1, 0), 17, "OK;Command 1 0x11 0;"},
    {WM_COMMAND, MAKEWPARAM(1, 5), 17, "Command 1 0x11 5;"},
    {WM_INITDIALOG, 0, 0, "Init;", Always},
    {WM_DESTROY, 0, 0, "Destroy;"},
    {WM_ERASEBKGND, 17, 0, "EraseBackground 0x11;", AsAnswered, 1},
    {WM_PAINT, 0, 0, "Paint;", Never},
    {WM_TIMER, kTimer, 0, "Timer 5 77;"},
    {WM_TIMER, kTimer + 1, 0, "", Never},
    {WM_CTLCOLORSTATIC, 17, 0, "ColorStatic 0x11;", AsAnswered, kBrush},
    {WM_CTLCOLOREDIT, 17, 0, "", Never},
};

TEST(Dispatch, CallsTheOperationOfEachMessage) {
    Recorder dialog;
    XWindow bare; // without overrides it handles nothing but the start
    MakeDialog(dialog);
    SKIP_WITHOUT_DISPLAY(dialog.Hwnd());
    MakeDialog(bare);
    dialog.StartTimer(kTimer, 1000000, 1);
    dialog.StartTimer(kTimer, 1000000, 77); // in place of the first
    for (const Row& row : kRows) {
        for (const Mode mode : {Mode::Ignore, Mode::Handle, Mode::Take}) {
            SCOPED_TRACE("message " + std::to_string(row.message) + " with " + std::to_string(row.wParam));
            const bool takes = mode == Mode::Take;
            const bool handled =
                takes || row.handled == Always || (row.handled == AsAnswered && mode == Mode::Handle);
            const LRESULT result = takes ? kTaken : handled ? row.result : 0;
            const bool isBrush = result == kBrush;
            dialog.calls.str("");
            dialog.mode = mode;
            // What the dialog procedure answers and what it leaves behind as the message's result.
            SetWindowLongPtrW(dialog.Hwnd(), DWLP_MSGRESULT, -1);
            EXPECT_EQ(XWindow::DialogProc(dialog.Hwnd(), row.message, row.wParam, row.lParam),
                      isBrush ? kBrush : handled);
            EXPECT_EQ(GetWindowLongPtrW(dialog.Hwnd(), DWLP_MSGRESULT), isBrush ? -1 : result);
            EXPECT_EQ(dialog.calls.str(), takes ? "" : row.calls);
        }
        EXPECT_EQ(XWindow::DialogProc(bare.Hwnd(), row.message, row.wParam, row.lParam),
                  row.handled == Always);
    }
}

TEST(WindowObject, DetachesFromAWindowThatEndsAndDestroysItsOwn) {
    void (*const ends[])(std::unique_ptr<Recorder>&) = {
        [](auto& object) { object->Destroy(); },
        [](auto& object) { DestroyWindow(object->Hwnd()); },
        [](auto& object) { object.reset(); },
    };
    for (const auto& end : ends) {
        SCOPED_TRACE(&end - ends);
        auto object = std::make_unique<Recorder>();
        Recorder later;
        MakeDialog(*object);
        const OwnedWindow earlier(object->Hwnd());
        MakeDialog(*object); // leaves the other window
        const HWND hwnd = object->Hwnd();
        SKIP_WITHOUT_DISPLAY(hwnd);
        EXPECT_EQ(XWindow::Find(earlier.Get()), nullptr);
        EXPECT_EQ(XWindow::Find(hwnd), object.get());
        MakeDialog(later);
        end(object);
        EXPECT_EQ(XWindow::Find(later.Hwnd()), &later);
        EXPECT_FALSE(IsWindow(hwnd));
        EXPECT_EQ(XWindow::Find(hwnd), nullptr);
        if (object != nullptr) {
            EXPECT_TRUE(object->calls.str().ends_with("Destroy;")) << object->calls.str();
            EXPECT_EQ(object->Hwnd(), nullptr);
        }
    }
}

TEST(WindowObject, MovesWithoutACoordinateThatIsToBeKept) {
    Recorder object;
    MakeDialog(object);
    SKIP_WITHOUT_DISPLAY(object.Hwnd());
    object.MoveTo(70, 90);
    object.MoveTo(kKeepCoordinate, 110);
    object.MoveTo(80, kKeepCoordinate);
    const RECT place = PlaceOf(object.Hwnd());
    EXPECT_EQ(std::pair(place.left, place.top), std::pair(80L, 110L));
}

TEST(LabelFont, IsTheLargestInWhichLabelsFit) {
    constexpr auto kText =
        L"A label of two lines,\nthe second of which is the longer one and has as many words "
        L"as the longest of the labels in the panel that the plug-in shows, or a few more";
    constexpr int kMostSteps = 3;
    Recorder dialog;
    MakeDialog(dialog);
    SKIP_WITHOUT_DISPLAY(dialog.Hwnd());
    const auto add = [&dialog](const wchar_t* className, const wchar_t* text, int width, int height) {
        return CreateWindowExW(0, className, text, WS_CHILD, 0, 0, width, height, dialog.Hwnd(), nullptr,
                               nullptr, nullptr);
    };
    add(L"SCROLLBAR", kText, 0, 0); // no label
    const HWND label = add(L"STATIC", kText, 0, 0);
    add(L"STATIC", L"fits", 2000, 200);
    LOGFONTW shape = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(dialog.Hwnd(), WM_GETFONT, 0, 0)), sizeof shape, &shape);
    const LONG height = shape.lfHeight;
    std::vector<RECT> sizes; // of the text in lower and lower fonts
    const HDC screen = GetDC(nullptr);
    for (; shape.lfHeight <= height + kMostSteps + 1; ++shape.lfHeight) {
        const OwnedFont lower(CreateFontIndirectW(&shape));
        const HGDIOBJ before = SelectObject(screen, lower.Get());
        DrawTextW(screen, kText, -1, &sizes.emplace_back(), DT_CALCRECT);
        SelectObject(screen, before);
    }
    ReleaseDC(nullptr, screen);
    for (const auto side : {&RECT::right, &RECT::bottom}) {
        for (const RECT& text : sizes) {
            // The label gets the room that the text needs in this font, and ample room to the other side.
            RECT room = {0, 0, 2000, 200};
            room.*side = text.*side;
            SetWindowPos(label, nullptr, 0, 0, room.right, room.bottom, 0);
            const auto step = std::ranges::find(sizes, text.*side, side) - sizes.begin();
            const OwnedFont font = FitLabels(dialog.Hwnd());
            LOGFONTW got = {};
            GetObjectW(font.Get(), sizeof got, &got);
            EXPECT_EQ(got.lfHeight, step == 0 || step > kMostSteps ? 0 : height + step);
            const auto used = reinterpret_cast<HFONT>(SendMessageW(label, WM_GETFONT, 0, 0));
            EXPECT_TRUE(used == font.Get() || !font.IsValid());
        }
    }
}

} // namespace
