// How fast the plug-in is, as ratios to other ways of doing the same in the same process.
//
//   bench PLUGIN [STYLESHEET...]
//
// docs/performance.md tells what the rows mean. The folder "decoder" beside the program is made and emptied
// here.

#include "bench/Cases.h"
#include "metadata/Com.h"

#include <shellapi.h>

#include <cstdio>
#include <stdexcept>

namespace {

// A second process answers with a number; other exit codes mean that it failed.
constexpr DWORD kAnswer = 1'000'000;

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
    DWORD code = 0;
    GetExitCodeProcess(child.hProcess, &code);
    Require(code >= kAnswer && code < 2 * kAnswer, "the second process failed");
    report.Number("most memory at 100,000 tags", "size of the output", (code - kAnswer) / 100.0, 2.5);
}

void DeleteTempFiles() {
    WIN32_FIND_DATAW found = {};
    const OwnedFind search(FindFirstFileW(TempFile(L"*").c_str(), &found));
    for (BOOL more = search.IsValid(); more; more = FindNextFileW(search.Get(), &found)) {
        DeleteFileW((TempFolder() + found.cFileName).c_str());
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
    DeleteTempFiles();
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
            return static_cast<int>(kAnswer) + MeasureMemory(arguments[0]);
        }
        Run(arguments);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
