#include "decoders/clZentaroDecoder.h"
#include "tests/shared/Decoders.h"
#include "tests/shared/PluginHarness.h"
#include "tests/shared/TestWindow.h"

#include <msxml2.h>

#include <commdlg.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

// A host may load, use and unload the plug-in for ever: whatever the use was, no TLS index and no handle of
// the process stays. These are counted in the process, because what the library's runtime takes while it is
// loaded is taken before any stub can stand in its imports. LOADS of the environment says how many loads of
// each kind, 3000 for a thorough run, which also prints the counts.

namespace {

size_t Loads() {
    const char* loads = std::getenv("LOADS");
    return loads != nullptr ? static_cast<size_t>(std::atoi(loads)) : 20;
}

/// What Windows may take for itself during any number of loads; one leak in ten of the fewest loads is more.
size_t Systems() {
    return RunsUnderWine() ? 0 : 1;
}

size_t TlsIndicesInUse() {
    std::vector<DWORD> free;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        free.push_back(index);
    }
    for (const DWORD index : free) {
        TlsFree(index);
    }
    return TLS_MINIMUM_AVAILABLE + 1024 - free.size();
}

/// Asks for every value that a handle may have; Wine keeps no count.
size_t HandlesInUse() {
    constexpr uintptr_t kEnd = 0x4000;
    size_t count = 0;
    for (uintptr_t value = 4; value < kEnd; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1u : 0u;
    }
    return count;
}

/// Puts a function in the place of one that a library imports, until the library is unloaded.
void Replace(HMODULE library, const char* name, void* function) {
    auto* base = reinterpret_cast<uint8_t*>(library);
    const auto* headers =
        reinterpret_cast<IMAGE_NT_HEADERS64*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* from = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         from->FirstThunk != 0; ++from) {
        auto* names = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + from->OriginalFirstThunk);
        auto* places = reinterpret_cast<void**>(base + from->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++places) {
            if (std::strcmp(reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData)->Name,
                            name) == 0) {
                DWORD protection = 0;
                VirtualProtect(places, sizeof *places, PAGE_READWRITE, &protection);
                *places = function;
                return;
            }
        }
    }
    ADD_FAILURE() << name << " is not imported";
}

/// Stands for a function of any arguments that fails.
template<int64_t answer>
int64_t Fail() {
    return answer;
}

HMODULE PluginModule() {
    return GetModuleHandleW(L"WriteMetadataFile.dll");
}

/// The memory of a library whose calls are replaced by these.
struct Memory {
    inline static std::atomic<int64_t> left = INT64_MAX; // allocations before memory runs out
    inline static std::atomic<int64_t> blocks = 0;

    static void* Take(void* old, size_t size) {
        void* block = left-- > 0 ? std::realloc(old, size) : nullptr;
        blocks += block != nullptr && old == nullptr ? 1 : 0;
        return block;
    }
    static void* Malloc(size_t size) { return Take(nullptr, size); }
    static void* Calloc(size_t count, size_t size) {
        void* block = Take(nullptr, count * size);
        return block != nullptr ? std::memset(block, 0, count * size) : nullptr;
    }
    static void Free(void* block) {
        blocks -= block != nullptr ? 1 : 0;
        std::free(block);
    }
    static void ReplaceOf(HMODULE library) {
        left = INT64_MAX;
        Replace(library, "malloc", reinterpret_cast<void*>(Malloc));
        Replace(library, "calloc", reinterpret_cast<void*>(Calloc));
        Replace(library, "realloc", reinterpret_cast<void*>(Take));
        Replace(library, "free", reinterpret_cast<void*>(Free));
    }
};

/// Does the work with so many allocations left.
template<class Work>
auto WithMemory(int64_t allocations, Work work) {
    Memory::left = allocations;
    const auto result = work();
    Memory::left = INT64_MAX;
    return result;
}

