#pragma once

#include "decoders/XDLL.h"
#include "metadata/AfterConversionInfo.h"
#include "support/DebugLog.h"

#include <windows.h>

#include <cstdint>

/// A plug-in library as the converter sees it: the module and its exports. plugin/Exports.h tells what each
/// one does and in what order they are called. The members are null until `Load` succeeds; pointers and
/// instances must not be used after the library's end.
class PluginLibrary {
public:
    using Instance = void*;

    /// Loads the library (LoadLibraryW) and binds its exports, once. False when it cannot be loaded or lacks
    /// an export that a conversion needs.
    bool Load(const wchar_t* path);

    /// After a failed Load: the first export that is missing, or null when the library did not load at all.
    const char* MissingExport() const noexcept { return m_missingExport; }

    Instance (*create)(const CreateRecord* record) = nullptr;
    int32_t (*destroy)(Instance instance) = nullptr;
    int32_t (*beginConversion)(Instance instance, void*, const wchar_t* settings, void*) = nullptr;
    int32_t (*endConversion)(Instance instance) = nullptr;
    int32_t (*afterConversion)(Instance instance, const AfterConversionInfo* info) = nullptr;
    int32_t (*passAudioBlock)(Instance instance, void* audio, uint32_t byteCount) = nullptr;
    int32_t (*passNonLive)(Instance instance, void* audio, uint32_t byteCount) = nullptr;
    int32_t (*get)(Instance instance, const wchar_t* key) = nullptr;
    int32_t (*set)(Instance instance, const wchar_t* key) = nullptr;

    // The settings panel; both are null in a library without one.
    HWND(*showConfigBit)
    (Instance instance, HWND parent, int32_t x, int32_t y, const wchar_t* settings) = nullptr;
    const wchar_t* (*removeConfigBit)(Instance instance, int64_t mode) = nullptr;

private:
    template<class Function>
    void Bind(Function*& function, const char* name, bool needed);

    XDLL m_library;
    const char* m_missingExport = nullptr;
};

/// Owns one instance of a plug-in; the library must outlive it.
class PluginInstance {
public:
    PluginInstance(const PluginLibrary& plugin, const CreateRecord& record)
        : m_plugin(&plugin), m_instance(plugin.create(&record)) {}
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;
    ~PluginInstance() { m_plugin->destroy(m_instance); }

    const PluginLibrary& Plugin() const noexcept { return *m_plugin; }
    PluginLibrary::Instance Get() const noexcept { return m_instance; }

private:
    const PluginLibrary* m_plugin;
    PluginLibrary::Instance m_instance;
};
