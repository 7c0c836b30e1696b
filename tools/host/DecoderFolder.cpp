#include "tools/host/DecoderFolder.h"

#include "decoders/FindDecoder.h"
#include "support/ModuleFolder.h"
#include "support/Paths.h"
#include "support/XFileFind.h"
#include "tools/host/Console.h"

namespace {

bool FindLibrary(const XString& extension, clZentaroDecoder& decoder) {
    XFileFind scan = ListDecoderLibraries(ModuleFolder(nullptr));
    while (scan.Next()) {
        if (decoder.Load(scan.Path().Text()) && decoder.CreateInstance(nullptr) &&
            decoder.Decodes(extension.Text())) {
            return true;
        }
    }
    return false;
}

} // namespace

bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, FileReport& out) {
    if (!FileExists(fileName)) {
        PrintError(Concat(L"There is no file ", fileName));
        return false;
    }
    const XString extension = GetFileExt(fileName);
    clZentaroDecoder decoder;
    if (!FindLibrary(extension, decoder)) {
        PrintError(Concat(L"No decoder library reads files with the extension ", extension));
        return false;
    }
    const auto report = decoder.Open(fileName.Text(), openFlags);
    if (!report) {
        PrintError(Concat(GetFileName(decoder.LibraryPath()), L" cannot read ", fileName));
        return false;
    }
    out.audioInfo = report->audioInfo;
    out.idTags.assign(report->idTags.begin(), report->idTags.end());
    out.properties.assign(report->properties.begin(), report->properties.end());
    return true;
}
