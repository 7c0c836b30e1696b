#pragma once

#include "decoders/DecoderRecords.h"
#include "decoders/XDLL.h"
#include "support/XString.h"

#include <optional>
#include <span>

/// What a decoder library reports about a file. The lists are in the library's memory, and end with the
/// instance.
struct DecoderReport {
    AudioInfo audioInfo;
    std::span<const uint8_t> idTags;     ///< TagBlob; empty when there is none
    int32_t idTagByteSize;               ///< of the list, as the library says it; may be negative
    std::span<const uint8_t> properties; ///< TagBlob; empty when there is none
};

/// One decoder library of the converter and at most one instance of its decoder.
/// Destruction destroys the instance, then frees the library.
class clZentaroDecoder {
public:
    clZentaroDecoder() noexcept = default;
    ~clZentaroDecoder() { Unload(); }
    clZentaroDecoder(const clZentaroDecoder&) = delete;
    clZentaroDecoder& operator=(const clZentaroDecoder&) = delete;

    /// Loads a library and binds its exports, in place of the one held before. False, with nothing kept, when
    /// it cannot be loaded or lacks one of the nine exports.
    bool Load(const wchar_t* libraryPath);

    /// Destroys the instance and frees the library.
    void Unload() noexcept;

    /// Makes an instance of the library's decoder, in place of the one held before. The library gets
    /// `context`. False when no library is bound or the library returns null.
    bool CreateInstance(void* context) noexcept;

    /// Calls the library's Destroy, which also closes a file that the instance has opened.
    void DestroyInstance() noexcept;

    /// Whether the library lists the extension (with its dot) under "Decodes", ASCII letters in any case.
    /// Needs an instance.
    bool Decodes(const wchar_t* extension) const noexcept;

    /// Opens a file and returns what `openFlags` (OpenFlags) ask for, and zeros elsewhere. Nothing when the
    /// library fails or there is no instance.
    std::optional<DecoderReport> Open(const wchar_t* fileName, uint32_t openFlags) const noexcept;

    /// Path of the bound library; empty when there is none.
    const XString& LibraryPath() const noexcept { return m_libraryPath; }

private:
    bool Bind() noexcept;

    XDLL m_library;
    XString m_libraryPath;
    void* m_instance = nullptr;
    DecoderCreateFunction* m_create = nullptr;
    DecoderDestroyFunction* m_destroy = nullptr;
    DecoderGetFunction* m_get = nullptr;
    DecoderOpenFunction* m_open = nullptr;
};
