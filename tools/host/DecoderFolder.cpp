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

void CopyList(ByteBuffer& out, const void* list, int32_t size) {
    if (list != nullptr && size > 0) {
        out.Assign(list, static_cast<uint32_t>(size));
    }
}

} // namespace

bool ReadWithDecoder(const XString& fileName, uint32_t openFlags, DecoderReport& report) {
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
    DecoderOpenRecord record = {};
    record.fileName = fileName.Text();
    record.openFlags = openFlags;
    if (!decoder.Open(record)) {
        PrintError(Concat(GetFileName(decoder.LibraryPath()), L" cannot read ", fileName));
        return false;
    }
    report.audioInfo = record.audioInfo;
    CopyList(report.idTags, record.IDTagData, record.IDTagByteSize);
    CopyList(report.audioProperties, record.propertyData, record.propertyByteSize);
    return true;
}
