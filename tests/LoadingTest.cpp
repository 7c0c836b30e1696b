#include "decoders/clZentaroDecoder.h"
#include "tests/shared/Decoders.h"
#include "tests/shared/ParserStubs.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"
#include "tests/shared/Thread.h"

#include <commdlg.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <new>

// A host may load, use and unload the plug-in for ever: whatever the use was, its account is even, and no TLS
// index and no handle of the process stays, which also the system's own libraries may take for it. LOADS of
// the environment says how many loads for each way of use, 3000 for a thorough run, which prints the counts.

namespace {

/// How many TLS indices and handles are in use. Asks for every value of a handle; Wine keeps no count.
std::pair<ptrdiff_t, ptrdiff_t> InUse() {
    std::vector<DWORD> free;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        free.push_back(index);
    }
    std::for_each(free.begin(), free.end(), TlsFree);
    ptrdiff_t handles = 0;
    for (uintptr_t value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return {-static_cast<ptrdiff_t>(free.size()), handles};
}

struct Way {
    std::string name;
    std::function<void(size_t load)> use;
    std::string failing = ""; // the function whose first call fails in each load
    int64_t answer = 0;
    std::wstring library = LoadedPlugin::kPath;
};

class Loading : Accounted, public testing::Test {
protected:
    Loading() {
        library.decodes = {L".tst", L".out"};
        WriteTestFile(source, "source");
        WriteTestFile(converted, "converted");
        WriteTestFile(sheet, "<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'>"
                             "<s:template match='/'><t/></s:template></s:stylesheet>");
        info.sourceFileName = source.c_str();
        info.destFileName = converted.c_str();
    }

    /// Loads and unloads a library many times, uses it in between, and compares what the process has.
    static void ExpectNothingStays(const Way& way) {
        SCOPED_TRACE(way.name);
        CallStub& stub = Account::Stubs()[way.failing];
        const auto run = [&](size_t loads) {
            for (size_t load = 0; load < loads; ++load) {
                stub.FailAt(1, way.answer, 0);
                {
                    const OwnedModule module(LoadLibraryW(way.library.c_str()));
                    ASSERT_TRUE(module.IsValid()) << load << ": " << GetLastError();
                    way.use(load);
                }
                // COM is left also when it could not be entered.
                const std::string fault = way.failing == "CoInitialize" ? "; CoUninitialize: not taken" : "";
                ASSERT_EQ(Account::Since({}), fault + fault) << load;
                ASSERT_EQ(GetModuleHandleW(way.library.c_str()), nullptr);
            }
        };
        const char* thorough = std::getenv("LOADS");
        const size_t loads = thorough != nullptr ? static_cast<size_t>(std::atoi(thorough)) : 20;
        run(4); // the system makes its own lasting objects during these
        const auto before = InUse();
        run(loads);
        const auto after = InUse();
        stub.FailAt(0, 0, 0);
        const ptrdiff_t indices = after.first - before.first;
        const ptrdiff_t handles = after.second - before.second;
        // Windows may take one for itself during any number of loads; one leak in ten of the fewest is more.
        EXPECT_LE(std::max(indices, handles), RunsUnderWine() ? 0 : 1)
            << indices << " TLS indices, " << handles << " handles";
        if (thorough != nullptr) {
            std::printf("%-60s %6zu loads: %zd TLS indices, %zd handles\n", way.name.c_str(), loads, indices,
                        handles);
        }
    }

