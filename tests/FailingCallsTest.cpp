#include "tests/shared/CallStubs.h"
#include "tests/shared/ConversionFixture.h"
#include "tests/shared/ProcessUse.h"
#include "tests/shared/TestWindow.h"

#include <malloc.h>
#include <msxml2.h>

#include <algorithm>
#include <functional>
#include <new>
#include <set>
#include <sstream>

namespace {

using Round = std::function<std::string()>;
using Results = std::set<std::string>;

/// How a function reports failure, and the results of the rounds: of one in which its first call fails, one
/// in which its second does, and so on. These results occur and no others.
struct Failure {
    std::string function;
    int64_t answer;
    DWORD lastError;
    Results results;
};
using Failures = std::vector<Failure>;

constexpr int64_t kInvalid = -1; // INVALID_HANDLE_VALUE; in its lower half WAIT_FAILED

/// In place of a function: memory runs out at the n-th allocation, and none is added afterwards.
const std::string kMemory = "memory";

/// Called, but without a failure that could matter, such as those that release something.
const std::string kCannotFail =
    " CloseHandle CoUninitialize DeleteObject DestroyIcon DestroyWindow EndPaint "
    "EnterCriticalSection FindClose free FreeLibrary GlobalUnlock LeaveCriticalSection "
    "memcpy memmove memset RegCloseKey release document release template ReleaseDC ReleaseMutex "
    "ShowWindow strlen SysFreeString TlsGetValue VariantClear ";

/// Calls that must come in equal numbers.
const std::pair<std::string, std::string> kPairs[] = {{"GetDC", "ReleaseDC"},
                                                      {"BeginPaint", "EndPaint"},
                                                      {"CreateFontIndirectW", "DeleteObject"},
                                                      {"LoadImageW", "DestroyIcon"}};

/// The plug-in's memory, which can run out.
struct Heap {
    inline static uint64_t calls = 0;
    inline static uint64_t lastCall = 0; // that finds no memory; 0 for none
    inline static size_t used = 1 << 20; // what was taken before is given back as well
    inline static size_t size = SIZE_MAX;

    static void EndAt(uint64_t call) {
        calls = 0;
        lastCall = call;
        size = SIZE_MAX;
    }
    static void* Take(size_t count) {
        if (++calls == lastCall) {
            size = used + count - 1;
        }
        void* block = used + count <= size ? malloc(count) : nullptr;
        used += block != nullptr ? _msize(block) : 0;
        return block;
    }
    static void* TakeZeroed(size_t count, size_t each) {
        void* block = Take(count * each);
        return block != nullptr ? memset(block, 0, count * each) : nullptr;
    }
    static void* TakeAgain(void* old, size_t count) {
        void* block = Take(count);
        if (block != nullptr && old != nullptr) {
            memcpy(block, old, std::min(count, _msize(old)));
            Give(old);
        }
        return block;
    }
    static void Give(void* block) {
        used -= block != nullptr ? _msize(block) : 0;
        free(block);
    }
};

/// The calls that release documents and templates of the XML parser; none may come after COM was left.
struct Releases {
    inline static const CallStubs* stubs = nullptr;
    inline static uint64_t beforeLeaving = 0;

    static uint64_t Count() {
        uint64_t count = 0;
        for (const CallStub& stub : *stubs) {
            count += stub.name.starts_with("release ") ? stub.calls : 0;
        }
        return count;
    }
    static void WINAPI LeaveCom() {
        beforeLeaving = Count();
        CoUninitialize();
    }
};

/// Runs the work on a new thread. Not on a std::thread: when it and its creator wait for the same lock of the
/// runtime, the runtime makes an event for that lock and keeps it, which looks like a leaked handle.
template<class Work>
void OnNewThread(Work work) {
    const LPTHREAD_START_ROUTINE run = [](void* argument) -> DWORD {
        (*static_cast<Work*>(argument))();
        return 0;
    };
    const OwnedHandle thread(CreateThread(nullptr, 0, run, &work, 0, nullptr));
    WaitForSingleObject(thread.Get(), INFINITE);
}

class FailingCalls : public ConversionTest {
protected:
    FailingCalls() {
        stubs.AddImports(module);
        stubs["malloc"].target = reinterpret_cast<void*>(Heap::Take);
        stubs["calloc"].target = reinterpret_cast<void*>(Heap::TakeZeroed);
        stubs["realloc"].target = reinterpret_cast<void*>(Heap::TakeAgain);
        stubs["free"].target = reinterpret_cast<void*>(Heap::Give);
        stubs["CoUninitialize"].target = reinterpret_cast<void*>(Releases::LeaveCom);
        Releases::stubs = &stubs;
    }

