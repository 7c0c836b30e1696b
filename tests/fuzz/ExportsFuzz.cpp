// The library's exports, given random records, lists and texts. Results, above all the document, must equal
// those of the reference code. No file exists, and what the library writes stays in memory: the system would
// take a hundred times as long as the library.
//
// Every round has a seed of its own; with FUZZ_SEED=n in the environment, that round runs alone.

#include "tests/CallStubs.h"
#include "tests/PluginHarness.h"
#include "tests/fuzz/PlainDocument.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <random>

namespace {

constexpr uint32_t kRounds = 57'000;       // of two records and two lists each, some of them null
constexpr uint32_t kLeastHanded = 200'000; // records and lists that are not null
constexpr uint32_t kRoundsPerLoad = 500;   // the trace's indentation grows for every file that is missing

uint32_t seed = 0;   // of the running round
uint32_t handed = 0; // records and lists that were not null

LONG WINAPI ReportSeed(EXCEPTION_POINTERS* /*fault*/) {
    std::fprintf(stderr, "faulted in the round of FUZZ_SEED=%u\n", seed);
    return EXCEPTION_CONTINUE_SEARCH;
}

class Random {
public:
    uint32_t Below(size_t limit) { return m_engine() % static_cast<uint32_t>(limit); }
    bool OneIn(uint32_t count) { return Below(count) == 0; }

    std::vector<uint8_t> Bytes(size_t size) {
        std::vector<uint8_t> bytes(size);
        std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<uint8_t>(m_engine()); });
        return bytes;
    }

    /// Units that have a meaning somewhere, sometimes any others, and no zero.
    std::wstring Text() {
        constexpr wchar_t kUnits[] = L"aB7 -=\"#&'<>()/\\:._?*\r\n\t\x00E9\xD83D\xDE00\xFFFF";
        std::wstring text(Below(25), L'?');
        for (wchar_t& unit : text) {
            unit = OneIn(8) ? static_cast<wchar_t>(1 + Below(0xFFFF)) : kUnits[Below(std::size(kUnits) - 1)];
        }
        return text;
    }

    /// Entries good and bad, often damaged.
    std::vector<uint8_t> List() {
        TagBlob list;
        for (uint32_t left = Below(6); left != 0; --left) {
            if (OneIn(6)) {
                list.AddSized(static_cast<int32_t>(Below(32)) - 4, Bytes(Below(32)));
            } else {
                list.Add(Text(), Text(), Bytes(OneIn(4) ? Below(9) : 0));
            }
        }
        std::vector<uint8_t> bytes =
            OneIn(6) ? list.WithCount(static_cast<int32_t>(m_engine())) : list.Bytes();
        for (uint32_t left = OneIn(2) ? Below(4) : 0; left != 0; --left) {
            bytes[Below(bytes.size())] = static_cast<uint8_t>(m_engine());
        }
        bytes.resize(OneIn(4) ? Below(bytes.size() + 1) : bytes.size());
        return bytes;
    }

private:
    std::mt19937 m_engine{seed};
};

/// One block of the host's memory, right before an inaccessible page.
class Handed {
public:
    Handed() {
        DWORD old = 0;
        VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &old);
    }
    ~Handed() { VirtualFree(m_pages, 0, MEM_RELEASE); }
    Handed(const Handed&) = delete;
    Handed& operator=(const Handed&) = delete;

    const uint8_t* Hold(const void* bytes, size_t size) {
        uint8_t* const begin = m_pages + kPage - size;
        std::copy_n(static_cast<const uint8_t*>(bytes), size, begin);
        return begin;
    }
    const wchar_t* Hold(const std::wstring& text) {
        return reinterpret_cast<const wchar_t*>(Hold(text.c_str(), (text.size() + 1) * sizeof(wchar_t)));
    }
    template<class Record>
    const Record* Hold(const Record& record) {
        return reinterpret_cast<const Record*>(Hold(&record, sizeof record));
    }

