#pragma once

#include "plugin/Exports.h"
#include "support/Owner.h"

#include "tests/shared/Files.h"
#include "tests/shared/TagBlob.h"

#include <string>

/// The built plug-in, loaded for as long as the object lives. What the library keeps for the whole process,
/// such as the depth of the trace, begins anew with each first load.
class LoadedPlugin {
public:
    static constexpr const wchar_t* kPath = L"..\\..\\dist\\WriteMetadataFile.dll";

    LoadedPlugin() : m_module(LoadLibraryW(kPath)) { EXPECT_TRUE(m_module.IsValid()) << GetLastError(); }

private:
    OwnedModule m_module;
};

/// An export of the plug-in, which must be loaded.
template<class Function>
Function* PluginExport(const char* name) {
    auto* address = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"WriteMetadataFile.dll"), name));
    EXPECT_NE(address, nullptr) << name;
    return reinterpret_cast<Function*>(address);
}

/// Calls an export by its declaration: `CALL_PLUGIN(DSP_Get, instance, L"IsLive")`.
#define CALL_PLUGIN(name, ...) (PluginExport<decltype(name)>(#name)(__VA_ARGS__))

/// One instance of the plug-in with its trace and errors in files, and a folder for what it reads and writes.
class PluginInstance {
public:
    ~PluginInstance() {
        if (m_instance != nullptr) {
            Destroy();
        }
    }

    void Destroy() { EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, std::exchange(m_instance, nullptr)), 1); }

    clDSP_WriteMetadataFile* Instance() const { return m_instance; }
    const TempFolder& Folder() const { return m_folder; }

    /// The host's end of the trace.
    HANDLE TraceHandle() const { return m_trace.Get(); }

    /// The trace since the last call.
    std::wstring Trace() { return Since(m_tracePath, m_traceSeen); }

    /// The error lines since the last call.
    std::wstring Errors() { return Since(m_errorPath, m_errorsSeen); }

    /// BeginConversion and AfterConversion with what the host would pass.
    void Convert(const std::wstring& settings, const AfterConversionInfo& info) {
        EXPECT_EQ(CALL_PLUGIN(DSP_BeginConversion, m_instance, nullptr, settings.c_str(), nullptr), 1);
        EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, m_instance), 1);
        EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, m_instance, &info), 1);
    }

private:
    static std::wstring Since(const std::wstring& path, size_t& seen) {
        const std::wstring fresh = ReadUtf16(path).substr(seen);
        seen += fresh.size();
        return fresh;
    }

    LoadedPlugin m_plugin;
    TempFolder m_folder;
    std::wstring m_tracePath = m_folder.Path(L"trace.log");
    std::wstring m_errorPath = m_folder.Path(L"errors.log");
    OwnedFile m_trace = CreateTestFile(m_tracePath);
    OwnedFile m_errors = CreateTestFile(m_errorPath);
    size_t m_traceSeen = 0;
    size_t m_errorsSeen = 0;
    CreateRecord m_record = {m_errors.Get(), nullptr, m_trace.Get()};
    clDSP_WriteMetadataFile* m_instance = CALL_PLUGIN(DSP_Create, &m_record);
};