/// Runs the work on so many new threads at once, until all have ended.
void OnThreads(size_t count, const std::function<void()>& work) {
    const LPTHREAD_START_ROUTINE run = [](void* argument) -> DWORD {
        (*static_cast<const std::function<void()>*>(argument))();
        return 0;
    };
    std::vector<OwnedHandle> threads;
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back(
            CreateThread(nullptr, 0, run, const_cast<std::function<void()>*>(&work), 0, nullptr));
    }
    for (const OwnedHandle& thread : threads) {
        WaitForSingleObject(thread.Get(), INFINITE);
    }
}

class Loading : public testing::Test {
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

    /// Loads and unloads the plug-in many times, uses it in between, and compares what the process has.
    static void ExpectNothingStays(const std::string& way, const std::function<void(size_t load)>& use,
                                   const wchar_t* path = LoadedPlugin::kPath) {
        const auto run = [&](size_t loads) {
            for (size_t load = 0; load < loads; ++load) {
                const OwnedModule module(LoadLibraryW(path));
                ASSERT_TRUE(module.IsValid()) << way << ", load " << load << ": " << GetLastError();
                use(load);
            }
        };
        run(4); // the system makes its own lasting objects during these
        const size_t indices = TlsIndicesInUse();
        const size_t handles = HandlesInUse();
        run(Loads());
        const size_t indicesAfter = TlsIndicesInUse();
        const size_t handlesAfter = HandlesInUse();
        EXPECT_EQ(PluginModule(), nullptr) << way;
        EXPECT_LE(indicesAfter, indices + Systems()) << way << ": TLS indices";
        EXPECT_LE(handlesAfter, handles + Systems()) << way << ": handles";
        if (std::getenv("LOADS") != nullptr) {
            std::printf("%-60s %6zu loads: %zd TLS indices, %zd handles\n", way.c_str(), Loads(),
                        static_cast<ptrdiff_t>(indicesAfter - indices),
                        static_cast<ptrdiff_t>(handlesAfter - handles));
            std::fflush(stdout);
        }
    }

    /// A conversion by an instance of its own; the error lines.
    std::wstring Convert(const std::wstring& settings) const {
        const std::wstring errorPath = folder.Path(L"errors.log");
        {
            const OwnedFile errors = CreateTestFile(errorPath);
            const CreateRecord record = {errors.Get(), nullptr, nullptr};
            auto* instance = CALL_PLUGIN(DSP_Create, &record);
            CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr);
            CALL_PLUGIN(DSP_EndConversion, instance);
            const AfterConversionInfo info = Info();
            CALL_PLUGIN(DSP_AfterConversion, instance, &info);
            CALL_PLUGIN(DSP_Destroy, instance);
        }
        return ReadUtf16(errorPath);
    }

    /// Fails by an exception: the class of the XML parser's document is missing.
    void FailToTransform() const {
        Replace(PluginModule(), "CoCreateInstance", reinterpret_cast<void*>(Fail<REGDB_E_CLASSNOTREG>));
        EXPECT_EQ(Convert(transforming),
                  L"Unexpected MS XML error:   [clDSP_WriteMetadataFile::WriteXMLFile]\r\n");
    }

    AfterConversionInfo Info() const {
        AfterConversionInfo info = {};
        info.sourceFileName = source.c_str();
        info.destFileName = converted.c_str();
        info.destIDTags = tags.data();
        info.destIDTagsSize = static_cast<uint32_t>(tags.size());
        return info;
    }

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
    const std::wstring transforming = L"-xsltfile=\"" + sheet + L"\"";
    std::vector<uint8_t> tags = TagBlob().Add(L"Artist", L"A").Bytes();
};

TEST_F(Loading, WithoutWork) {
    ExpectNothingStays("loaded alone", [](size_t) {});
    ExpectNothingStays("null instances", [this](size_t) {
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
    });
}

