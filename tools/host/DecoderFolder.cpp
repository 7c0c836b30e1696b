#include "tools/host/DecoderFolder.h"

#include "decoders/FindDecoder.h"
#include "support/ModuleFolder.h"
#include "support/Paths.h"
#include "support/XFileFind.h"
#include "tools/host/Console.h"

bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, clZentaroDecoder& decoder,
                     DecoderReport& report) {
    if (!FileExists(fileName)) {
        PrintError(Concat(L"There is no file ", fileName));
        return false;
    }
    const XString extension = GetFileExt(fileName);
    if (!FindDecoderInFolder(ModuleFolder(nullptr), extension, decoder, nullptr)) {
        PrintError(Concat(L"No decoder library reads files with the extension ", extension));
        return false;
    }
    const auto opened = decoder.Open(fileName.Text(), openFlags);
    if (!opened) {
        PrintError(Concat(GetFileName(decoder.LibraryPath()), L" cannot read ", fileName));
        return false;
    }
    report = *opened;
    return true;
}
