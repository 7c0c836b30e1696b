// How fast the plug-in is, as ratios to other ways of doing the same in the same process. Each test prints
// rows of one table; docs/performance.md explains them. scripts/bench.sh runs the tests, those of one suite
// in a process of their own.

#include "bench/BareConversion.h"
#include "bench/Table.h"
#include "bench/Texts.h"
#include "bench/Writers.h"
#include "tests/shared/CallStubs.h"
#include "tests/shared/ConversionFixture.h"

#include <psapi.h>

#include <cmath>
#include <filesystem>
#include <map>

namespace {

FixtureBehaviour* behaviour = nullptr;
uint64_t decoderCalls = 0;

} // namespace

FixtureBehaviour* FixtureBehaviourOf(const wchar_t*) {
    return behaviour;
}

void FixtureCalled(const wchar_t*, const wchar_t*) {
    ++decoderCalls;
}

namespace {

constexpr double kSecondsPerCase = 5;

void Write(HANDLE file, std::string_view bytes) {
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

/// "Tag 0", "Tag 1", … with values of twenty characters.
std::vector<uint8_t> ManyTags(size_t count) {
    const std::wstring text = MakeText(kOrdinary, 1000);
    TagBlob blob;
    for (size_t i = 0; i < count; ++i) {
        blob.Add(L"Tag " + std::to_wstring(i), text.substr(i % (text.size() - 20), 20));
    }
    return blob.Bytes();
}

std::vector<uint8_t> OneTag(const std::wstring& value) {
    return TagBlob().Add(L"LYRICS", value).Bytes();
}

/// Conversions by an instance without log files.
class Bench : public ConversionTest {
protected:
    Bench() {
        behaviour = &library;
        m_bare.converted = converted;
        m_bare.output = folder + L"bare.xml";
        m_bare.decoderPattern = Decoders::PathOf(L"*.dll");
    }
    void TearDown() override { CALL_PLUGIN(DSP_Destroy, m_instance); }

    /// A conversion with many tags and properties, a decoder library for both files.
    void SetTypical() {
        m_bare.source = source;
        m_bare.library = Decoders::PathOf(L"lib.dll");
        tags = library.idTags = ManyTags(30);
        properties = library.properties = ManyTags(15);
        m_info = Info();
    }

    /// A conversion of the host's tags alone: nothing decodes the converted file, and there is no source
    /// file.
    void SetTags(std::vector<uint8_t> packedTags) {
        RegDeleteKeyW(HKEY_CURRENT_USER, Decoders::kCacheKey);
        DeleteFileW(Decoders::PathOf(L"lib.dll").c_str());
        m_bare.source.clear();
        m_bare.library.clear();
        tags = std::move(packedTags);
        m_info = Info();
        m_info.sourceFileName = L"-";
        m_info.sourceAudioPropertiesSize = 0;
    }

    void RunConversion(const std::wstring& settings = L"") {
        CALL_PLUGIN(DSP_BeginConversion, m_instance, nullptr, settings.c_str(), nullptr);
        CALL_PLUGIN(DSP_EndConversion, m_instance);
        CALL_PLUGIN(DSP_AfterConversion, m_instance, &m_info);
    }

    /// The plug-in's document of the conversion that is set.
    std::string Document() {
        RunConversion();
        return ReadBytes(document);
    }

    /// Milliseconds that the plug-in takes beyond the bare calls, at best, and rows against the other
    /// writers.
    void MeasureDocument(const std::string& name, double limit, double peerGoal) {
        const std::string expected = Document();
        const DocumentParts parts(tags, expected);
        std::vector<Rounds::Job> jobs = {[&] { RunConversion(); }};
        for (const auto write : {WriteInSinglePass, WriteWithRapidXml}) {
            jobs.push_back([&, write] { m_bare.Run([&](HANDLE file) { write(file, parts); }); });
            jobs.back()();
            ASSERT_TRUE(ReadBytes(m_bare.output) == expected) << "the writers disagree";
        }
        const Rounds rounds(jobs, kSecondsPerCase);
        PrintRow(name, "single pass", rounds, 1, limit);
        PrintRow(name, "RapidXML", rounds, 2, peerGoal);
    }

    /// The best time beyond that of the bare calls, in milliseconds.
    double TimeOfText(std::vector<uint8_t> packedTags) {
        SetTags(std::move(packedTags));
        const Rounds rounds({[&] { RunConversion(); }, [&] { m_bare.Run([](HANDLE) {}); }}, kSecondsPerCase);
        return rounds.Fastest(0) - rounds.Fastest(1);
    }

    /// How far one conversion of 100,000 tags raises the most memory that the process ever used.
    void MeasureMemory(const std::string& what, const std::wstring& settings, double goal) {
        SetTags(ManyTags(1));
        RunConversion(settings);
        SetTags(ManyTags(100'000));
        const auto use = [] {
            PROCESS_MEMORY_COUNTERS counters = {};
            GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
            return counters;
        };
        // What was used and given back before would hide as much of what the conversion uses.
        std::vector<std::string> filling;
        while (use().WorkingSetSize + 100'000 < use().PeakWorkingSetSize) {
            filling.emplace_back(100'000, 'x');
        }
        const size_t before = use().WorkingSetSize;
        RunConversion(settings);
        const double most = static_cast<double>(use().PeakWorkingSetSize - before);
        plugin.Convert(L"", m_info);
        PrintNumber(what, "size of the document", most / static_cast<double>(ReadBytes(document).size()),
                    goal);
    }

    static constexpr CreateRecord kNoLogs = {};
    clDSP_WriteMetadataFile* const m_instance = CALL_PLUGIN(DSP_Create, &kNoLogs);
    AfterConversionInfo m_info = {};
    BareConversion m_bare;
};

using Calls = Bench;

/// Unless both sides make the same calls, the ratios mean nothing.
TEST_F(Calls, AreTheSameOnBothSides) {
    CallStubs* const stubs = new CallStubs[2]; // for as long as anyone calls through them
    stubs[0].AddImports(GetModuleHandleW(L"WriteMetadataFile.dll"));
    stubs[1].AddImports(GetModuleHandleW(nullptr));
    for (const bool isTypical : {true, false}) {
        isTypical ? SetTypical() : SetTags(ManyTags(10));
        std::map<std::string, uint64_t> calls[2];
        for (int side = 0; side < 2; ++side) {
            for (int round = 0; round < 2; ++round) { // the first fills the registry cache
                stubs[side].CountAnew();
                decoderCalls = 0;
                side == 0 ? RunConversion() : m_bare.Run([](HANDLE) {});
            }
            for (const char* name :
                 {"WaitForSingleObject", "ReleaseMutex",   "FindFirstFileW",       "FindNextFileW",
                  "FindClose",           "GetDriveTypeW",  "CreateFileW",          "CloseHandle",
                  "GetFileTime",         "GetDateFormatW", "FileTimeToSystemTime", "GetTimeFormatW",
                  "RegCreateKeyExW",     "RegCloseKey",    "RegQueryValueExW",     "RegSetValueExW",
                  "GetModuleFileNameW",  "LoadLibraryW",   "GetProcAddress",       "FreeLibrary"}) {
                calls[side][name] = stubs[side][name].calls;
            }
            calls[side]["decoder libraries"] = decoderCalls;
        }
        EXPECT_EQ(calls[0], calls[1]);
        EXPECT_GT(calls[0]["CreateFileW"], 0u);
    }
}

TEST_F(Bench, TypicalConversion) {
    PrintTableHead();
    SetTypical();
    const std::string ready = Document();
    std::vector<std::string_view> writes; // each line and its end
    for (std::string_view rest = ready; !rest.empty();) {
        const size_t size = rest.find("\r\n");
        writes.push_back(rest.substr(0, size));
        writes.push_back(rest.substr(size, 2));
        rest.remove_prefix(size + 2);
    }
    const auto writeLines = [&](HANDLE file) {
        for (const std::string_view bytes : writes) {
            Write(file, bytes);
        }
    };
    const Rounds rounds({[&] { RunConversion(); }, [&] { m_bare.Run(writeLines); },
                         [&] { m_bare.Run([&](HANDLE file) { Write(file, ready); }); }},
                        kSecondsPerCase);
    PrintRow("typical conversion", "bare calls, ready text in " + std::to_string(writes.size()) + " writes",
             rounds, 1, 1.00);
    PrintRow("typical conversion", "bare calls, ready text in one write", rounds, 2, kNoGoal);
}

TEST_F(Bench, Documents) {
    const struct {
        size_t count;
        double limit;
    } rows[] = {{10, 1.10}, {100, 1.10}, {1'000, 1.10}, {10'000, 1.35}, {100'000, 1.35}};
    for (const auto& row : rows) {
        SetTags(ManyTags(row.count));
        MeasureDocument(std::to_string(row.count) + " tags", row.limit, kNoGoal);
    }
    for (const TextKind& kind : {kOrdinary, kSpecial, kAccented, kCyrillic, kJapanese, kEmoji}) {
        SetTags(OneTag(MakeText(kind, 10'000'000)));
        MeasureDocument(std::string("10 MB, ") + kind.name, 1.5, 0.65);
    }
    std::wstring values;
    for (int i = 0; i < 100'000; ++i) {
        values += L"\rten of us.";
    }
    SetTags(OneTag(values.substr(1)));
    MeasureDocument("100,000 CRs", 1.5, 0.65);
}

/// The sizes are such that the text's own time is many times that of the bare calls.
TEST_F(Bench, Growth) {
    const auto print = [](const char* what, double from, double to) {
        PrintNumber(what, "exponent of growth", std::log10(to / from), 1.10);
    };
    const double few = TimeOfText(ManyTags(100'000));
    print("100,000 to 1,000,000 tags", few, TimeOfText(ManyTags(1'000'000)));
    const double less = TimeOfText(OneTag(MakeText(kSpecial, 10'000'000)));
    print("10 to 100 MB, a tenth special", less, TimeOfText(OneTag(MakeText(kSpecial, 100'000'000))));
}

std::vector<std::filesystem::path> StyleSheets() {
    std::vector<std::filesystem::path> sheets;
    for (const auto& entry : std::filesystem::directory_iterator("..\\..\\dist\\XSLT")) {
        if (entry.path().extension() == L".xslt") {
            sheets.push_back(absolute(entry.path()));
        }
    }
    std::sort(sheets.begin(), sheets.end());
    return sheets;
}

std::wstring SettingsFor(const std::filesystem::path& sheet) {
    return L"-xsltfile=\"" + sheet.wstring() + L"\"";
}

// Each in a process of its own.
using MemoryOfDocument = Bench;
TEST_F(MemoryOfDocument, OfManyTags) {
    MeasureMemory("most memory, 100,000 tags", L"", 0.1);
}
using MemoryOfTransformation = Bench;
TEST_F(MemoryOfTransformation, OfManyTags) {
    const std::filesystem::path sheet = std::filesystem::absolute("..\\..\\dist\\XSLT\\Csv.xslt");
    MeasureMemory("most memory, 100,000 tags, " + sheet.filename().string(), SettingsFor(sheet), kNoGoal);
}

/// Milliseconds: style sheets have no yardstick.
using Transformations = Bench;
TEST_F(Transformations, OfEverySheet) {
    std::printf("\n| style sheet | ms, 100 tags | ms, 10,000 tags |\n|:------------|---:|---:|\n");
    for (const std::filesystem::path& sheet : StyleSheets()) {
        std::printf("| %s |", sheet.filename().string().c_str());
        for (const size_t count : {100u, 10'000u}) {
            SetTags(ManyTags(count));
            const Rounds rounds({[&] { RunConversion(SettingsFor(sheet)); }}, 0);
            std::printf(" %.3g |", rounds.Milliseconds(0));
        }
        std::printf("\n");
    }
}

} // namespace