    /// Runs a round in which that call fails, 0 for none. The counts of the calls can be read afterwards.
    std::string Play(const Round& round, const Failure& failure, uint64_t call) {
        RegDeleteKeyW(HKEY_CURRENT_USER, Decoders::kCacheKey);
        stubs.CountAnew();
        CallStub& stub = stubs[failure.function];
        Heap::EndAt(failure.function == kMemory ? call : 0);
        stub.FailAt(call, failure.answer, failure.lastError);
        Releases::beforeLeaving = 0;
        const std::string result = round();
        stub.FailAt(0, 0, 0);
        Heap::EndAt(0);
        EXPECT_EQ(Releases::Count(), Releases::beforeLeaving) << failure.function << call;
        return result;
    }

    void LetFail(const Round& round, const Failures& failures) {
        // The runtime and the system make their own lasting objects during these.
        for (const uint64_t call : {1u, 9u, 0u, 1u, 9u, 0u}) {
            Play(round, {kMemory, 0, 0, {}}, call);
        }
        const std::string well = Play(round, {}, 0);
        for (const CallStub& stub : stubs) {
            const bool known = kCannotFail.find(" " + stub.name + " ") != std::string::npos ||
                               std::any_of(failures.begin(), failures.end(), [&stub](const Failure& failure) {
                                   return failure.function == stub.name;
                               });
            ASSERT_TRUE(stub.calls == 0 || known) << "How does it fail? " << stub.name;
        }
        // The first mismatch ends the test, because reporting it takes handles and memory as well.
        const size_t handles = HandlesInUse();
        const size_t used = Heap::used;
        for (const Failure& failure : failures) {
            const std::string& name = failure.function;
            Play(round, failure, 0);
            const uint64_t calls = stubs[name == kMemory ? "malloc" : name].calls;
            Results results;
            for (uint64_t call = 1; call <= calls; ++call) {
                const std::string result = Play(round, failure, call);
                for (const auto& [take, give] : kPairs) {
                    ASSERT_EQ(stubs[take].calls - (take == name ? 1 : 0), stubs[give].calls) << name << call;
                }
                ASSERT_EQ(stubs["WaitForSingleObject"].calls, stubs["ReleaseMutex"].calls) << name << call;
                if (results.insert(result).second) {
                    ASSERT_EQ(Play(round, failure, 0), well) << name << ", after " << result;
                }
            }
            ASSERT_EQ(Play(round, failure, 0), well) << name;
            ASSERT_EQ(Heap::used, used) << name;
            ASSERT_LE(HandlesInUse(), handles + SystemsHandles()) << name;
            if (!RunsUnderWine()) { // a system where some of the calls are not made, as when the labels fit
                results.insert(failure.results.begin(), failure.results.end());
            }
            ASSERT_EQ(results, failure.results) << name;
        }
    }

