#include "bench/Scene.h"

#include "bench/ImportCounts.h"

#include <cstdio>
#include <stdexcept>

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

std::wstring ProgramFolder() {
    wchar_t path[1000];
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return std::wstring(path, wcsrchr(path, L'\\') + 1);
}

std::wstring TempFolder() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return folder;
}

std::wstring TempFile(const std::wstring& name) {
    return TempFolder() + L"bench-" + name;
}

OwnedFile CreateFileFor(const std::wstring& path) {
    return OwnedFile(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
}

void Write(HANDLE file, const void* data, size_t size) {
    DWORD written = 0;
    WriteFile(file, data, static_cast<DWORD>(size), &written, nullptr);
}

std::string ReadBytes(const std::wstring& path) {
    const OwnedFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    Require(file.IsValid(), "a document is missing");
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    return bytes;
}

Scene::Scene(const Blob& tags) {
    m_bare.converted = TempFile(L"converted.other");
    m_bare.extension = L".other";
    m_bare.decoderPattern = ProgramFolder() + L"decoder\\*.dll";
    SetTags(tags);
}

Scene::Scene(const Blob& tags, const Blob& properties) {
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

void Scene::SetTags(const Blob& tags) {
    m_info.destFileName = m_bare.converted.c_str();
    m_info.sourceAudioInfo = &m_sourceInfo;
    m_info.destIDTags = tags.data();
    m_info.destIDTagsSize = static_cast<uint32_t>(tags.size());
    Write(CreateFileFor(m_bare.converted).Get(), "converted", 9);
}

void Scene::Convert(const PluginInstance& instance, const wchar_t* settings) const {
    const PluginLibrary& plugin = instance.Plugin();
    plugin.beginConversion(instance.Get(), nullptr, settings, nullptr);
    plugin.endConversion(instance.Get());
    plugin.afterConversion(instance.Get(), &m_info);
}

BareConversion Scene::Bare(const std::wstring& writer) const {
    BareConversion bare = m_bare;
    bare.output = TempFile(writer + L".xml");
    return bare;
}

void Scene::CheckCalls(const PluginInstance& instance) const {
    const auto count = [](HMODULE module, const auto& convert) {
        convert(); // fills the registry cache
        const ImportCounts imports(module);
        decoderCalls = 0;
        convert();
        auto calls = imports.Calls();
        calls["decoder libraries"] = static_cast<uint64_t>(decoderCalls);
        return calls;
    };
    const auto plugin = count(GetModuleHandleW(L"WriteMetadataFile.dll"), [&] { Convert(instance); });
    const auto bare =
        count(GetModuleHandleW(nullptr), [bare = Bare(L"bare")] { bare.Run([](HANDLE /*file*/) {}); });
    for (const auto& [name, calls] : plugin) {
        if (calls != bare.at(name)) {
            std::fprintf(stderr, "%s: %d calls by the plug-in, %d by the bare conversion\n", name.c_str(),
                         static_cast<int>(calls), static_cast<int>(bare.at(name)));
        }
    }
    Require(plugin == bare, "the yardsticks do not make the plug-in's calls");
}
