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

size_t Loads() {
    const char* loads = std::getenv("LOADS");
    return loads != nullptr ? static_cast<size_t>(std::atoi(loads)) : 20;
}

/// All that are free in the process.
std::vector<DWORD> TakeTlsIndices() {
    std::vector<DWORD> indices;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        indices.push_back(index);
    }
    return indices;
}

/// How many TLS indices and handles are in use. Asks for every value of a handle; Wine keeps no count.
std::pair<size_t, size_t> InUse() {
    const std::vector<DWORD> free = TakeTlsIndices();
    std::for_each(free.begin(), free.end(), TlsFree);
    size_t handles = 0;
    for (uintptr_t value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1u : 0u;
    }
    return {TLS_MINIMUM_AVAILABLE + 1024 - free.size(), handles};
}

struct Way {
    std::string name;
    std::function<void(size_t load)> use;
    const char* failing = ""; // the function whose first call fails in each load
    int64_t answer = 0;
    const wchar_t* library = LoadedPlugin::kPath;
};

class Loading : Accounted, public testing::Test {
protected:
    Loading() {
        library.decodes = {L".tst", L".out"};
        library.idTags = TagBlob().Add(L"Title", L"Song").Bytes();
        library.properties = TagBlob().Add(L"Codec", L"Test").Bytes();
        WriteTestFile(source, "source");
        WriteTestFile(converted, "converted");
        WriteTestFile(sheet, "<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'>"
                             "<s:template match='/'><t/></s:template></s:stylesheet>");
    }

    /// Loads and unloads a library many times, uses it in between, and compares what the process has.
    void ExpectNothingStays(const Way& way) {
        SCOPED_TRACE(way.name);
        CallStub& stub = stubs[way.failing];
        const auto run = [&](size_t loads) {
            for (size_t load = 0; load < loads; ++load) {
                stub.calls = 0;
                stub.FailAt(1, way.answer, 0);
                {
                    const OwnedModule module(LoadLibraryW(way.library));
                    ASSERT_TRUE(module.IsValid()) << load << ": " << GetLastError();
                    way.use(load);
                }
                // COM is left also when it could not be entered.
                const std::string fault =
                    way.failing == std::string("CoInitialize") ? "; CoUninitialize: not taken" : "";
                ASSERT_EQ(Account::Since({}), fault) << load;
                ASSERT_EQ(GetModuleHandleW(way.library), nullptr);
            }
        };
        run(4); // the system makes its own lasting objects during these
        const auto before = InUse();
        run(Loads());
        const auto after = InUse();
        stub.FailAt(0, 0, 0);
        // Windows may take one for itself during any number of loads; one leak in ten of the fewest is more.
        const size_t allowed = RunsUnderWine() ? 0 : 1;
        EXPECT_LE(after.first, before.first + allowed) << "TLS indices";
        EXPECT_LE(after.second, before.second + allowed) << "handles";
        if (std::getenv("LOADS") != nullptr) {
            std::printf("%-60s %6zu loads: %zd TLS indices, %zd handles\n", way.name.c_str(), Loads(),
                        static_cast<ptrdiff_t>(after.first - before.first),
                        static_cast<ptrdiff_t>(after.second - before.second));
            std::fflush(stdout);
        }
    }

