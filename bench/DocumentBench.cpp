// How long the plug-in takes for a document, by number of tags and size of values, plain and transformed.
//
//   bench PLUGIN [STYLESHEET…]
//
// Each row is the quickest of five conversions without decoder libraries: gathering, building, transforming,
// writing.

#include "metadata/AfterConversionInfo.h"
#include "support/DebugLog.h"
#include "tools/host/PluginLibrary.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// A packed tag list of `count` entries whose values have `valueSize` characters; every tenth needs escaping.
std::vector<uint8_t> MakeTags(int32_t count, size_t valueSize) {
    std::vector<uint8_t> blob(sizeof count);
    std::memcpy(blob.data(), &count, sizeof count);
    std::wstring value;
    while (value.size() < valueSize) {
        value += L"nine & ten"[value.size() % 10];
    }
    for (int32_t i = 0; i < count; ++i) {
        std::wstring texts = L"Tag " + std::to_wstring(i);
        texts += L'\0';
        texts += value;
        texts += L'\0';
        const int32_t size = static_cast<int32_t>(sizeof size + texts.size() * sizeof(wchar_t));
        const size_t at = blob.size();
        blob.resize(at + static_cast<size_t>(size));
        std::memcpy(blob.data() + at, &size, sizeof size);
        std::memcpy(blob.data() + at + sizeof size, texts.data(), texts.size() * sizeof(wchar_t));
    }
    return blob;
}

double Milliseconds() {
    LARGE_INTEGER now, perSecond;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&perSecond);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(perSecond.QuadPart);
}

unsigned long long FileSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return (static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

void Measure(const PluginLibrary& plugin, const wchar_t* styleSheet, int32_t tagCount, size_t valueSize) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    const std::wstring output = std::wstring(folder) + L"bench.out";
    const std::wstring settings =
        std::wstring(L"-xsltfile=\"") + styleSheet + L"\" -filename=\"" + output + L"\"";
    const std::wstring converted = std::wstring(folder) + L"bench.flac";
    const std::vector<uint8_t> tags = MakeTags(tagCount, valueSize);

    AfterConversionInfo info = {};
    info.sourceFileName = L"-";
    info.destFileName = converted.c_str();
    info.destIDTags = tags.data();
    info.destIDTagsSize = static_cast<uint32_t>(tags.size());
    const CreateRecord record = {};
    const PluginInstance instance(plugin, record);
    plugin.beginConversion(instance.Get(), nullptr, settings.c_str(), nullptr);

    constexpr int kRuns = 5;
    double best = 1e9;
    for (int run = 0; run < kRuns; ++run) {
        const double begin = Milliseconds();
        plugin.afterConversion(instance.Get(), &info);
        best = std::min(best, Milliseconds() - begin);
    }
    const wchar_t* slash = wcsrchr(styleSheet, L'\\');
    std::printf("%-22ls %8d %12zu %14llu %10.2f\n",
                *styleSheet == 0   ? L"(none)"
                : slash != nullptr ? slash + 1
                                   : styleSheet,
                static_cast<int>(tagCount), valueSize, FileSize(output), best);
    DeleteFileW(output.c_str());
}

} // namespace

int main() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    PluginLibrary plugin;
    if (count < 2 || !plugin.Load(arguments[1])) {
        std::fprintf(stderr, "usage: bench PLUGIN [STYLESHEET...]\n");
        return 1;
    }
    std::printf("%-22s %8s %12s %14s %10s\n", "style sheet", "tags", "value size", "output bytes", "ms");
    for (const int32_t tags : {100, 1'000, 10'000, 100'000}) {
        Measure(plugin, L"", tags, 20);
    }
    for (const size_t size : {100'000u, 1'000'000u, 10'000'000u}) {
        Measure(plugin, L"", 1, size);
    }
    for (int i = 2; i < count; ++i) {
        for (const int32_t tags : {100, 10'000}) {
            Measure(plugin, arguments[i], tags, 20);
        }
    }
    return 0;
}