    /// Runs an instance from Create to Destroy on a thread that never called the plug-in before. The result
    /// says which calls did not answer 1, what became of the output file, and the error lines without file
    /// names, scopes and the descriptions of Windows' parser.
    std::string Convert() {
        WriteTestFile(document, "kept");
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, trace.Get()};
        const AfterConversionInfo info = Info();
        std::string result;
        OnNewThread([&] {
            SetErrorInfo(0, errorInfo);
            try {
                auto* instance = CALL_PLUGIN(DSP_Create, &record);
                if (CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr) == 0) {
                    result += "not begun, ";
                }
                EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, instance), 1);
                if (CALL_PLUGIN(DSP_AfterConversion, instance, &info) == 0) {
                    result += "not done, ";
                }
                EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, instance), 1);
            } catch (const std::bad_alloc&) {
                result = "not created, ";
            }
        });
        const std::string bytes = Written();
        result += bytes == whole         ? "whole"
                  : bytes == "kept"      ? "kept"
                  : bytes.empty()        ? "empty"
                  : bytes.ends_with(end) ? "less"
                                         : "other";
        for (const std::wstring& line : Lines(ReadUtf16(errorPath))) {
            const size_t colon = RunsUnderWine() ? std::wstring::npos : line.find(L": ");
            const std::wstring text = line.substr(0, colon == std::wstring::npos ? colon : colon + 2);
            result += "; " + Narrow(text.substr(0, std::min(text.find(L" '"), text.find(L"  ["))));
        }
        return result;
    }

    /// The output file without the bytes that a stream's memory block may have after the end.
    std::string Written() const {
        const std::string bytes = ReadBytes(document);
        const size_t at = bytes.rfind(end);
        return at == std::string::npos ? bytes : bytes.substr(0, at + end.size());
    }

    /// Lets the calls of conversions fail, `failures` and those of every conversion.
    void LetConversionsFail(Failures failures, const std::string& missingSheet = "whole") {
        if (!Decoders::AreListedByName()) {
            GTEST_SKIP() << Decoders::kUnsorted;
        }
        decoders.Add(L"a.dll").decodes = {L".other"};
        Convert();
        whole = Written();
        const std::string noInfo = "less; Failed to find decoder to read audio properties from file";
        const std::string noTags = "less; Failed to find decoder to read ID tags from file";
        const Results someLess = {"whole", "less", noInfo, noTags};
        const std::string missing = "less; Error reading ";
        Results unfound = {noInfo,
                           noTags,
                           missing + "audio info, file does not exist",
                           missing + "audio properties, file does not exist",
                           missing + "ID tags, file does not exist",
                           missing + "file date time, file does not exist"};
        const bool transforms = missingSheet != "whole";
        if (transforms) {
            unfound.insert(missingSheet);
        }
        const std::string notBegun =
            transforms ? "not begun, other; Out of memory" : "not begun, whole; Out of memory";
        const std::string notDone = "not done, kept; Out of memory";
        const std::string nothingDone = "not begun, not done, kept; Out of memory; Out of memory";
        const Failures ofAll = {
            // Without the cache the folder is scanned; without a lock the work goes on.
            {"RegCreateKeyExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"RegQueryValueExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"RegSetValueExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"CreateMutexW", 0, ERROR_NO_SYSTEM_RESOURCES, {"whole"}},
            {"WaitForSingleObject", kInvalid, ERROR_INVALID_HANDLE, {"whole"}},
            {"GetThreadErrorMode", 0, 0, {"whole"}},
            {"SetThreadErrorMode", 0, ERROR_INVALID_PARAMETER, {"whole"}},
            // Trace lines, then the document.
            {"WriteFile", 0, ERROR_DISK_FULL, {"whole", "empty"}},
            // Times, then the output file.
            {"CreateFileW", kInvalid, ERROR_ACCESS_DENIED, {"less", "kept"}},
            {"GetFileTime", 0, ERROR_ACCESS_DENIED, {"less"}},
            {"FileTimeToSystemTime", 0, ERROR_INVALID_PARAMETER, {"less"}},
            {"GetDateFormatW", 0, ERROR_INVALID_PARAMETER, {"less"}},
            {"GetTimeFormatW", 0, ERROR_INVALID_PARAMETER, {"less"}},
            // What cannot be found does not exist.
            {"FindFirstFileW", kInvalid, ERROR_ACCESS_DENIED, unfound},
            {"FindNextFileW", 0, ERROR_ACCESS_DENIED, {noInfo, noTags}},
            {"GetModuleFileNameW", 0, ERROR_NOT_ENOUGH_MEMORY, {"whole", noInfo, noTags}},
            // A library that fails is skipped; when it fails at its second load in a reading, nothing is
            // logged.
            {"LoadLibraryW", 0, ERROR_NOT_ENOUGH_MEMORY, someLess},
            {"GetProcAddress", 0, ERROR_PROC_NOT_FOUND, someLess},
            {"malloc", 0, 0, {"not created, kept", notBegun, notDone, "whole"}},
            {kMemory, 0, 0, {"not created, kept", nothingDone, notDone, "whole"}},
        };
        failures.insert(failures.end(), ofAll.begin(), ofAll.end());
        LetFail([this] { return Convert(); }, failures);
    }

    const HMODULE module = GetModuleHandleW(L"WriteMetadataFile.dll");
    CallStubs& stubs = *new CallStubs; // never freed: replaced pointers lead to them until the end
    const std::wstring errorPath = folder + L"failures.log";
    const OwnedFile trace = CreateTestFile(folder + L"calls.log");
    std::wstring settings = L"-ext=.xml";
    IErrorInfo* errorInfo = nullptr; // the thread's
    std::string whole;               // what the output file should hold
    std::string end = "</AudioMetadata>\r\n";
};

