#include "decoders/clZentaroDecoder.h"
#include "tests/shared/Account.h"
#include "tests/shared/Decoders.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"
#include "tests/shared/Thread.h"

#include <commdlg.h>

#include <deque>

// A host may load, use and unload the plug-in for ever: whatever the use was, its account is even, and no TLS
// index and no handle of the process stays, which also the system's own libraries may take for it.

namespace {

/// How many TLS indices and handles are in use. Asks for every value of a handle; Wine keeps no count.
std::pair<size_t, size_t> InUse() {
    std::vector<DWORD> free;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        free.push_back(index);
    }
    std::for_each(free.begin(), free.end(), TlsFree);
    size_t handles = 0;
    for (uintptr_t value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1u : 0u;
    }
    return {TLS_MINIMUM_AVAILABLE + 1024 - free.size(), handles};
}

class Loading : Accounted, public testing::Test {
protected:
    Loading() {
        library.decodes = {L".tst", L".out"};
        WriteTestFile(source, "source");
        WriteTestFile(converted, "converted");
        WriteTestFile(sheet, "<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'>"
                             "<s:template match='/'><t/></s:template></s:stylesheet>");
    }

    /// Loads and unloads a library many times, uses it in between, and compares what the process has.
    static void ExpectNothingStays(const std::string& way, const std::function<void()>& use,
                                   const wchar_t* path = LoadedPlugin::kPath) {
        SCOPED_TRACE(way);
        const auto run = [&](size_t loads) {
            for (size_t load = 0; load < loads; ++load) {
                {
                    const OwnedModule module(LoadLibraryW(path));
                    ASSERT_TRUE(module.IsValid()) << load << ": " << GetLastError();
                    use();
                }
                ASSERT_EQ(Account::Since({}), "") << load;
                ASSERT_EQ(GetModuleHandleW(path), nullptr);
            }
        };
        run(4); // the system makes its own lasting objects during these
        const auto before = InUse();
        run(20);
        const auto after = InUse();
        // Windows may take one for itself during any number of loads; one leak in ten loads is more.
        const size_t allowed = RunsUnderWine() ? 0 : 1;
        EXPECT_LE(after.first, before.first + allowed) << "TLS indices";
        EXPECT_LE(after.second, before.second + allowed) << "handles";
    }

    /// Conversions by an instance of its own, which keeps nothing of the second; the error lines.
    std::wstring Convert(const std::wstring& settings) const {
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, nullptr};
        AfterConversionInfo info = {};
        info.sourceFileName = source.c_str();
        info.destFileName = converted.c_str();
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        Account::Balance first;
        for (const bool isSecond : {false, true}) {
            CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr);
            CALL_PLUGIN(DSP_EndConversion, instance);
            CALL_PLUGIN(DSP_AfterConversion, instance, &info);
            first = isSecond ? first : Account::Now();
        }
        EXPECT_EQ(Account::Now(), first);
        CALL_PLUGIN(DSP_Destroy, instance);
        return ReadUtf16(errorPath);
    }

    CallStubs& stubs = Account::Stubs();
    // Stay loaded: of some of its own libraries Wine loses a handle each time that they are unloaded.
    const OwnedModule systems[3] = {OwnedModule(LoadLibraryW(L"comdlg32.dll")),
                                    OwnedModule(LoadLibraryW(L"msxml3.dll")),
                                    OwnedModule(LoadLibraryW(L"oleacc.dll"))};
    Decoders decoders;
    FixtureBehaviour& library = decoders.Add(L"lib.dll");
    const TempFolder folder;
    const std::wstring source = folder.Path(L"in.tst");
    const std::wstring converted = folder.Path(L"song.out");
    const std::wstring sheet = folder.Path(L"sheet.xsl");
    const std::wstring errorPath = folder.Path(L"errors.log");
    const std::wstring transforming = L"-xsltfile=\"" + sheet + L"\"";
};