    /// A conversion by an instance of its own; the error lines.
    std::wstring Convert(const std::wstring& settings) const {
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, nullptr};
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr);
        CALL_PLUGIN(DSP_EndConversion, instance);
        const AfterConversionInfo info = Info();
        CALL_PLUGIN(DSP_AfterConversion, instance, &info);
        CALL_PLUGIN(DSP_Destroy, instance);
        return ReadUtf16(errorPath);
    }

    AfterConversionInfo Info() const {
        AfterConversionInfo info = {};
        info.sourceFileName = source.c_str();
        info.destFileName = converted.c_str();
        info.destIDTags = tags.data();
        info.destIDTagsSize = static_cast<uint32_t>(tags.size());
        return info;
    }

    /// Calls every export that works, when only so many allocations more are possible in each call.
    void RunOutOfMemory(int64_t allocations) const {
        const auto call = [allocations](auto work) {
            Account::Heap::EndAt(static_cast<uint64_t>(allocations));
            Account::Heap::size = allocations == 0 ? Account::Heap::used.load() : INT64_MAX;
            const auto result = work();
            Account::Heap::EndAt(0);
            return result;
        };
        const CreateRecord record = {};
        const AfterConversionInfo info = Info();
        const std::wstring longKey(1000, L'k');
        const auto create = [&] { return CALL_PLUGIN(DSP_Create, &record); };
        try {
            CALL_PLUGIN(DSP_Destroy, call(create));
            EXPECT_NE(allocations, 0);
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
    std::vector<uint8_t> tags = TagBlob().Add(L"Artist", L"A").Bytes();
};

TEST_F(Loading, LeavesNothingBehind) {
    {
        const LoadedPlugin plugin;
        CoInitialize(nullptr);
        WatchParser();
        CoUninitialize();
    }
    const auto convert = [this](size_t) {
        WriteTestFile(document, "");
        EXPECT_EQ(Convert(L"-ext=.xml"), L"");
        EXPECT_EQ(ReadBytes(document).empty(), stubs["WriteFile"].failing == 0);
    };
    const auto transform = [this](size_t) {
        WriteTestFile(document, "");
        EXPECT_EQ(Convert(transforming), L"");
        EXPECT_EQ(ReadBytes(document).empty(), stubs["WriteFile"].failing == 0);
    };
    const auto fail = [this](size_t) { EXPECT_NE(Convert(transforming), L""); };
    const auto failWith = [this](const wchar_t* error) {
        return [this, error](size_t) { EXPECT_TRUE(Convert(transforming).starts_with(error)); };
    };
    const auto decode = [this](const wchar_t* path) {
        return [this, path](size_t load) {
            clZentaroDecoder decoder;
            ASSERT_TRUE(decoder.Load(path) && decoder.CreateInstance(nullptr));
            Account::Heap::EndAt(load % 10 + 1);
            decoder.Open(source.c_str(), kOpenIDTags);
            Account::Heap::EndAt(0);
        };
    };
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
    const Way ways[] = {
        {"alone", [](size_t) {}},
        {"null instances",
         [this](size_t) {
             const AfterConversionInfo info = Info();
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
        {"without memory", [this](size_t load) { RunOutOfMemory(static_cast<int64_t>(load % 50)); }},
        {"conversion", convert},
        {"conversion, writing fails", convert, "WriteFile"},
        {"conversion, no output",
         [this](size_t) { EXPECT_EQ(Convert(L"-filename=\"" + folder.Path(L"none\\x.xml") + L"\""), L""); }},
        {"transformation", transform},
        {"transformation, writing fails", transform, "WriteFile"},
        {"transformation, no COM", fail, "CoInitialize", E_OUTOFMEMORY},
        {"transformation, no class", fail, "CoCreateInstance", REGDB_E_CLASSNOTREG},
        {"transformation, no interface", fail, "CoCreateInstance", E_NOINTERFACE},
        {"transformation, object does not run", fail, "OleRun", E_FAIL},
        {"transformation, no text", fail, "SysAllocStringLen"},
        {"transformation, no stream", fail, "CreateStreamOnHGlobal", E_OUTOFMEMORY},
        {"transformation, no block", fail, "GetHGlobalFromStream", E_INVALIDARG},
        {"transformation, block not locked", fail, "GlobalLock"},
        {"transformation, document not loaded", fail, "loadXML", E_FAIL},
        {"transformation, style sheet not loaded", fail, "load", E_FAIL},
        {"transformation, no processor", fail, "createProcessor", E_FAIL},
        {"transformation fails", fail, "transform", E_FAIL},
        {"failing transformation, thread ends before the unload", [&](size_t) { Thread([&] { fail(0); }); },
         "CoCreateInstance", REGDB_E_CLASSNOTREG},
        {"failing transformation, thread ends after the unload",
         [&](size_t) { SignalObjectAndWait(begin.Get(), done.Get(), INFINITE, FALSE); }, "CoCreateInstance",
         REGDB_E_CLASSNOTREG},
    };
    for (const Way& way : ways) {
        ExpectNothingStays(way);
    }
    isOver = true;
    SetEvent(begin.Get());

    WriteTestFile(sheet, "<");
    ExpectNothingStays({"transformation, broken style sheet", failWith(L"Loading XSL failed")});
    tags = TagBlob().Add(L"1st", L"x").Bytes();
    ExpectNothingStays(
        {"transformation, document not well-formed", failWith(L"Loading intermediate XML failed")});
    for (const std::wstring name : {L"wav.dll", L"flac.dll"}) {
        Account::Keep(name);
        const std::wstring path = L"..\\..\\tools\\decoder\\" + name;
        ExpectNothingStays({"sample decoder", decode(path.c_str()), "", 0, path.c_str()});
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
    const CreateRecord record = {};
    ExpectNothingStays({"panel", [&](size_t) {
                            auto* instance = CALL_PLUGIN(DSP_Create, &record);
                            const HWND panel =
                                CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 1, 2, L"");
                            UpdateWindow(panel);
                            SendMessageW(panel, WM_TIMER, 7788, 0); // the tool tip's
                            SendMessageW(panel, WM_COMMAND, MAKEWPARAM(1008, BN_CLICKED), 0);
                            EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0),
                                         L"-xsltfile=\"C:\\chosen.xsl\" -ext=\"\"");
                            CALL_PLUGIN(DSP_Destroy, instance);
                        }});
}

TEST_F(Loading, ManyThreadsRunOutOfMemoryAtOnce) {
    const LoadedPlugin plugin;
    constexpr size_t kThreads = 20; // more than there is spare memory for
    {
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, nullptr};
        std::vector<clDSP_WriteMetadataFile*> instances;
        for (size_t i = 0; i < kThreads; ++i) {
            instances.push_back(CALL_PLUGIN(DSP_Create, &record));
        }
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
        const auto begin = PluginExport<decltype(DSP_BeginConversion)>("DSP_BeginConversion");
        Account::Heap::size = Account::Heap::used;
        {
            std::deque<Thread> threads;
            for (clDSP_WriteMetadataFile* instance : instances) {
                threads.emplace_back([begin, instance] {
                    ++begun;
                    EXPECT_EQ(begin(instance, nullptr, L"-ext=.a", nullptr), 0);
                });
            }
        }
        Account::Heap::EndAt(0);
        for (clDSP_WriteMetadataFile* instance : instances) {
            CALL_PLUGIN(DSP_Destroy, instance);
        }
    }
    EXPECT_EQ(Lines(ReadUtf16(errorPath)), std::vector<std::wstring>(kThreads, L"Out of memory"));
}

TEST_F(Loading, NeedsNoTlsIndex) {
    {
        const LoadedPlugin plugin; // the system takes its own indices for the work
        EXPECT_EQ(Convert(transforming), L"");
    }
    const std::vector<DWORD> indices = TakeTlsIndices();
    stubs.CountAnew();
    stubs["CoCreateInstance"].FailAt(1, REGDB_E_CLASSNOTREG, 0);
    {
        const LoadedPlugin plugin;
        EXPECT_EQ(Convert(transforming),
                  L"Unexpected MS XML error:   [clDSP_WriteMetadataFile::WriteXMLFile]\r\n");
    }
    std::for_each(indices.begin(), indices.end(), TlsFree);
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
