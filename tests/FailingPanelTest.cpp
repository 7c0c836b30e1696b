#include "tests/shared/FailingCalls.h"
#include "tests/shared/TestWindow.h"

#include <sstream>

namespace {

class FailingPanel : public FailingCalls {
public:
    void SetUp() override { SKIP_WITHOUT_DISPLAY(host.Get()); }

    const OwnedWindow host = MakeTopWindow();
    const CreateRecord record = {nullptr, nullptr, trace.Get()};
};

TEST_F(FailingPanel, LeavesNothingBehind) {
    const std::wstring settings = L"-xsltfile=\"C:\\x.xsl\" -ext=\".a\"";
    const auto showAndRemove = [&]() -> std::string {
        std::string result;
        const auto read = [&](const wchar_t* text) {
            result += text == nullptr ? ", nothing" : text == settings ? ", read" : ", " + Narrow(text);
        };
        try {
            auto* instance = CALL_PLUGIN(DSP_Create, &record);
            const HWND panel = CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 1, 2, settings.c_str());
            EXPECT_EQ(GetWindow(host.Get(), GW_CHILD), panel);
            EXPECT_EQ(Account::Held("CoInitialize"), 0) << "while the panel is open";
            UpdateWindow(panel);
            result = panel != nullptr ? "shown" : "not shown";
            read(CALL_PLUGIN(DSP_RemoveConfigBit, instance, -123));
            read(CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0));
            CALL_PLUGIN(DSP_Destroy, instance);
        } catch (const std::bad_alloc&) {
            result = "not created";
        }
        return result;
    };
    showAndRemove();
    const std::string notShown = "not shown, -xsltfile=\"\" -ext=\"\", -xsltfile=\"\" -ext=\"\"";
    const std::string noSheet = "-xsltfile=\"\" -ext=\".a\"";
    const std::string noExtension = "-xsltfile=\"C:\\x.xsl\" -ext=\"\"";
    const Results unread = {"shown, " + noSheet + ", read", "shown, " + noExtension + ", read",
                            "shown, read, " + noSheet, "shown, read, " + noExtension};
    const Results withoutMemory = {"not created",
                                   notShown,
                                   "not shown, -xsltfile=\"\" -ext=\"\", nothing",
                                   "not shown, nothing, nothing",
                                   "shown, nothing, nothing",
                                   "shown, read, nothing"};
    const std::string shown = "shown, read, read";
    Failures failures = {
        {"CreateDialogParamW", 0, ERROR_NOT_ENOUGH_MEMORY, {notShown}},
        {"SetDlgItemTextW", 0, ERROR_NOT_ENOUGH_MEMORY, {notShown}},
        {"GetDlgItemTextW", 0, ERROR_INVALID_WINDOW_HANDLE, unread},
        {"CoInitialize", E_OUTOFMEMORY, 0, {shown}},
        {"CoCreateInstance", REGDB_E_CLASSNOTREG, 0, {shown}},
        {"SelectObject", 0, ERROR_INVALID_HANDLE, {shown, shown + "; ReleaseDC: too early"}},
        {"WaitForSingleObject", kInvalid, ERROR_INVALID_HANDLE, {shown + "; ReleaseMutex: not taken"}},
        {"malloc", 0, 0, {"not created", notShown, "shown, nothing, read", "shown, read, nothing"}},
        {kMemory, 0, 0, withoutMemory},
    };
    // These affect appearance at most: position, font, icon, accessible name, tooltip.
    std::istringstream names(
        "BeginPaint CreateFontIndirectW CreateMutexW DrawIconEx DrawTextW GetAncestor "
        "GetClassNameW GetClientRect GetDC GetDlgItem GetObjectW GetSysColorBrush GetWindow "
        "GetWindowRect GetWindowTextW LoadImageW MapDialogRect MapWindowPoints "
        "SendMessageW SetTimer SetWindowPos SetWindowLongPtrW WriteFile");
    for (std::string name; names >> name;) {
        failures.push_back({name, 0, ERROR_NOT_ENOUGH_MEMORY, {shown}});
    }
    LetFail(showAndRemove, failures);
}

TEST_F(FailingPanel, IsNotLeftEmptyInPlaceOfAFilledOne) {
    auto* instance = CALL_PLUGIN(DSP_Create, &record);
    const std::wstring earlier = L"-xsltfile=\"\" -ext=\".a\"";
    const std::wstring later = L"-xsltfile=\"\" -ext=\".b\"";
    bool succeeds = false;
    for (uint64_t call = 1; !succeeds; ++call) {
        CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 0, 0, earlier.c_str());
        Account::Heap::EndAt(call);
        const HWND panel = CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 0, 0, later.c_str());
        succeeds = Account::Heap::calls < call;
        Account::Heap::EndAt(0);
        const std::wstring settings = CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0);
        EXPECT_EQ(panel != nullptr, settings == later) << call;
    }
    CALL_PLUGIN(DSP_Destroy, instance);
}

} // namespace