TEST_F(Loading, LeavesNothingBehind) {
    // The failures throw exceptions, for which the runtime may keep something of each thread.
    const auto fail = [this] {
        stubs["CoCreateInstance"].FailAt(stubs["CoCreateInstance"].calls + 1, REGDB_E_CLASSNOTREG, 0);
        EXPECT_TRUE(Convert(transforming).starts_with(L"Unexpected MS XML error"));
    };
    // One thread that outlives each load and works in the next again.
    const OwnedHandle begin(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const OwnedHandle done(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    bool isOver = false;
    const Thread lasting([&] {
        while (WaitForSingleObject(begin.Get(), INFINITE) == WAIT_OBJECT_0 && !isOver) {
            fail();
            SetEvent(done.Get());
        }
    });
    ExpectNothingStays("alone", [] { EXPECT_EQ(Account::Held("WSAStartup"), 1) << "Winsock is up"; });
    ExpectNothingStays("conversion", [this] { EXPECT_EQ(Convert(L"-ext=.xml"), L""); });
    ExpectNothingStays("transformation", [this] { EXPECT_EQ(Convert(transforming), L""); });
    ExpectNothingStays("failing transformation", fail);
    ExpectNothingStays("the same, thread ends before the unload", [&] { const Thread thread(fail); });
    ExpectNothingStays("the same, thread ends after the unload",
                       [&] { SignalObjectAndWait(begin.Get(), done.Get(), INFINITE, FALSE); });
    isOver = true;
    SetEvent(begin.Get());
    for (const std::wstring name : {L"wav.dll", L"flac.dll"}) {
        Account::Keep(name);
        const std::wstring path = L"..\\..\\tools\\decoder\\" + name;
        uint64_t load = 0;
        const auto decode = [&] {
            clZentaroDecoder decoder;
            ASSERT_TRUE(decoder.Load(path.c_str()) && decoder.CreateInstance(nullptr));
            Account::Heap::EndAt(++load % 10 + 1);
            decoder.Open(source.c_str(), kOpenIDTags);
            Account::Heap::EndAt(0);
        };
        ExpectNothingStays("sample decoder", decode, path.c_str());
    }
}

TEST_F(Loading, PanelLeavesNothingBehind) {
    const OwnedWindow host = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(host.Get());
    const auto choose = [](OPENFILENAMEW* dialog) -> BOOL {
        wcscpy(dialog->lpstrFile, L"C:\\chosen.xsl");
        return TRUE;
    };
    stubs["GetOpenFileNameW"].target = reinterpret_cast<void*>(+choose);
    ExpectNothingStays("panel", [&] {
        const CreateRecord record = {};
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        const HWND panel = CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 1, 2, L"");
        UpdateWindow(panel);
        SendMessageW(panel, WM_TIMER, 7788, 0); // the tool tip's
        SendMessageW(panel, WM_COMMAND, MAKEWPARAM(1008, BN_CLICKED), 0);
        EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0),
                     L"-xsltfile=\"C:\\chosen.xsl\" -ext=\"\"");
        CALL_PLUGIN(DSP_Destroy, instance);
    });
}

TEST_F(Loading, ManyThreadsRunOutOfMemoryAtOnce) {
    const LoadedPlugin plugin;
    constexpr size_t kThreads = 20; // more than there is spare memory for
    static std::atomic<size_t> begun = 0;
    // None has reported its exception before the last one has begun.
    const auto write = [](HANDLE file, const void* bytes, DWORD size, DWORD* written,
                          OVERLAPPED* at) -> BOOL {
        while (begun < kThreads) {
            Sleep(1);
        }
        Sleep(20);
        return WriteFile(file, bytes, size, written, at);
    };
    stubs["WriteFile"].target = reinterpret_cast<void*>(+write);
    const OwnedFile errors = CreateTestFile(errorPath);
    const CreateRecord record = {errors.Get(), nullptr, nullptr};
    auto* instance = CALL_PLUGIN(DSP_Create, &record);
    const auto begin = PluginExport<decltype(DSP_BeginConversion)>("DSP_BeginConversion");
    Account::Heap::size = Account::Heap::used;
    {
        std::deque<Thread> threads;
        for (size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back([begin, instance] {
                ++begun;
                EXPECT_EQ(begin(instance, nullptr, L"-ext=.a", nullptr), 0);
            });
        }
    }
    Account::Heap::EndAt(0);
    CALL_PLUGIN(DSP_Destroy, instance);
    EXPECT_EQ(Lines(ReadUtf16(errorPath)), std::vector<std::wstring>(kThreads, L"Out of memory"));
}

/// The fixture decoder has the runtime's parts that all of our libraries have, and exports its guard.
TEST_F(Loading, MakesANewStackGuard) {
    uintptr_t guards[2] = {};
    for (uintptr_t& guard : guards) {
        const OwnedModule module(LoadLibraryW(Decoders::PathOf(L"lib.dll").c_str()));
        const auto* address =
            reinterpret_cast<const uintptr_t*>(GetProcAddress(module.Get(), "__stack_chk_guard"));
        ASSERT_NE(address, nullptr);
        guard = *address;
        EXPECT_NE(guard, 0u);
    }
    EXPECT_NE(guards[0], guards[1]);
}

} // namespace
