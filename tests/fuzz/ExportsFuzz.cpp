// The library's exports, given random records, lists and texts that end right before an inaccessible page.
// What comes back, above all the document, must be what the plainest code makes of the same. No file exists,
// and what the library writes stays in memory: the system would take a hundred times as long as the library.

#include "tests/GuardedBytes.h"
#include "tests/PluginHarness.h"
#include "tests/fuzz/PlainDocument.h"

#include <imagehlp.h>

#include <cstdlib>
#include <map>
#include <random>

namespace {

constexpr uint32_t kRounds = 57'000;       // of two records and two lists each, some of which are left out
constexpr uint32_t kLeastHanded = 200'000; // of those that are not
constexpr uint32_t kRoundsPerLoad = 500;   // the trace's indentation grows for every file that is missing

uint32_t seed = 0; // of the round that is running

LONG WINAPI TellSeed(EXCEPTION_POINTERS* /*fault*/) {
    std::fprintf(stderr, "faulted in the round of FUZZ_SEED=%u\n", seed);
    return EXCEPTION_CONTINUE_SEARCH;
}

class Random {
public:
    uint32_t Below(uint32_t limit) { return m_engine() % limit; }
    bool OneIn(uint32_t count) { return Below(count) == 0; }

    std::vector<uint8_t> Bytes(size_t size) {
        std::vector<uint8_t> bytes(size);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(m_engine());
        }
        return bytes;
    }

    /// Units that mean something to someone, now and then any others, and no zero.
    std::wstring Text() {
        constexpr wchar_t kUnits[] = L"aB7 -=\"#&'<>()/\\:._?*\r\n\t\x00E9\xD83D\xDE00\xFFFF";
        std::wstring text(Below(25), L'?');
        for (wchar_t& unit : text) {
            unit = OneIn(8) ? static_cast<wchar_t>(1 + Below(0xFFFF)) : kUnits[Below(std::size(kUnits) - 1)];
        }
        return text;
    }

    /// A list with entries good and bad, and often damaged.
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
            bytes[Below(static_cast<uint32_t>(bytes.size()))] = static_cast<uint8_t>(m_engine());
        }
        bytes.resize(OneIn(4) ? Below(static_cast<uint32_t>(bytes.size() + 1)) : bytes.size());
        return bytes;
    }

private:
    std::mt19937 m_engine{seed};
};

/// A list as a record tells it, and what is to be read of it: nothing when it is null, or when its size is 0
/// or has more than 31 bits.
struct HeldList {
    const void* data;
    uint32_t size;
    PlainList plain;

    bool IsRead() const { return data != nullptr && static_cast<int32_t>(size) > 0; }
};

/// One piece of what the host hands over, in pages that serve for all rounds.
class Handed {
public:
    const wchar_t* Hold(const std::wstring& text) {
        m_bytes.Assign(text.c_str(), (text.size() + 1) * sizeof(wchar_t));
        return reinterpret_cast<const wchar_t*>(m_bytes.Data());
    }

    template<class Record>
    const Record* Hold(const Record& record) {
        m_bytes.Assign(&record, sizeof record);
        return reinterpret_cast<const Record*>(m_bytes.Data());
    }

    HeldList HoldList(Random& random) {
        const std::vector<uint8_t> bytes = random.List();
        m_bytes.Assign(bytes.data(), bytes.size());
        HeldList list = {
            random.OneIn(20) ? nullptr : m_bytes.Data(), static_cast<uint32_t>(bytes.size()), {}};
        list.size |= random.OneIn(20) ? 0x80000000 : 0;
        list.plain = ReadPlainly(bytes.data(), list.IsRead() ? list.size : 0);
        return list;
    }

private:
    GuardedBytes m_bytes{4096};
};

/// The texts of a file that does not exist.
void SplitPlainly(PlainFile& file, const std::wstring& path) {
    const size_t slash = path.rfind(L'\\');
    file.path = slash == std::wstring::npos ? path : path.substr(0, slash + 1);
    file.name = path.substr(slash + 1);
    const size_t dot = file.name.rfind(L'.');
    file.nameNoExt = file.name.substr(0, dot);
    file.ext = dot == std::wstring::npos ? L"." : file.name.substr(dot);
}