TEST_F(FailingCalls, InAConversion) {
    LetConversionsFail({});
}

TEST_F(FailingCalls, WhenTheDiskIsFullTheDocumentsBeginningStays) {
    tags = TagBlob().Add(L"LYRICS", std::wstring(600000, L'x')).Bytes(); // a document of several writes
    const Round round = [this] { return Convert(); };
    round();
    const std::string wanted = ReadBytes(document);
    const uint64_t calls = stubs["WriteFile"].calls;
    std::set<size_t> sizes;
    for (uint64_t call = 1; call <= calls; ++call) {
        Play(round, {"WriteFile", 0, ERROR_DISK_FULL, {}}, call);
        const std::string bytes = ReadBytes(document);
        ASSERT_TRUE(wanted.starts_with(bytes)) << "after call " << call << ", which fails";
        sizes.insert(bytes.size());
    }
    EXPECT_GT(sizes.size(), 3u) << "nothing, one write, two writes, all";
}

TEST_F(FailingCalls, KeepTheTraceBalanced) {
    const std::pair<const wchar_t*, std::function<int64_t()>> rows[] = {
        {L"BeginConversion",
         [this] {
             return CALL_PLUGIN(DSP_BeginConversion, plugin.Instance(), nullptr, L"-ext=.a", nullptr);
         }},
        {L"ShowConfigBit",
         [this] {
             return reinterpret_cast<intptr_t>(
                 CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), nullptr, 0, 0, L"-ext=.a"));
         }},
        {L"RemoveConfigBit", [this] {
             return reinterpret_cast<intptr_t>(CALL_PLUGIN(DSP_RemoveConfigBit, plugin.Instance(), 0));
         }}};
    for (const auto& [method, call] : rows) {
        CALL_PLUGIN(DSP_EndConversion, plugin.Instance()); // fills what the plug-in keeps back
        plugin.Trace();
        Heap::size = Heap::used;
        EXPECT_EQ(call(), 0) << method;
        Heap::EndAt(0);
        const std::wstring scope = std::wstring(L"  [clDSP_WriteMetadataFile::") + method + L"]\r\n";
        EXPECT_EQ(plugin.Trace(), L"->->" + scope + L"<-<-" + scope + L"*** Error: Out of memory\r\n");
    }
}

template<class Interface>
void Make(Interface*& object, const wchar_t* classText, const wchar_t* interfaceText) {
    GUID classId = {};
    GUID interfaceId = {};
    CLSIDFromString(classText, &classId);
    CLSIDFromString(interfaceText, &interfaceId);
    ASSERT_EQ(CoCreateInstance(classId, nullptr, CLSCTX_ALL, interfaceId, reinterpret_cast<void**>(&object)),
              S_OK);
}

