#pragma once

#include "decoders/XDLL.h"
#include "plugin/Exports.h"

/// A plug-in library as the converter sees it: the module and its exports. plugin/Exports.h says what each
/// one does and in what order they are called. The members are null until `Load` succeeds; pointers and
/// instances must not be used after the library is destroyed.
class PluginLibrary {
public:
    /// Loads the library (LoadLibraryW) and binds its exports, once. False when it cannot be loaded or lacks
    /// an export that a conversion needs.
    bool Load(const wchar_t* path);

    /// After a failed Load: the first export that is missing, or null when the library did not load at all.
    const char* MissingExport() const noexcept { return m_missingExport; }

    decltype(DSP_Create)* create = nullptr;
    decltype(DSP_Destroy)* destroy = nullptr;
    decltype(DSP_BeginConversion)* beginConversion = nullptr;
    decltype(DSP_EndConversion)* endConversion = nullptr;
    decltype(DSP_AfterConversion)* afterConversion = nullptr;
    decltype(DSP_Get)* get = nullptr;
    decltype(DSP_Set)* set = nullptr;

    // The converter passes the audio, which the plug-in's own declaration leaves out.
    using PassAudio = int32_t(clDSP_WriteMetadataFile* instance, void* audio, uint32_t byteCount);
    PassAudio* passAudioBlock = nullptr;
    PassAudio* passNonLive = nullptr;

    // The settings panel; both are null in a library without one.
    decltype(DSP_ShowConfigBit)* showConfigBit = nullptr;
    decltype(DSP_RemoveConfigBit)* removeConfigBit = nullptr;

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
    clDSP_WriteMetadataFile* Get() const noexcept { return m_instance; }

private:
    const PluginLibrary* m_plugin;
    clDSP_WriteMetadataFile* m_instance;
};