/// The system as the library sees it.
struct System {
    static inline const HANDLE errors = reinterpret_cast<HANDLE>(INT64_C(0x1001));
    static inline const HANDLE trace = reinterpret_cast<HANDLE>(INT64_C(0x1002));
    static inline const HANDLE output = reinterpret_cast<HANDLE>(INT64_C(0x1003));
    static inline std::wstring outputPath;
    static inline std::map<HANDLE, std::string> written;

    static HANDLE WINAPI Create(const wchar_t* path, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD,
                                HANDLE) {
        outputPath = path;
        written[output].clear();
        return output;
    }
    static BOOL WINAPI Write(HANDLE file, const void* data, DWORD size, DWORD* count, OVERLAPPED*) {
        written[file].append(static_cast<const char*>(data), size);
        *count = size;
        return TRUE;
    }
    static BOOL WINAPI Close(HANDLE handle) { return handle == output || CloseHandle(handle); }
    static HANDLE WINAPI Find(const wchar_t*, WIN32_FIND_DATAW*) { return INVALID_HANDLE_VALUE; }
    static UINT WINAPI DriveType(const wchar_t*) { return DRIVE_NO_ROOT_DIR; }
    static DWORD WINAPI Wait(HANDLE, DWORD) { return WAIT_OBJECT_0; }
    static BOOL WINAPI Release(HANDLE) { return TRUE; }

    /// Takes the places of the real functions among those that a library imports.
    static void Serve(HMODULE library) {
        const std::map<void*, void*> instead = {
            Pair(CreateFileW, Create),  Pair(WriteFile, Write),         Pair(CloseHandle, Close),
            Pair(FindFirstFileW, Find), Pair(GetDriveTypeW, DriveType), Pair(WaitForSingleObject, Wait),
            Pair(ReleaseMutex, Release)};
        ULONG size = 0;
        auto* place =
            static_cast<void**>(ImageDirectoryEntryToData(library, TRUE, IMAGE_DIRECTORY_ENTRY_IAT, &size));
        size_t served = 0;
        for (auto* const end = place + size / sizeof *place; place != end; ++place) {
            if (const auto found = instead.find(*place); found != instead.end()) {
                DWORD old = 0;
                VirtualProtect(place, sizeof *place, PAGE_READWRITE, &old);
                *place = found->second;
                ++served;
            }
        }
        EXPECT_EQ(served, instead.size());
    }

private:
    template<class Function>
    static std::pair<void*, void*> Pair(Function* real, Function* standIn) {
        return {reinterpret_cast<void*>(real), reinterpret_cast<void*>(standIn)};
    }
};

/// Everything of one round: what is handed over, and what is to come of it.
class ExportsFuzz : public testing::Test {
protected:
    void Load() {
        Unload();
        m_plugin = std::make_unique<LoadedPlugin>();
        m_ext = L".xml";
        System::Serve(m_plugin->Module());
        m_instance =
            CALL_PLUGIN(DSP_Create, m_record.Hold(CreateRecord{System::errors, nullptr, System::trace}));
    }

