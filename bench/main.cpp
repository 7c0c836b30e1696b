// How fast the plug-in is, as ratios to other ways of doing the same in the same process.
//
//   bench PLUGIN [STYLESHEET...]
//
// docs/performance.md tells what the rows mean. The folder "decoder" beside the program is made and emptied
// here.

#include "bench/BareConversion.h"
#include "bench/Document.h"
#include "bench/ImportCounts.h"
#include "bench/Report.h"
#include "bench/Rounds.h"
#include "metadata/AfterConversionInfo.h"
#include "metadata/Com.h"
#include "support/Owner.h"
#include "tools/host/PluginLibrary.h"

#include <psapi.h>
#include <shellapi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr double kSecondsPerCase = 5;
constexpr size_t kValueSize = 20;

std::wstring ProgramFolder() {
    wchar_t path[1000];
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return std::wstring(path, wcsrchr(path, L'\\') + 1);
}

std::wstring TempFile(const std::wstring& name) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return folder + (L"bench-" + name);
}

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

void Write(HANDLE file, const void* data, size_t size) {
    DWORD written = 0;
    WriteFile(file, data, static_cast<DWORD>(size), &written, nullptr);
}

OwnedFile CreateFileFor(const std::wstring& path) {
    return OwnedFile(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
}

std::string ReadBytes(const std::wstring& path) {
    const OwnedFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    Require(file.IsValid(), "a document is missing");
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    return bytes;
}

/// What the converter hands over for one kind of conversion, and the system's share of it.
class Scene {
public:
    /// A document of the host's tags alone: nothing decodes the converted file, and there is no source file.
    explicit Scene(const Blob& tags) {
        m_bare.converted = TempFile(L"converted.other");
        m_bare.extension = L".other";
        m_bare.decoderPattern = ProgramFolder() + L"decoder\\*.dll";
        SetTags(tags);
    }

    /// A conversion as it comes: two files, a decoder library for both, and the host's lists.
    Scene(const Blob& tags, const Blob& properties) {
        m_bare.source = TempFile(L"source.bench");
        m_bare.converted = TempFile(L"converted.bench");
        m_bare.extension = L".bench";
        m_bare.library = ProgramFolder() + L"decoder\\bench_decoder.dll";
        m_info.sourceFileName = m_bare.source.c_str();
        m_info.sourceAudioProperties = properties.data();
        m_info.sourceAudioPropertiesSize = static_cast<uint32_t>(properties.size());
        Write(CreateFileFor(m_bare.source).Get(), "source", 6);
        SetTags(tags);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    std::wstring Output() const { return TempFile(L"converted.xml"); }

    /// Has the plug-in do all of a conversion, but for the audio.
    void Convert(const PluginInstance& instance, const wchar_t* settings = L"") const {
        const PluginLibrary& plugin = instance.Plugin();
        plugin.beginConversion(instance.Get(), nullptr, settings, nullptr);
        plugin.endConversion(instance.Get());
        plugin.afterConversion(instance.Get(), &m_info);
    }

    /// The same conversion with another writer, into a file of its own.
    BareConversion Bare(const std::wstring& writer) const {
        BareConversion bare = m_bare;
        bare.output = TempFile(writer + L".xml");
        return bare;
    }

private:
    void SetTags(const Blob& tags) {
        m_info.destFileName = m_bare.converted.c_str();
        m_info.sourceAudioInfo = &m_sourceInfo;
        m_info.destIDTags = tags.data();
        m_info.destIDTagsSize = static_cast<uint32_t>(tags.size());
        Write(CreateFileFor(m_bare.converted).Get(), "converted", 9);
    }

    BareConversion m_bare;
    AudioInfo m_sourceInfo = {};
    AfterConversionInfo m_info = {L"-", nullptr, 0, nullptr, nullptr, 0, nullptr, 0};
};

Rounds::Job JobOf(BareConversion&& bare, WriteDocument&& write) {
    return [bare = std::move(bare), write = std::move(write)] { bare.Run(write); };
}

void WriteNothing(HANDLE /*file*/) {}

/// Fails unless the plug-in and the bare conversion make the same calls.
void CheckCalls(const PluginInstance& instance, const Scene& scene) {
    const auto count = [](HMODULE module, const Rounds::Job& job) {
        job(); // fills the registry cache
        const ImportCounts imports(module);
        decoderCalls = 0;
        job();
        auto calls = imports.Calls();
        calls["decoder libraries"] = static_cast<uint64_t>(decoderCalls);
        return calls;
    };
    const auto plugin = count(GetModuleHandleW(L"WriteMetadataFile.dll"), [&] { scene.Convert(instance); });
    const auto bare = count(GetModuleHandleW(nullptr), JobOf(scene.Bare(L"bare"), WriteNothing));
    for (const auto& [name, calls] : plugin) {
        if (calls != bare.at(name)) {
            std::fprintf(stderr, "%s: %d calls by the plug-in, %d by the bare conversion\n", name.c_str(),
                         static_cast<int>(calls), static_cast<int>(bare.at(name)));
        }
    }
    Require(plugin == bare, "the yardsticks do not make the plug-in's calls");
}

void MeasureTypical(const PluginInstance& instance, Report& report) {
    const Blob tags = PackTags(30, kValueSize);
    const Blob properties = PackTags(15, kValueSize);
    const Scene scene(tags, properties);
    CheckCalls(instance, scene);

    const std::string document = ReadBytes(scene.Output());
    std::vector<std::string_view> pieces; // each line and its end
    for (std::string_view rest = document; !rest.empty();) {
        const size_t size = rest.find("\r\n");
        pieces.push_back(rest.substr(0, size));
        pieces.push_back(rest.substr(size, 2));
        rest.remove_prefix(size + 2);
    }
    const auto inPieces = [&](HANDLE file) {
        for (const std::string_view piece : pieces) {
            Write(file, piece.data(), piece.size());
        }
    };
    const auto atOnce = [&](HANDLE file) { Write(file, document.data(), document.size()); };
    const Rounds rounds({[&] { scene.Convert(instance); }, JobOf(scene.Bare(L"pieces"), inPieces),
                         JobOf(scene.Bare(L"at-once"), atOnce)},
                        kSecondsPerCase);
    const std::string name = "bare calls, ready text in " + std::to_string(pieces.size()) + " writes";
    report.Row("typical conversion", name.c_str(), rounds, 1, 1.00);
    report.Row("typical conversion", "bare calls, ready text in one write", rounds, 2);
}

struct Goals {
    double limit;
    double peers = Report::kNoGoal;
};

/// Milliseconds that the plug-in takes beyond the bare calls.
double MeasureDocument(const PluginInstance& instance, Report& report, const char* name, Blob&& tags,
                       Goals goals) {
    const Blob kept = tags;
    const Scene scene(kept);
    CheckCalls(instance, scene);
    const Document document(std::move(tags), ReadBytes(scene.Output()));

    struct Way {
        const char* name;
        const wchar_t* file;
        void (*write)(HANDLE file, const Document& document);
    };
    constexpr Way kWays[] = {{"single pass", L"limit", WriteInSinglePass},
                             {"RapidXML", L"rapidxml", WriteWithRapidXml},
                             {"XmlLite", L"xmllite", WriteWithXmlLite},
                             {"MSXML", L"msxml", WriteWithMsxml}};
    std::vector<Rounds::Job> jobs = {[&] { scene.Convert(instance); }};
    for (const Way& way : kWays) {
        jobs.push_back(JobOf(scene.Bare(way.file), [&](HANDLE file) { way.write(file, document); }));
        jobs.back()();
        const std::string ours = ReadBytes(scene.Output());
        const std::string theirs = ReadBytes(scene.Bare(way.file).output);
        Require(way.write == WriteInSinglePass ? ours == theirs : SaysTheSame(ours, theirs), way.name);
    }
    jobs.push_back(JobOf(scene.Bare(L"bare"), WriteNothing));

    const Rounds rounds(jobs, kSecondsPerCase);
    for (size_t way = 0; way < std::size(kWays); ++way) {
        report.Row(name, kWays[way].name, rounds, way + 1, way == 0 ? goals.limit : goals.peers);
    }
    return rounds.Milliseconds(0) - rounds.Milliseconds(jobs.size() - 1);
}

void ReportGrowth(Report& report, const char* name, double from, double to) {
    report.Number(name, "exponent of growth", std::log10(to / from), 1.1);
}

void MeasureDocuments(const PluginInstance& instance, Report& report) {
    MeasureDocument(instance, report, "10 tags", PackTags(10, kValueSize), {1.10});
    MeasureDocument(instance, report, "100 tags", PackTags(100, kValueSize), {1.10});
    MeasureDocument(instance, report, "1,000 tags", PackTags(1'000, kValueSize), {1.10, 0.999});
    const double few =
        MeasureDocument(instance, report, "10,000 tags", PackTags(10'000, kValueSize), {1.35, 0.7});
    const double many =
        MeasureDocument(instance, report, "100,000 tags", PackTags(100'000, kValueSize), {1.35, 0.5});
    ReportGrowth(report, "10,000 to 100,000 tags", few, many);
    const double small =
        MeasureDocument(instance, report, "1 MB of ordinary text", PackTags(1, 1'000'000), {1.5, 0.85});
    const double large =
        MeasureDocument(instance, report, "10 MB of ordinary text", PackTags(1, 10'000'000), {1.5, 0.5});
    ReportGrowth(report, "1 MB to 10 MB of ordinary text", small, large);
    const double smallSpecial = MeasureDocument(instance, report, "1 MB, 10 % special characters",
                                                PackTags(1, 1'000'000, Text::Special), {1.5, 0.85});
    const double largeSpecial = MeasureDocument(instance, report, "10 MB, 10 % special characters",
                                                PackTags(1, 10'000'000, Text::Special), {1.5, 0.5});
    ReportGrowth(report, "1 MB to 10 MB, 10 % special", smallSpecial, largeSpecial);
    MeasureDocument(instance, report, "1 MB of ampersands", PackTags(1, 1'000'000, Text::Ampersands),
                    {1.5, 0.85});
    MeasureDocument(instance, report, "100,000 CRs", PackTags(1, 1'100'000, Text::ManyValues), {1.5, 0.85});
}

/// The yardstick is one copy of the entry into memory that is there already.
void MeasurePicture(const PluginInstance& instance, Report& report) {
    const Blob picture = PackPicture(10'000'000);
    const Scene scene(picture);
    scene.Convert(instance);
    const Document document(Blob(picture), ReadBytes(scene.Output()));
    Blob copy(picture.size());
    const auto write = [&](HANDLE file) {
        std::memcpy(copy.data(), picture.data(), picture.size());
        WriteInSinglePass(file, document);
    };
    const Rounds rounds({[&] { scene.Convert(instance); }, JobOf(scene.Bare(L"copy"), write)},
                        kSecondsPerCase);
    report.Row("10 MB picture", "single pass and one memcpy", rounds, 1, 1.00);
}

/// A million calls a round.
void MeasurePassThrough(const PluginInstance& instance, const std::wstring& decoder, Report& report) {
    const OwnedModule library(LoadLibraryW(decoder.c_str()));
    using PassFunction = decltype(PluginLibrary::passAudioBlock);
    const auto empty =
        reinterpret_cast<PassFunction>(reinterpret_cast<void*>(GetProcAddress(library.Get(), "DecodeBlock")));
    uint8_t block[16] = {};
    const auto callOften = [&](PassFunction function) {
        for (int i = 0; i < 1'000'000; ++i) {
            function(instance.Get(), block, sizeof block);
        }
    };
    const Rounds rounds({[&] { callOften(instance.Plugin().passAudioBlock); }, [&] { callOften(empty); }}, 2);
    report.Row("a million audio blocks", "an empty exported function", rounds, 1, 1.10);
}

/// A thousand lines a round, always into the same part of a file.
void MeasureTrace(const PluginLibrary& plugin, Report& report) {
    const OwnedFile trace = CreateFileFor(TempFile(L"trace.txt"));
    const OwnedFile bareTrace = CreateFileFor(TempFile(L"bare-trace.txt"));
    const OwnedHandle mutex(CreateMutexW(nullptr, FALSE, nullptr));
    CreateRecord record = {};
    record.debugFile = trace.Get();
    const PluginInstance instance(plugin, record);
    constexpr std::wstring_view kLine = L"IsLive  [clDSP_WriteMetadataFile::Get]\r\n";
    const auto repeat = [](HANDLE file, const auto& call) {
        SetFilePointer(file, 0, nullptr, FILE_BEGIN);
        for (int i = 0; i < 1'000; ++i) {
            call();
        }
    };
    const Rounds rounds({[&] { repeat(trace.Get(), [&] { plugin.get(instance.Get(), L"IsLive"); }); },
                         [&] {
                             repeat(bareTrace.Get(), [&] {
                                 WaitForSingleObject(mutex.Get(), INFINITE);
                                 Write(bareTrace.Get(), kLine.data(), kLine.size() * sizeof(wchar_t));
                                 ReleaseMutex(mutex.Get());
                             });
                         }},
                        4);
    Require(GetFileSize(trace.Get(), nullptr) == GetFileSize(bareTrace.Get(), nullptr), "trace lines differ");
    report.Row("1,000 trace lines", "mutex and WriteFile", rounds, 1, 1.25);
}

/// A converter has windows: the libraries for these are there before the plug-in is.
void MeasureLoading(const std::wstring& plugin, const std::wstring& decoder, Report& report) {
    const OwnedModule windows(LoadLibraryW(L"comdlg32.dll"));
    const OwnedModule sockets(LoadLibraryW(L"ws2_32.dll"));
    const auto load = [](const std::wstring& path) { const OwnedModule library(LoadLibraryW(path.c_str())); };
    const Rounds rounds({[&] { load(plugin); }, [&] { load(decoder); }}, 3);
    report.Row("loading and freeing", "the benchmark's decoder library", rounds, 1);
    report.Number("size of the library in KB", "", static_cast<double>(ReadBytes(plugin).size()) / 1024, 320);
}

/// A process of its own: how far one document raises the most memory that was ever in use.
int MeasureMemory(const wchar_t* pluginPath) {
    PluginLibrary plugin;
    Require(plugin.Load(pluginPath), "cannot load the plug-in");
    const PluginInstance instance(plugin, {});
    const Blob one = PackTags(1, kValueSize);
    Scene(one).Convert(instance);
    const Blob many = PackTags(100'000, kValueSize);
    const Scene scene(many);
    PROCESS_MEMORY_COUNTERS before = {};
    PROCESS_MEMORY_COUNTERS after = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &before, sizeof before);
    scene.Convert(instance);
    GetProcessMemoryInfo(GetCurrentProcess(), &after, sizeof after);
    Require(after.PeakWorkingSetSize > before.PeakWorkingSetSize, "the conversion made no new peak");
    // In hundredths, as an exit code.
    return static_cast<int>(100 * (after.PeakWorkingSetSize - before.WorkingSetSize) /
                            ReadBytes(scene.Output()).size());
}

void MeasureMemoryInChild(Report& report) {
    std::wstring command = std::wstring(GetCommandLineW()) + L" --memory";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    Require(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                           &child),
            "cannot start a second process");
    const OwnedHandle process(child.hProcess);
    const OwnedHandle thread(child.hThread);
    WaitForSingleObject(child.hProcess, INFINITE);
    DWORD hundredths = 0;
    GetExitCodeProcess(child.hProcess, &hundredths);
    Require(hundredths > 1, "the second process failed");
    report.Number("most memory at 100,000 tags", "size of the output", hundredths / 100.0, 2.5);
}

/// Style sheets have no yardstick: milliseconds.
void MeasureTransformations(const PluginInstance& instance, const std::vector<std::wstring>& styleSheets) {
    std::printf("\n| style sheet | ms, 100 tags | ms, 10,000 tags |\n|:------------|---:|---:|\n");
    for (const std::wstring& path : styleSheets) {
        std::printf("| %ls |", path.substr(path.rfind(L'\\') + 1).c_str());
        for (const int32_t count : {100, 10'000}) {
            const Blob tags = PackTags(count, kValueSize);
            const Scene scene(tags);
            const std::wstring settings = L"-xsltfile=\"" + path + L"\"";
            const Rounds rounds({[&] { scene.Convert(instance, settings.c_str()); }}, 0);
            std::printf(" %.3g |", rounds.Milliseconds(0));
        }
        std::printf("\n");
    }
}

void Run(const std::vector<std::wstring>& arguments) {
    const std::wstring decoder = ProgramFolder() + L"bench_decoder.dll";
    const std::wstring decoderFolder = ProgramFolder() + L"decoder\\";
    CreateDirectoryW(decoderFolder.c_str(), nullptr);
    Require(CopyFileW(decoder.c_str(), (decoderFolder + L"bench_decoder.dll").c_str(), FALSE),
            "the benchmark's decoder library is missing");
    const ComInitScope com;
    Report report;
    MeasureLoading(arguments[0], decoder, report);

    PluginLibrary plugin;
    Require(plugin.Load(arguments[0].c_str()), "cannot load the plug-in");
    const PluginInstance instance(plugin, {});
    MeasurePassThrough(instance, decoder, report);
    MeasureTrace(plugin, report);
    MeasureTypical(instance, report);
    DeleteFileW((decoderFolder + L"bench_decoder.dll").c_str());
    MeasureDocuments(instance, report);
    MeasurePicture(instance, report);
    MeasureMemoryInChild(report);
    std::printf("\n%d goals missed\n", report.Missed());
    MeasureTransformations(instance, {arguments.begin() + 1, arguments.end()});
}

} // namespace

int main() {
    int count = 0;
    wchar_t** const given = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::vector<std::wstring> arguments(given + 1, given + count);
    LocalFree(given);
    try {
        Require(!arguments.empty(), "usage: bench PLUGIN [STYLESHEET...]");
        if (arguments.back() == L"--memory") {
            return MeasureMemory(arguments[0].c_str());
        }
        Run(arguments);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
