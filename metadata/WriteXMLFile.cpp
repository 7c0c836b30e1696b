#include "metadata/WriteXMLFile.h"

#include "metadata/Document.h"
#include "metadata/SourceReaders.h"
#include "metadata/TransformDocument.h"
#include "support/Paths.h"
#include "support/Utf16Writer.h"
#include "support/Utf8Writer.h"
#include "support/XFileFind.h"

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

/// What the document is made of, with the memory of the lists that the readers fetched.
struct Facts {
    FileFacts source;
    FileFacts converted;
    ByteBuffer sourceTags;
    ByteBuffer convertedProperties;
};

TagList ListIn(const ByteBuffer& list) noexcept {
    return ParseTagBlob(list.Data(), static_cast<int32_t>(list.Size()));
}

/// Reads what the host does not supply, and takes what it does from its record.
void Gather(Facts& facts, const MetadataContext& context, const AfterConversionInfo& info,
            const XString& sourceFile, const XString& convertedFile) {
    FileFacts& source = facts.source;
    FileFacts& converted = facts.converted;
    const bool hasSourceFile = Compare(sourceFile.Text(), kNoSourceFile) != 0;

    GetAudioInfo(context, convertedFile, converted.info);
    GetAudioProperties(context, convertedFile, facts.convertedProperties);
    converted.properties = ListIn(facts.convertedProperties);
    if (hasSourceFile) {
        GetIDTags(context, sourceFile, facts.sourceTags);
        source.idTags = ListIn(facts.sourceTags);
    }
    // Sizes of 2 GiB and more turn negative here and count as no list.
    converted.idTags = ParseTagBlob(info.destIDTags, static_cast<int32_t>(info.destIDTagsSize));
    source.properties =
        ParseTagBlob(info.sourceAudioProperties, static_cast<int32_t>(info.sourceAudioPropertiesSize));
    if (info.sourceAudioInfo != nullptr) {
        source.info = *info.sourceAudioInfo;
    }

    if (hasSourceFile) {
        source.texts = SplitFileTexts(sourceFile);
        ReadTimes(source.texts, context, sourceFile);
    }
    converted.texts = SplitFileTexts(convertedFile);
    ReadTimes(converted.texts, context, convertedFile);
}

/// A file that cannot be opened or written is passed over in silence.
void WriteDocument(XFile& file, const XString& path, const Facts& facts) {
    // It takes its memory before the file is opened: running out of it must not cost an existing file.
    Utf8Writer<XFile> out(file);
    if (file.Open(path, GENERIC_WRITE, CREATE_ALWAYS)) {
        Document(out).Write(facts.source, facts.converted);
        out.Flush();
        file.Close();
    }
}

/// The document as one text, with nothing between its lines.
Bstr JoinDocument(const Facts& facts) {
    Utf16Writer measure(nullptr);
    Document(measure).Write(facts.source, facts.converted);
    Bstr text(measure.Position());
    Utf16Writer store(text.Get());
    Document(store).Write(facts.source, facts.converted);
    return text;
}

/// As WriteDocument, with bytes that are there already.
void ReplaceFile(XFile& file, const XString& path, const ByteBuffer& bytes) {
    if (file.Open(path, GENERIC_WRITE, CREATE_ALWAYS)) {
        file.Write(bytes.Data(), bytes.Size());
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

    Facts facts;
    Gather(facts, context, info, sourceFile, convertedFile);
    if (transform) {
        ByteBuffer transformed;
        if (FileExists(context.xsltFile) &&
            !TransformDocument(context.log, kScope, JoinDocument(facts), context.xsltFile, transformed)) {
            return 0;
        }
        ReplaceFile(context.outputFile, outputPath, transformed);
    } else {
        WriteDocument(context.outputFile, outputPath, facts);
    }
    Log(kLeave, context.log, kScope);
    return 1;
}