/// With stubs in the methods of the real XML parser. Its objects are not released, which keeps it loaded.
class FailingParser : public FailingCalls {
protected:
    FailingParser() {
        CoInitialize(nullptr);
        IXMLDOMDocument* xml = nullptr;
        IXMLDOMDocument* freeThreaded = nullptr;
        IXSLTemplate* sheets = nullptr;
        IXSLProcessor* processor = nullptr;
        IXMLDOMParseError* parseError = nullptr;
        Make(xml, L"{F6D90F11-9C73-11D3-B32E-00C04F990BB4}", L"{2933BF81-7B36-11D2-B20E-00C04F983E60}");
        Make(freeThreaded, L"{F6D90F12-9C73-11D3-B32E-00C04F990BB4}",
             L"{2933BF81-7B36-11D2-B20E-00C04F983E60}");
        Make(sheets, L"{2933BF94-7B36-11D2-B20E-00C04F983E60}", L"{2933BF93-7B36-11D2-B20E-00C04F983E60}");
        std::wstring text = L"<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'/>";
        VARIANT_BOOL loaded = VARIANT_FALSE;
        freeThreaded->loadXML(text.data(), &loaded);
        xml->get_parseError(&parseError);
        sheets->putref_stylesheet(freeThreaded);
        sheets->createProcessor(&processor);
        const struct {
            const char* name;
            void* object;
            size_t method;
        } methods[] = {
            {"release document", xml, 2},  {"release template", sheets, 2},  {"query document", xml, 0},
            {"load", freeThreaded, 58},    {"parseError", xml, 60},          {"loadXML", xml, 65},
            {"query template", sheets, 0}, {"putref_stylesheet", sheets, 7}, {"createProcessor", sheets, 9},
            {"put_output", processor, 13}, {"transform", processor, 15},     {"reason", parseError, 9}};
        for (const auto& row : methods) {
            stubs.AddMethod(row.name, row.object, row.method, module);
        }
        // The description that the next failing call finds.
        ICreateErrorInfo* creation = nullptr;
        std::wstring description = L"described";
        CreateErrorInfo(&creation);
        creation->SetDescription(description.data());
        creation->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&errorInfo));
        settings = L"-xsltfile=\"" + sheet + L"\"";
        end = "[END]";
    }

    const std::wstring sheet = folder + L"sheet.xsl";
    const std::string reported = RunsUnderWine() ? "described" : ""; // which Windows' parser may replace
};

TEST_F(FailingParser, InATransformation) {
    WriteTestFile(sheet,
                  "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                  "<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>"
                  "<xsl:for-each select='//FileCreated|//FileModified|//FileAccessed|//FileBitrate|//IDTags|"
                  "//AudioProperties'><xsl:value-of select='.'/></xsl:for-each>[END]"
                  "</xsl:template></xsl:stylesheet>");
    const std::string loadXml = "kept; Error loading intermediate XML: ";
    const std::string loadSheet = "kept; Error loading XSLT file: ";
    const std::string apply = "kept; Error applying XSL style sheet: ";
    const std::string other = "kept; Unexpected MS XML error: ";
    const std::string outOfMemory = "not done, kept; Out of memory";
    LetConversionsFail(
        {
            {"CoInitialize", E_OUTOFMEMORY, 0, {other}}, // no class can be made then
            {"CoCreateInstance", REGDB_E_CLASSNOTREG, 0, {other}},
            {"CoCreateInstance", E_NOINTERFACE, 0, {loadXml, loadSheet, apply}},
            {"OleRun", E_FAIL, 0, {other}},
            {"OleRun", E_NOINTERFACE, 0, {loadXml, loadSheet, apply}},
            {"query document", E_OUTOFMEMORY, 0, {other}},
            {"query document", E_NOINTERFACE, 0, {loadXml, loadSheet}},
            {"query template", E_NOINTERFACE, 0, {apply}},
            {"SysAllocStringLen", 0, 0, {outOfMemory}},
            {"loadXML", E_FAIL, 0, {loadXml + reported}},
            {"loadXML", S_FALSE, 0, {"kept; Loading intermediate XML failed; "}},
            {"load", E_FAIL, 0, {loadSheet + reported}},
            {"load", S_FALSE, 0, {"kept; Loading XSL failed; "}},
            {"putref_stylesheet", E_FAIL, 0, RunsUnderWine() ? Results{other} : Results{apply, other}},
            {"createProcessor", E_FAIL, 0, {apply}},
            {"createProcessor", S_OK, 0, {other}}, // and gives none
            {"CreateStreamOnHGlobal", E_OUTOFMEMORY, 0, {other}},
            {"put_output", E_FAIL, 0, {"empty"}}, // not asked; without an input Wine's parser crashes
            {"transform", E_FAIL, 0, {other}},
            {"GetHGlobalFromStream", E_INVALIDARG, 0, {other}},
            {"GlobalSize", 0, ERROR_INVALID_HANDLE, {"empty"}}, // as of an empty result
            {"GlobalLock", 0, ERROR_DISCARDED, {other}},
        },
        "empty");
}

