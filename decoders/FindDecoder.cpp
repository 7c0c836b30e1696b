#include "decoders/FindDecoder.h"

#include "decoders/DecoderCache.h"
#include "support/ModuleFolder.h"
#include "support/Paths.h"
#include "support/XFileFind.h"

#include <utility>

namespace {

bool TryDecoderLibrary(const wchar_t* libraryPath, const XString& extension, clZentaroDecoder& decoder,
                       void* context) {
    if (decoder.Load(libraryPath) && decoder.CreateInstance(context) && decoder.Decodes(extension.Text())) {
        return true;
    }
    decoder.Unload();
    return false;
}

/// Only the name of the cached library counts, so that the cache survives a converter that was moved.
bool TryCachedLibrary(const XString& programFolder, const XString& extension, clZentaroDecoder& decoder,
                      void* context) {
    const XString cached = ReadCacheEntry(extension);
    if (cached.IsEmpty()) {
        return false;
    }
    XString candidate = programFolder.Copy();
    candidate.Append(L"decoder\\");
    candidate.Append(GetFileName(cached));
    return TryDecoderLibrary(candidate.Text(), extension, decoder, context);
}

} // namespace

bool FindDecoderInFolder(const XString& programFolder, const XString& extension, clZentaroDecoder& decoder,
                         void* context) {
    XString pattern = programFolder.Copy();
    EnsureTrailingBackslash(pattern);
    pattern.Append(L"decoder\\*.dll");
    XFileFind scan(std::move(pattern));
    while (scan.Next()) {
        if (!scan.IsFolder() && TryDecoderLibrary(scan.Path().Text(), extension, decoder, context)) {
            return true;
        }
    }
    return false;
}

bool FindDecoderForFile(const XString& fileName, clZentaroDecoder& decoder, void* context) {
    const XString extension = GetFileExt(fileName);
    const XString programFolder = ModuleFolder(nullptr);
    if (!TryCachedLibrary(programFolder, extension, decoder, context) &&
        !FindDecoderInFolder(programFolder, extension, decoder, context)) {
        return false;
    }
    WriteCacheEntry(extension, decoder.LibraryPath());
    return true;
}