TEST_F(Loading, WithThePanel) {
    const OwnedWindow host = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(host.Get());
    const auto choose = [](OPENFILENAMEW* dialog) -> BOOL {
        wcscpy(dialog->lpstrFile, L"C:\\chosen.xsl");
        return TRUE;
    };
    ExpectNothingStays("panel", [&](size_t) {
        Replace(PluginModule(), "GetOpenFileNameW", reinterpret_cast<void*>(+choose));
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

TEST_F(Loading, WithConversions) {
    const auto expectDocument = [this](bool written) {
        EXPECT_EQ(ReadBytes(document).empty(), !written);
        WriteTestFile(document, "");
    };
    ExpectNothingStays("conversion", [&](size_t) {
        EXPECT_EQ(Convert(L"-ext=.xml"), L"");
        expectDocument(true);
    });
    ExpectNothingStays("transformation", [&](size_t) {
        EXPECT_EQ(Convert(transforming), L"");
        expectDocument(true);
    });
    ExpectNothingStays("conversion, writing fails", [&](size_t) {
        Replace(PluginModule(), "WriteFile", reinterpret_cast<void*>(Fail<0>));
        EXPECT_EQ(Convert(L"-ext=.xml"), L"");
        expectDocument(false);
    });
    ExpectNothingStays("transformation, writing fails", [&](size_t) {
        Replace(PluginModule(), "WriteFile", reinterpret_cast<void*>(Fail<0>));
        EXPECT_EQ(Convert(transforming), L"");
        expectDocument(false);
    });
    ExpectNothingStays("conversion, the output cannot be opened", [this](size_t) {
        EXPECT_EQ(Convert(L"-filename=\"" + folder.Path(L"none\\x.xml") + L"\""), L"");
    });
}

TEST_F(Loading, WithTransformationsThatFail) {
    const struct {
        const char *function, *answer;
        void* instead;
    } imports[] = {
        {"CoInitialize", "E_OUTOFMEMORY", reinterpret_cast<void*>(Fail<E_OUTOFMEMORY>)},
        {"CoCreateInstance", "REGDB_E_CLASSNOTREG", reinterpret_cast<void*>(Fail<REGDB_E_CLASSNOTREG>)},
        {"CoCreateInstance", "E_NOINTERFACE", reinterpret_cast<void*>(Fail<E_NOINTERFACE>)},
        {"OleRun", "E_FAIL", reinterpret_cast<void*>(Fail<E_FAIL>)},
        {"SysAllocStringLen", "null", reinterpret_cast<void*>(Fail<0>)},
        {"CreateStreamOnHGlobal", "E_OUTOFMEMORY", reinterpret_cast<void*>(Fail<E_OUTOFMEMORY>)},
        {"GetHGlobalFromStream", "E_INVALIDARG", reinterpret_cast<void*>(Fail<E_INVALIDARG>)},
        {"GlobalLock", "null", reinterpret_cast<void*>(Fail<0>)},
    };
    for (const auto& row : imports) {
        ExpectNothingStays(std::string("transformation, ") + row.function + " answers " + row.answer,
                           [&](size_t) {
                               Replace(PluginModule(), row.function, row.instead);
                               EXPECT_NE(Convert(transforming), L"") << row.function;
                           });
    }
    WriteTestFile(sheet, "<");
    ExpectNothingStays("transformation, broken style sheet", [&](size_t) {
        EXPECT_TRUE(Convert(transforming).starts_with(L"Loading XSL failed"));
    });
    tags = TagBlob().Add(L"1st", L"x").Bytes();
    ExpectNothingStays("transformation, the document is not well-formed", [&](size_t) {
        EXPECT_TRUE(Convert(transforming).starts_with(L"Loading intermediate XML failed"));
    });
}

/// A method, counting from 0, of the XML parser's objects that share the table of this one.
class FailingMethod {
public:
    FailingMethod(IUnknown* object, size_t method) : m_place(*reinterpret_cast<void***>(object) + method) {
        m_before = Set(reinterpret_cast<void*>(Fail<E_FAIL>));
    }
    ~FailingMethod() { Set(m_before); }
    FailingMethod(const FailingMethod&) = delete;
    FailingMethod& operator=(const FailingMethod&) = delete;

private:
    void* Set(void* function) {
        DWORD protection = 0;
        VirtualProtect(m_place, sizeof *m_place, PAGE_READWRITE, &protection);
        return std::exchange(*m_place, function);
    }

    void** m_place;
    void* m_before;
};

TEST_F(Loading, WithAParserThatFails) {
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    const auto make = [](const wchar_t* classText, const wchar_t* interfaceText, void** object) {
        GUID classId = {};
        GUID interfaceId = {};
        CLSIDFromString(classText, &classId);
        CLSIDFromString(interfaceText, &interfaceId);
        ASSERT_EQ(CoCreateInstance(classId, nullptr, CLSCTX_ALL, interfaceId, object), S_OK);
    };
    IXMLDOMDocument* xml = nullptr;
    IXSLTemplate* sheets = nullptr;
    IXSLProcessor* processor = nullptr;
    make(L"{F6D90F12-9C73-11D3-B32E-00C04F990BB4}", L"{2933BF81-7B36-11D2-B20E-00C04F983E60}",
         reinterpret_cast<void**>(&xml));
    make(L"{2933BF94-7B36-11D2-B20E-00C04F983E60}", L"{2933BF93-7B36-11D2-B20E-00C04F983E60}",
         reinterpret_cast<void**>(&sheets));
    std::wstring text = L"<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'/>";
    VARIANT_BOOL loaded = VARIANT_FALSE;
    xml->loadXML(text.data(), &loaded);
    sheets->putref_stylesheet(xml);
    ASSERT_EQ(sheets->createProcessor(&processor), S_OK);
    const struct {
        const char* name;
        IUnknown* object;
        size_t method;
    } methods[] = {{"load", xml, 58},
                   {"loadXML", xml, 65},
                   {"createProcessor", sheets, 9},
                   {"transform", processor, 15}};
    for (const auto& row : methods) {
        const FailingMethod failing(row.object, row.method);
        ExpectNothingStays(std::string("transformation, the parser fails to ") + row.name,
                           [&](size_t) { EXPECT_NE(Convert(transforming), L"") << row.name; });
    }
    processor->Release();
    sheets->Release();
    xml->Release();
    CoUninitialize();
}

TEST_F(Loading, WithoutMemory) {
    ExpectNothingStays("each export without memory", [this](size_t load) {
        Memory::ReplaceOf(PluginModule());
        // None at all, then one allocation more with each load.
        const auto allocations = static_cast<int64_t>(load % 50);
        const auto outOfMemory = [](auto result) { return result == decltype(result){}; };
        const CreateRecord record = {};
        const AfterConversionInfo info = Info();
        const auto create = [&] { return CALL_PLUGIN(DSP_Create, &record); };
        try {
            CALL_PLUGIN(DSP_Destroy, WithMemory(allocations, create));
            EXPECT_NE(allocations, 0);
        } catch (const std::bad_alloc&) {
            Memory::left = INT64_MAX;
        }
        auto* instance = create();
        const bool results[] = {
            outOfMemory(WithMemory(
                allocations,
                [&] { return CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, L"-ext=.xml", nullptr); })),
            outOfMemory(
                WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_AfterConversion, instance, &info); })),
            outOfMemory(
                WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0); })),
            outOfMemory(WithMemory(
                allocations,
                [&] { return CALL_PLUGIN(DSP_ShowConfigBit, instance, nullptr, 0, 0, L"-ext=.a"); })),
        };
        for (const bool result : results) {
            EXPECT_TRUE(result || allocations != 0);
        }
        const std::wstring longKey(1000, L'k');
        EXPECT_EQ(WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_Get, instance, longKey.c_str()); }),
                  0);
        EXPECT_EQ(WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_Set, instance, longKey.c_str()); }),
                  0);
        EXPECT_EQ(WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_EndConversion, instance); }), 1);
        EXPECT_EQ(WithMemory(allocations, [&] { return CALL_PLUGIN(DSP_Destroy, instance); }), 1);
    });
}