    void Unload() {
        if (m_plugin != nullptr) {
            EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, m_instance), 1);
            m_plugin.reset();
        }
    }

    void CheckKeys(Random& random) {
        const std::wstring key = random.OneIn(8) ? L"IsLive" : random.Text();
        System::written[System::trace].clear();
        EXPECT_EQ(CALL_PLUGIN(DSP_Get, m_instance, m_key.Hold(key)), key == L"IsLive");
        EXPECT_EQ(CALL_PLUGIN(DSP_Set, m_instance, m_key.Hold(key)), 0);
        ExpectEnd(System::written[System::trace], key + L"  [clDSP_WriteMetadataFile::Set]\r\n");
        EXPECT_STREQ(CALL_PLUGIN(DSP_RemoveConfigBit, m_instance, -123), L"-xsltfile=\"\" -ext=\"\"");
    }

    void CheckConversion(Random& random) {
        AfterConversionInfo info = {};
        PlainFile source, converted;
        const std::wstring sourceName = random.OneIn(2) ? L"-" : random.Text();
        info.sourceFileName = m_sourceName.Hold(sourceName);
        if (sourceName != L"-") {
            SplitPlainly(source, sourceName);
        }
        const std::wstring convertedName = random.Text() + (random.OneIn(30) ? L".iGnore" : L"");
        info.destFileName = convertedName.empty() ? nullptr : m_convertedName.Hold(convertedName);
        SplitPlainly(converted, convertedName);
        if (!random.OneIn(20)) {
            const std::vector<uint8_t> bytes = random.Bytes(sizeof source.info);
            std::memcpy(&source.info, bytes.data(), bytes.size());
            source.info.format.wFormatTag = static_cast<uint16_t>(random.OneIn(2) ? 1 : 85);
            info.sourceAudioInfo = m_audioInfo.Hold(source.info);
        }
        const HeldList tags = m_tags.HoldList(random);
        info.destIDTags = tags.data;
        info.destIDTagsSize = tags.size;
        converted.idTags = tags.plain;
        const HeldList properties = m_properties.HoldList(random);
        info.sourceAudioProperties = properties.data;
        info.sourceAudioPropertiesSize = properties.size;
        source.properties = properties.plain;
        std::wstring ext = random.Text();
        std::erase(ext, L'"');
        m_ext = ext.empty() ? m_ext : ext; // an empty one leaves the earlier
        const std::wstring settings = L"-ext=\"" + ext + L"\"" + random.Text();

        System::written.clear();
        EXPECT_EQ(CALL_PLUGIN(DSP_BeginConversion, m_instance, nullptr, m_settings.Hold(settings), nullptr),
                  1);
        EXPECT_EQ(CALL_PLUGIN(DSP_PassAudioBlock, m_instance), 1);
        EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, m_instance), 1);
        EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, m_instance, m_record.Hold(info)), 1);

        const bool refused = converted.ext == L"._" || converted.ext == L".iGnore";
        handed += refused ? 1u : 1u + (info.sourceAudioInfo != nullptr) + tags.IsRead() + properties.IsRead();
        EXPECT_EQ(System::written.count(System::output), refused ? 0 : 1);
        EXPECT_EQ(System::written[System::output], refused ? "" : PlainDocumentFile(source, converted));
        if (!refused) {
            EXPECT_EQ(System::outputPath, converted.path + converted.nameNoExt + m_ext);
        }
        ExpectEnd(System::written[System::trace], L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n");
    }

    uint32_t handed = 0; // records and lists that were there to be read

    /// A text in UTF-16 ends so.
    static void ExpectEnd(const std::string& bytes, const std::wstring& end) {
        const std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data()),
                                bytes.size() / sizeof(wchar_t));
        EXPECT_TRUE(text.ends_with(end)) << text << " does not end in " << end;
    }

private:
    std::unique_ptr<LoadedPlugin> m_plugin;
    clDSP_WriteMetadataFile* m_instance = nullptr;
    std::wstring m_ext;
    Handed m_settings, m_key, m_sourceName, m_convertedName, m_audioInfo, m_record, m_tags, m_properties;
};

TEST_F(ExportsFuzz, AnswersAnythingAsThePlainestCodeDoes) {
    SetUnhandledExceptionFilter(TellSeed);
    const char* const oneSeed = std::getenv("FUZZ_SEED");
    const uint32_t first = oneSeed != nullptr ? static_cast<uint32_t>(std::atoi(oneSeed)) : 1;
    const uint32_t end = oneSeed != nullptr ? first + 1 : first + kRounds;
    for (seed = first; seed != end && !HasFailure(); ++seed) {
        SCOPED_TRACE("FUZZ_SEED=" + std::to_string(seed));
        if ((seed - first) % kRoundsPerLoad == 0) {
            Load();
        }
        Random random;
        CheckKeys(random);
        CheckConversion(random);
    }
    Unload();
    EXPECT_TRUE(handed >= kLeastHanded || seed != first + kRounds) << handed << " records and lists";
}

} // namespace