    /// Two conversions by an instance of its own, which keeps nothing of the second; the error lines. In each
    /// the first call of the function that is to fail fails.
    std::wstring Convert(const std::wstring& settings) const {
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, nullptr};
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        Account::Balance first;
        for (const bool isSecond : {false, true}) {
            stubs.CountAnew();
            CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr);
            CALL_PLUGIN(DSP_EndConversion, instance);
            CALL_PLUGIN(DSP_AfterConversion, instance, &info);
            first = isSecond ? first : Account::Now();
        }
        EXPECT_EQ(Account::Now(), first);
        CALL_PLUGIN(DSP_Destroy, instance);
        return ReadUtf16(errorPath);
    }

    /// Calls every export that does work, when only so many allocations more are possible in each call.
    void RunOutOfMemory(uint64_t allocations) const {
        const auto call = [allocations](auto work) {
            Account::Heap::EndAt(allocations);
            Account::Heap::size = allocations == 0 ? Account::Heap::used.load() : INT64_MAX;
            const auto result = work();
            Account::Heap::EndAt(0);
            return result;
        };
        const OwnedFile trace = CreateTestFile(errorPath);
        const CreateRecord record = {nullptr, nullptr, trace.Get()};
        const std::wstring longKey(1000, L'k');
        const auto create = [&] { return CALL_PLUGIN(DSP_Create, &record); };
        try {
            CALL_PLUGIN(DSP_Destroy, call(create));
            EXPECT_NE(allocations, 0u);
        } catch (const std::bad_alloc&) {
            Account::Heap::EndAt(0);
        }
        auto* instance = create();
        const bool done[] = {
            call([&] {
                return CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, L"-ext=.xml", nullptr);
            }) != 0,
            call([&] { return CALL_PLUGIN(DSP_AfterConversion, instance, &info); }) != 0,
            call([&] { return CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0); }) != nullptr,
            call([&] { return CALL_PLUGIN(DSP_ShowConfigBit, instance, nullptr, 0, 0, L"-ext=.a"); }) !=
                nullptr,
        };
        EXPECT_TRUE(allocations != 0 || std::count(std::begin(done), std::end(done), true) == 0);
        EXPECT_EQ(call([&] { return CALL_PLUGIN(DSP_Get, instance, longKey.c_str()); }), 0);
        EXPECT_EQ(call([&] { return CALL_PLUGIN(DSP_Set, instance, longKey.c_str()); }), 0);
        EXPECT_EQ(call([&] { return CALL_PLUGIN(DSP_EndConversion, instance); }), 1);
        EXPECT_EQ(call([&] { return CALL_PLUGIN(DSP_Destroy, instance); }), 1);
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
    const std::wstring document = folder.Path(L"song.xml");
    const std::wstring sheet = folder.Path(L"sheet.xsl");
    const std::wstring errorPath = folder.Path(L"errors.log");
    const std::wstring transforming = L"-xsltfile=\"" + sheet + L"\"";
    AfterConversionInfo info = {};
};