TEST_F(Loading, WithThreads) {
    ExpectNothingStays("failing transformation on a thread that ends before the unload",
                       [this](size_t) { OnThreads(1, [this] { FailToTransform(); }); });

    // One thread that outlives each load and works in the next again.
    const OwnedHandle begin(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const OwnedHandle done(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    bool isOver = false;
    std::function<void()> driver = [&] {
        ExpectNothingStays("failing transformation on a thread that ends after the unload",
                           [&](size_t) { SignalObjectAndWait(begin.Get(), done.Get(), INFINITE, FALSE); });
        isOver = true;
        SetEvent(begin.Get());
    };
    std::atomic<bool> drives = true;
    OnThreads(2, [&] {
        if (drives.exchange(false)) {
            driver();
        } else {
            for (WaitForSingleObject(begin.Get(), INFINITE); !isOver;
                 WaitForSingleObject(begin.Get(), INFINITE)) {
                FailToTransform();
                SetEvent(done.Get());
            }
        }
    });
}

TEST_F(Loading, ThreadsLeaveNothingInTheLibrary) {
    const LoadedPlugin plugin;
    Memory::ReplaceOf(PluginModule());
    const int64_t blocks = Memory::blocks;
    for (int i = 0; i < 20; ++i) {
        OnThreads(1, [this] { FailToTransform(); });
    }
    EXPECT_EQ(Memory::blocks, blocks);
}

TEST_F(Loading, ManyThreadsRunOutOfMemoryAtOnce) {
    const LoadedPlugin plugin;
    const OwnedFile errors = CreateTestFile(folder.Path(L"errors.log"));
    const CreateRecord record = {errors.Get(), nullptr, nullptr};
    constexpr size_t kThreads = 20; // more than there is spare memory for
    std::vector<clDSP_WriteMetadataFile*> instances;
    for (size_t i = 0; i < kThreads; ++i) {
        instances.push_back(CALL_PLUGIN(DSP_Create, &record));
    }
    Memory::ReplaceOf(PluginModule());
    static std::atomic<size_t> begun = 0;
    std::atomic<size_t> failed = 0;
    // None has reported its exception before the last one has begun.
    const auto write = [](HANDLE file, const void* bytes, DWORD size, DWORD* written,
                          OVERLAPPED* at) -> BOOL {
        while (begun < kThreads) {
            Sleep(1);
        }
        Sleep(20);
        return WriteFile(file, bytes, size, written, at);
    };
    Replace(PluginModule(), "WriteFile", reinterpret_cast<void*>(+write));
    const auto begin = PluginExport<decltype(DSP_BeginConversion)>("DSP_BeginConversion");
    Memory::left = 0;
    OnThreads(kThreads,
              [&] { failed += begin(instances[begun++], nullptr, L"-ext=.a", nullptr) == 0 ? 1 : 0; });
    Memory::left = INT64_MAX;
    EXPECT_EQ(failed, kThreads);
    for (clDSP_WriteMetadataFile* instance : instances) {
        CALL_PLUGIN(DSP_Destroy, instance);
    }
    EXPECT_EQ(Lines(ReadUtf16(folder.Path(L"errors.log"))),
              std::vector<std::wstring>(kThreads, L"Out of memory"));
}

TEST_F(Loading, NeedsNoTlsIndex) {
    {
        const LoadedPlugin plugin; // the system takes its own indices for the work
        EXPECT_EQ(Convert(transforming), L"");
    }
    std::vector<DWORD> indices;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        indices.push_back(index);
    }
    {
        const LoadedPlugin plugin;
        FailToTransform();
    }
    for (const DWORD index : indices) {
        TlsFree(index);
    }
}

TEST_F(Loading, OfSampleDecodersLeavesNothing) {
    for (const wchar_t* path : {L"..\\..\\tools\\decoder\\wav.dll", L"..\\..\\tools\\decoder\\flac.dll"}) {
        ExpectNothingStays(
            "sample decoder",
            [&](size_t load) {
                clZentaroDecoder decoder;
                ASSERT_TRUE(decoder.Load(path) && decoder.CreateInstance(nullptr));
                Memory::ReplaceOf(GetModuleHandleW(path));
                WithMemory(static_cast<int64_t>(load % 10),
                           [&] { return decoder.Open(source.c_str(), kOpenIDTags).has_value(); });
            },
            path);
    }
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