private:
    static constexpr size_t kPage = 4096;

    uint8_t* const m_pages =
        static_cast<uint8_t*>(VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
};

/// The files as the library sees them: what it writes.
struct Files {
    static inline const HANDLE trace = reinterpret_cast<HANDLE>(INT64_C(0x7FFE0000));
    static inline const HANDLE output = reinterpret_cast<HANDLE>(INT64_C(0x7FFF0000));
    static inline std::wstring outputPath;
    static inline std::map<HANDLE, std::string> written;

    static HANDLE WINAPI Create(const wchar_t* path) {
        outputPath = path;
        written[output].clear();
        return output;
    }
    static BOOL WINAPI Write(HANDLE file, const void* data, DWORD size, DWORD* count, OVERLAPPED*) {
        written[file].append(static_cast<const char*>(data), size);
        *count = size;
        return TRUE;
    }
};

template<int64_t kAnswer>
int64_t Answer() {
    return kAnswer;
}

/// The texts of a file that does not exist.
void Split(PlainFile& file, const std::wstring& path) {
    const size_t slash = path.rfind(L'\\');
    file.path = slash == std::wstring::npos ? path : path.substr(0, slash + 1);
    file.name = path.substr(slash + 1);
    const size_t dot = file.name.rfind(L'.');
    file.nameNoExt = file.name.substr(0, dot);
    file.ext = dot == std::wstring::npos ? L"." : file.name.substr(dot);
}