TEST_F(Loading, LeavesNothingBehind) {
    {
        const LoadedPlugin plugin;
        CoInitialize(nullptr);
        WatchParser();
        CoUninitialize();
    }
    const auto converting = [this](const std::wstring& settings) {
        return [this, settings](size_t) {
            WriteTestFile(document, "");
            EXPECT_EQ(Convert(settings), L"");
            EXPECT_EQ(ReadBytes(document).empty(), stubs["WriteFile"].failing == 0);
        };
    };
    const auto failing = [this](const wchar_t* error) {
        return [this, error](size_t) { EXPECT_TRUE(Convert(transforming).starts_with(error)); };
    };
    const auto fail = failing(L"");
    // One thread that outlives each load and works in the next again.
    const OwnedHandle begin(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const OwnedHandle done(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    bool isOver = false;
    const Thread lasting([&] {
        while (WaitForSingleObject(begin.Get(), INFINITE) == WAIT_OBJECT_0 && !isOver) {
            fail(0);
            SetEvent(done.Get());
        }
    });
    std::vector<Way> ways = {
        {"alone", [](size_t) { EXPECT_EQ(Account::Held("WSAStartup"), 1) << "Winsock is up"; }},
        {"null instances",
         [this](size_t) {
             CALL_PLUGIN(DSP_ShowConfigBit, nullptr, nullptr, 0, 0, nullptr);
             CALL_PLUGIN(DSP_RemoveConfigBit, nullptr, 0);
             CALL_PLUGIN(DSP_BeginConversion, nullptr, nullptr, L"", nullptr);
             CALL_PLUGIN(DSP_EndConversion, nullptr);
             CALL_PLUGIN(DSP_AfterConversion, nullptr, &info);
             CALL_PLUGIN(DSP_PassAudioBlock, nullptr);
             CALL_PLUGIN(DSP_Get, nullptr, L"IsLive");
             CALL_PLUGIN(DSP_Set, nullptr, L"IsLive");
             CALL_PLUGIN(DSP_Destroy, nullptr);
         }},
        {"without memory", [this](size_t load) { RunOutOfMemory(load % 50); }},
        {"conversion", converting(L"-ext=.xml")},
        {"conversion, writing fails", converting(L"-ext=.xml"), "WriteFile"},
        {"conversion, no output",
         [this](size_t) { EXPECT_EQ(Convert(L"-filename=\"" + folder.Path(L"none\\x.xml") + L"\""), L""); }},
        {"transformation", converting(transforming)},
        {"transformation, writing fails", converting(transforming), "WriteFile"},
        {"failing transformation, thread ends before the unload", [&](size_t) { Thread([&] { fail(0); }); },
         "CoCreateInstance", REGDB_E_CLASSNOTREG},
        {"failing transformation, thread ends after the unload",
         [&](size_t) { SignalObjectAndWait(begin.Get(), done.Get(), INFINITE, FALSE); }, "CoCreateInstance",
         REGDB_E_CLASSNOTREG},
    };
    const std::pair<const char*, int64_t> failures[] = {{"CoInitialize", E_OUTOFMEMORY},
                                                        {"CoCreateInstance", REGDB_E_CLASSNOTREG},
                                                        {"CoCreateInstance", E_NOINTERFACE},
                                                        {"OleRun", E_FAIL},
                                                        {"SysAllocStringLen", 0},
                                                        {"CreateStreamOnHGlobal", E_OUTOFMEMORY},
                                                        {"GetHGlobalFromStream", E_INVALIDARG},
                                                        {"GlobalLock", 0},
                                                        {"loadXML", E_FAIL},
                                                        {"load", E_FAIL},
                                                        {"createProcessor", E_FAIL},
                                                        {"transform", E_FAIL}};
    for (const auto& [function, answer] : failures) {
        ways.push_back({std::string("transformation without ") + function, fail, function, answer});
    }
    std::for_each(ways.begin(), ways.end(), ExpectNothingStays);
    isOver = true;
    SetEvent(begin.Get());

    WriteTestFile(sheet, "<");
    ExpectNothingStays({"transformation, broken style sheet", failing(L"Loading XSL failed")});
    const std::vector<uint8_t> tags = TagBlob().Add(L"1st", L"x").Bytes();
    info.destIDTags = tags.data();
    info.destIDTagsSize = static_cast<uint32_t>(tags.size());
    ExpectNothingStays(
        {"transformation, document not well-formed", failing(L"Loading intermediate XML failed")});
    for (const std::wstring name : {L"wav.dll", L"flac.dll"}) {
        Account::Keep(name);
        const std::wstring path = L"..\\..\\tools\\decoder\\" + name;
        const auto decode = [&](size_t load) {
            clZentaroDecoder decoder;
            ASSERT_TRUE(decoder.Load(path.c_str()) && decoder.CreateInstance(nullptr));
            Account::Heap::EndAt(load % 10 + 1);
            decoder.Open(source.c_str(), kOpenIDTags);
            Account::Heap::EndAt(0);
        };
        ExpectNothingStays({"sample decoder", decode, "", 0, path});
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
    CoInitialize(nullptr); // as the host's thread may have
    const auto use = [&](size_t) {
        const CreateRecord record = {};
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        const HWND panel = CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 1, 2, L"");
        UpdateWindow(panel);
        SendMessageW(panel, WM_TIMER, 7788, 0); // the tool tip's
        SendMessageW(panel, WM_COMMAND, MAKEWPARAM(1008, BN_CLICKED), 0);
        EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0),
                     L"-xsltfile=\"C:\\chosen.xsl\" -ext=\"\"");
        CALL_PLUGIN(DSP_Destroy, instance);
    };
    ExpectNothingStays({"panel", use});
    CoUninitialize();
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
    }
    for (const int half : {0, 32}) { // may be equal by chance once in four thousand million runs
        EXPECT_NE(static_cast<uint32_t>(guards[0] >> half), 0u);
        EXPECT_NE(static_cast<uint32_t>(guards[0] >> half), static_cast<uint32_t>(guards[1] >> half));
    }
}

} // namespace