TEST_F(FailingParser, WithABrokenStyleSheet) {
    WriteTestFile(sheet, "<");
    const Round round = [this] { return Convert(); };
    EXPECT_EQ(round(), "kept; Loading XSL failed; ");
    for (const auto& [method, known] :
         {std::pair{"parseError", reported}, std::pair{"reason", std::string()}}) {
        EXPECT_EQ(Play(round, {method, E_FAIL, 0, {}}, 1),
                  "kept; Loading XSL failed; Error loading XSLT file: " + known);
        EXPECT_GE(Releases::Count(), 3u) << "two documents, a template";
    }
}

TEST_F(FailingCalls, InAPanelRound) {
    const OwnedWindow host = MakeTopWindow();
    SKIP_WITHOUT_DISPLAY(host.Get());
    const CreateRecord record = {nullptr, nullptr, trace.Get()};
    settings = L"-xsltfile=\"C:\\x.xsl\" -ext=\".a\"";
    const auto round = [&]() -> std::string {
        std::string result;
        const auto read = [&](const wchar_t* text) {
            result += text == nullptr ? ", nothing" : text == settings ? ", read" : ", " + Narrow(text);
        };
        try {
            auto* instance = CALL_PLUGIN(DSP_Create, &record);
            const HWND panel = CALL_PLUGIN(DSP_ShowConfigBit, instance, host.Get(), 1, 2, settings.c_str());
            EXPECT_EQ(GetWindow(host.Get(), GW_CHILD), panel);
            UpdateWindow(panel);
            result = panel != nullptr ? "shown" : "not shown";
            read(CALL_PLUGIN(DSP_RemoveConfigBit, instance, -123));
            read(CALL_PLUGIN(DSP_RemoveConfigBit, instance, 0));
            CALL_PLUGIN(DSP_Destroy, instance);
        } catch (const std::bad_alloc&) {
            result = "not created";
        }
        EXPECT_EQ(GetWindow(host.Get(), GW_CHILD), nullptr);
        const CallStub& enterCom = stubs["CoInitialize"];
        EXPECT_EQ(enterCom.calls - (enterCom.failing < enterCom.calls ? 1 : 0),
                  stubs["CoUninitialize"].calls);
        return result;
    };
    round();
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
    Failures failures = {
        {"CreateDialogParamW", 0, ERROR_NOT_ENOUGH_MEMORY, {notShown}},
        {"SetDlgItemTextW", 0, ERROR_NOT_ENOUGH_MEMORY, {notShown}},
        {"GetDlgItemTextW", 0, ERROR_INVALID_WINDOW_HANDLE, unread},
        {"CoInitialize", E_OUTOFMEMORY, 0, {"shown, read, read"}},
        {"CoCreateInstance", REGDB_E_CLASSNOTREG, 0, {"shown, read, read"}},
        {"WaitForSingleObject", kInvalid, ERROR_INVALID_HANDLE, {"shown, read, read"}},
        {"malloc", 0, 0, {"not created", notShown, "shown, nothing, read", "shown, read, nothing"}},
        {kMemory, 0, 0, withoutMemory},
    };
    // These affect appearance at most: position, font, icon, accessible name, tooltip.
    std::istringstream names(
        "BeginPaint CreateFontIndirectW CreateMutexW DrawIconEx DrawTextW GetAncestor "
        "GetClassNameW GetClientRect GetDC GetDlgItem GetObjectW GetSysColorBrush GetWindow "
        "GetWindowRect GetWindowTextW KillTimer LoadImageW MapDialogRect MapWindowPoints "
        "SelectObject SendMessageW SetTimer SetWindowPos SetWindowLongPtrW WriteFile");
    for (std::string name; names >> name;) {
        failures.push_back({name, 0, ERROR_NOT_ENOUGH_MEMORY, {"shown, read, read"}});
    }
    LetFail(round, failures);
}

} // namespace
