#pragma once

#include "bench/BareConversion.h"
#include "bench/Blobs.h"
#include "metadata/AfterConversionInfo.h"
#include "support/Owner.h"
#include "tools/host/PluginLibrary.h"

#include <string>

/// Throws std::runtime_error with that text unless the condition holds.
void Require(bool condition, const char* what);

/// Folder of the benchmark, with its backslash; the decoder libraries are in "decoder" below it.
std::wstring ProgramFolder();

/// The user's folder for temporary files, with its backslash, and a file of the benchmark's in it.
std::wstring TempFolder();
std::wstring TempFile(const std::wstring& name);

OwnedFile CreateFileFor(const std::wstring& path);
void Write(HANDLE file, const void* data, size_t size);
std::string ReadBytes(const std::wstring& path);

/// What the converter hands over for one kind of conversion, and the system's share of it. The lists stay the
/// caller's.
class Scene {
public:
    /// A document of the host's tags alone: nothing decodes the converted file, and there is no source file.
    explicit Scene(const Blob& tags);

    /// A conversion as it comes: two files, a decoder library for both, and the host's lists.
    Scene(const Blob& tags, const Blob& properties);
    ~Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// The plug-in's document.
    std::wstring Output() const { return TempFile(L"converted.xml"); }

    /// Has the plug-in do all of a conversion, but for the audio.
    void Convert(const PluginInstance& instance, const wchar_t* settings = L"") const;

    /// The same conversion for another writer, into a file of its own.
    BareConversion Bare(const std::wstring& writer) const;

    /// Requires that the plug-in, which is loaded, and the bare conversion make the same calls: otherwise the
    /// ratios mean nothing.
    void CheckCalls(const PluginInstance& instance) const;

private:
    void SetTags(const Blob& tags);

    BareConversion m_bare;
    AudioInfo m_sourceInfo = {};
    AfterConversionInfo m_info = {L"-", nullptr, 0, nullptr, nullptr, 0, nullptr, 0};
};
