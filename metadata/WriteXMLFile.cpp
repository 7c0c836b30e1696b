#include "metadata/WriteXMLFile.h"

#include "metadata/Document.h"
#include "metadata/SourceReaders.h"
#include "metadata/TransformDocument.h"
#include "support/Paths.h"
#include "support/Utf8.h"
#include "support/XFileFind.h"

#include <string>

namespace {

constexpr const wchar_t* kScope = L"clDSP_WriteMetadataFile::WriteXMLFile";

/// Source name of a conversion whose source is no file on disk, such as a disc.
constexpr const wchar_t* kNoSourceFile = L"-";

XString OutputPath(const MetadataContext& context, const XString& convertedFile) {
    if (!context.outputName.IsEmpty()) {
        return XString(context.outputName.Text());
    }
    XString path = GetFilePath(convertedFile);
    path.Append(GetFileNameNoExt(convertedFile));
    path.Append(context.outputExtension.IsEmpty() ? L".xml" : context.outputExtension.Text());
    return path;
}

/// Why the plug-in cannot work with this converted file, or null when it can.
const wchar_t* RefusalOf(const XString& convertedFile) {
    const XString extension = GetFileExt(convertedFile);
    if (Compare(extension.Text(), L"._") == 0) {
        return L"Write XML incompatible with option in Platterhawk 'Rip to ._ Files, rename Album at end'";
    }
    if (Compare(extension.Text(), L".IGNORE", 0, true) == 0) {
        return L"Write XML is incompatible with this encoder.";
    }
    return nullptr;
}

void ReadTimes(FileTexts& texts, const MetadataContext& context, const XString& fileName) {
    texts.created = GetFormattedFileDateTime(context, fileName, FileTime::Created);
    texts.modified = GetFormattedFileDateTime(context, fileName, FileTime::Modified);
    texts.accessed = GetFormattedFileDateTime(context, fileName, FileTime::Accessed);
}

/// Reads what the host does not supply, copies what it does, and builds the document.
XStringList GatherDocument(const MetadataContext& context, const AfterConversionInfo& info,
                           const XString& sourceFile, const XString& convertedFile) {
    const bool hasSourceFile = Compare(sourceFile.Text(), kNoSourceFile) != 0;
    FileFacts source;
    FileFacts converted;
    ByteBuffer list;

    GetAudioInfo(context, convertedFile, converted.info);
    GetAudioProperties(context, convertedFile, list);
    ParseTagBlob(converted.properties, list.Data(), static_cast<int32_t>(list.Size()));
    if (hasSourceFile) {
        ByteBuffer tags;
        GetIDTags(context, sourceFile, tags);
        ParseTagBlob(source.idTags, tags.Data(), static_cast<int32_t>(tags.Size()));
    }
    // Sizes of 2 GiB and more turn negative here and count as no list.
    ParseTagBlob(converted.idTags, info.destIDTags, static_cast<int32_t>(info.destIDTagsSize));
    ParseTagBlob(source.properties, info.sourceAudioProperties,
                 static_cast<int32_t>(info.sourceAudioPropertiesSize));
    if (info.sourceAudioInfo != nullptr) {
        source.info = *info.sourceAudioInfo;
    }

    if (hasSourceFile) {
        source.texts = SplitFileTexts(sourceFile);
        ReadTimes(source.texts, context, sourceFile);
    }
    converted.texts = SplitFileTexts(convertedFile);
    ReadTimes(converted.texts, context, convertedFile);
    return BuildDocument(source, converted);
}

std::string RenderUtf8(const XStringList& lines) {
    std::string bytes;
    size_t units = 0;
    for (const XString& line : lines) {
        units += line.Length() + 1;
    }
    bytes.reserve(units);
    for (const XString& line : lines) {
        AppendUtf8(bytes, line);
        bytes.append("\r\n");
    }
    return bytes;
}

/// A file that cannot be opened or written is passed over in silence.
void ReplaceFile(XFile& file, const XString& path, const void* data, size_t size) {
    if (file.Open(path, GENERIC_WRITE, CREATE_ALWAYS)) {
        file.Write(data, size);
        file.Close();
    }
}

} // namespace

int32_t WriteXMLFile(const MetadataContext& context, const AfterConversionInfo& info, bool transform) {
    Log(kEnter, context.log, kScope);
    const XString sourceFile(info.sourceFileName);
    const XString convertedFile(info.destFileName);
    if (const wchar_t* refusal = RefusalOf(convertedFile); refusal != nullptr) {
        LogError(refusal, context.log, nullptr);
        return 0;
    }
    const XString outputPath = OutputPath(context, convertedFile);
    Log(outputPath.Text(), context.log, kScope);

    // All is made before the output file is opened: running out of memory must not cost an existing one.
    const XStringList lines = GatherDocument(context, info, sourceFile, convertedFile);
    if (transform) {
        ByteBuffer transformed;
        if (FileExists(context.xsltFile) &&
            !TransformDocument(context.log, kScope, lines, context.xsltFile, transformed)) {
            return 0;
        }
        ReplaceFile(context.outputFile, outputPath, transformed.Data(), transformed.Size());
    } else {
        const std::string document = RenderUtf8(lines);
        ReplaceFile(context.outputFile, outputPath, document.data(), document.size());
    }
    Log(kLeave, context.log, kScope);
    return 1;
}