/// The library, loaded anew, with an instance.
class Plugin {
public:
    Plugin() {
        m_stubs.AddImports(GetModuleHandleW(L"WriteMetadataFile.dll"));
        const auto answer = [this](const char* name, auto* function) {
            m_stubs[name].target = reinterpret_cast<void*>(function);
        };
        answer("CreateFileW", Files::Create);
        answer("WriteFile", Files::Write);
        answer("FindFirstFileW", Answer<-1>);
        answer("GetDriveTypeW", Answer<DRIVE_NO_ROOT_DIR>);
        answer("WaitForSingleObject", Answer<WAIT_OBJECT_0>);
        answer("ReleaseMutex", Answer<TRUE>);
        m_instance = CALL_PLUGIN(DSP_Create, m_record.Hold(CreateRecord{nullptr, nullptr, Files::trace}));
    }
    ~Plugin() { EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, m_instance), 1); }

    void CheckKeys(Random& random) {
        const std::wstring key = random.OneIn(8) ? L"IsLive" : random.Text();
        EXPECT_EQ(CALL_PLUGIN(DSP_Get, m_instance, m_text.Hold(key)), key == L"IsLive");
        EXPECT_TRUE(TraceEndsWith(key + L"  [clDSP_WriteMetadataFile::Get]\r\n"));
        EXPECT_EQ(CALL_PLUGIN(DSP_Set, m_instance, m_text.Hold(key)), 0);
        EXPECT_TRUE(TraceEndsWith(key + L"  [clDSP_WriteMetadataFile::Set]\r\n"));
        EXPECT_EQ(CALL_PLUGIN(DSP_PassAudioBlock, m_instance), 1);
        EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, m_instance, -123), L"-xsltfile=\"\" -ext=\"\"");
    }

    void CheckConversion(Random& random) {
        std::wstring ext = random.Text();
        std::erase(ext, L'"');
        m_ext = ext.empty() ? m_ext : ext; // an empty option keeps the earlier value
        const std::wstring settings = L"-ext=\"" + ext + L"\"" + random.Text();
        EXPECT_EQ(CALL_PLUGIN(DSP_BeginConversion, m_instance, nullptr, m_text.Hold(settings), nullptr), 1);
        EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, m_instance), 1);

        AfterConversionInfo info = {};
        PlainFile source, converted;
        const std::wstring sourceName = random.OneIn(2) ? L"-" : random.Text();
        info.sourceFileName = m_text.Hold(sourceName);
        if (sourceName != L"-") {
            Split(source, sourceName);
        }
        const std::wstring convertedName = random.Text() + (random.OneIn(30) ? L".iGnore" : L"");
        info.destFileName = convertedName.empty() ? nullptr : m_convertedName.Hold(convertedName);
        Split(converted, convertedName);
        if (!random.OneIn(20)) {
            const std::vector<uint8_t> bytes = random.Bytes(sizeof source.info);
            std::memcpy(&source.info, bytes.data(), bytes.size());
            source.info.format.wFormatTag = static_cast<uint16_t>(random.OneIn(2) ? 1 : 85);
            info.sourceAudioInfo = m_audioInfo.Hold(source.info);
            ++handed;
        }
        const auto [tags, tagsSize] = HoldList(random, m_tags, converted.idTags);
        info.destIDTags = tags;
        info.destIDTagsSize = tagsSize;
        const auto [properties, propertiesSize] = HoldList(random, m_properties, source.properties);
        info.sourceAudioProperties = properties;
        info.sourceAudioPropertiesSize = propertiesSize;
        ++handed;

        Files::written.clear();
        EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, m_instance, m_record.Hold(info)), 1);
        EXPECT_TRUE(TraceEndsWith(L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"));
        if (converted.ext == L"._" || converted.ext == L".iGnore") {
            EXPECT_EQ(Files::written.count(Files::output), 0u);
        } else {
            EXPECT_EQ(Files::outputPath, converted.path + converted.nameNoExt + m_ext);
            EXPECT_EQ(Files::written[Files::output], PlainUtf8(PlainDocument(source, converted, L"\r\n")));
        }
    }

private:
    /// A list as a record has it, pointer and size, sometimes unusable; `list` gets what must be read of it.
    static std::pair<const void*, uint32_t> HoldList(Random& random, Handed& held, PlainList& list) {
        const std::vector<uint8_t> bytes = random.List();
        const void* const data = held.Hold(bytes.data(), bytes.size());
        const auto size = static_cast<uint32_t>(bytes.size());
        if (random.OneIn(20)) {
            return random.OneIn(2) ? std::pair<const void*, uint32_t>(nullptr, size)
                                   : std::pair<const void*, uint32_t>(data, size | 0x80000000);
        }
        list = ReadPlainly(bytes.data(), size);
        ++handed;
        return {data, size};
    }

    static bool TraceEndsWith(const std::wstring& end) {
        const std::string& trace = Files::written[Files::trace];
        return trace.ends_with(std::string(reinterpret_cast<const char*>(end.data()), 2 * end.size()));
    }

    CallStubs m_stubs; // destroyed after the library that calls through them
    LoadedPlugin m_library;
    clDSP_WriteMetadataFile* m_instance;
    std::wstring m_ext = L".xml";
    Handed m_text, m_convertedName, m_audioInfo, m_record, m_tags, m_properties;
};

TEST(Exports, AgreeWithTheReferenceCodeOnRandomInput) {
    SetUnhandledExceptionFilter(ReportSeed);
    const char* const oneSeed = std::getenv("FUZZ_SEED");
    const uint32_t first = oneSeed != nullptr ? static_cast<uint32_t>(std::atoi(oneSeed)) : 1;
    const uint32_t end = oneSeed != nullptr ? first + 1 : first + kRounds;
    std::unique_ptr<Plugin> plugin;
    for (seed = first; seed != end && !HasFailure(); ++seed) {
        SCOPED_TRACE("FUZZ_SEED=" + std::to_string(seed));
        if ((seed - first) % kRoundsPerLoad == 0) {
            plugin.reset();
            plugin = std::make_unique<Plugin>();
        }
        Random random;
        plugin->CheckKeys(random);
        plugin->CheckConversion(random);
    }
    EXPECT_TRUE(oneSeed != nullptr || handed >= kLeastHanded) << handed << " records and lists";
}

} // namespace
