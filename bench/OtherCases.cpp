#include "bench/Cases.h"
#include "bench/Rounds.h"

#include <psapi.h>

#include <cstdio>
#include <string_view>

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

int MeasureMemory(const std::wstring& pluginPath) {
    PluginLibrary plugin;
    Require(plugin.Load(pluginPath.c_str()), "cannot load the plug-in");
    const PluginInstance instance(plugin, {});
    const Blob one = PackTags(1);
    Scene(one).Convert(instance);
    const Blob many = PackTags(100'000);
    const Scene scene(many);
    PROCESS_MEMORY_COUNTERS before = {};
    PROCESS_MEMORY_COUNTERS after = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &before, sizeof before);
    scene.Convert(instance);
    GetProcessMemoryInfo(GetCurrentProcess(), &after, sizeof after);
    Require(before.PeakWorkingSetSize - before.WorkingSetSize < 1 << 20,
            "memory was used and given back before");
    return static_cast<int>(100 * (after.PeakWorkingSetSize - before.WorkingSetSize) /
                            ReadBytes(scene.Output()).size());
}

void MeasureTransformations(const PluginInstance& instance, const std::vector<std::wstring>& styleSheets) {
    std::printf("\n| style sheet | ms, 100 tags | ms, 10,000 tags |\n|:------------|---:|---:|\n");
    for (const std::wstring& path : styleSheets) {
        std::printf("| %ls |", path.substr(path.rfind(L'\\') + 1).c_str());
        for (const int32_t count : {100, 10'000}) {
            const Blob tags = PackTags(count);
            const Scene scene(tags);
            const std::wstring settings = L"-xsltfile=\"" + path + L"\"";
            const Rounds rounds({[&] { scene.Convert(instance, settings.c_str()); }}, 0);
            std::printf(" %.3g |", rounds.Milliseconds(0));
        }
        std::printf("\n");
    }
}
