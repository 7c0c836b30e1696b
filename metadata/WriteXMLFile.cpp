#include "metadata/WriteXMLFile.h"

#include "metadata/Document.h"
#include "metadata/SourceReaders.h"
#include "metadata/TransformDocument.h"
#include "support/DebugLog.h"
#include "support/Paths.h"
#include "support/Utf8.h"
#include "support/XFile.h"
#include "support/XFileFind.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr const wchar_t* kScope = L"clDSP_WriteMetadataFile::WriteXMLFile";

/// Source name of a conversion whose source is no file on disk, such as a disc.
constexpr const wchar_t* kNoSourceFile = L"-";

XString OutputPath(const MetadataContext& context, const XString& convertedFile) {
    if (!context.outputName.IsEmpty()) {
        return context.outputName.Copy();
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
struct Content {
    FileFacts source;
    FileFacts converted;
    std::vector<uint8_t> sourceTags;
    std::vector<uint8_t> convertedProperties;
};

TagList ListIn(const std::vector<uint8_t>& list) noexcept {
    return ParseTagBlob(list.data(), static_cast<int32_t>(list.size()));
}

/// Takes the facts that the host supplies from its record, and reads the others.
void Gather(Content& content, const MetadataContext& context, const AfterConversionInfo& info,
            const XString& sourceFile, const XString& convertedFile) {
    FileFacts& source = content.source;
    FileFacts& converted = content.converted;
    const bool hasSourceFile = Compare(sourceFile.Text(), kNoSourceFile) != 0;

    GetAudioInfo(context, convertedFile, converted.info);
    GetAudioProperties(context, convertedFile, content.convertedProperties);
    converted.properties = ListIn(content.convertedProperties);
    if (hasSourceFile) {
        GetIDTags(context, sourceFile, content.sourceTags);
        source.idTags = ListIn(content.sourceTags);
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

/// Replaces the file by the document in UTF-8. A file that cannot be opened or written is not reported.
void WriteDocumentFile(const XString& path, const Content& content) {
    // All memory is taken before the file is opened: running out of it must not cost an existing file.
    constexpr size_t kMaxHeld = 262'144; // few writes, and within a processor's second cache
    static_assert(XmlWriter::kChunkSize * kMaxUtf8Bytes <= kMaxHeld);
    const std::unique_ptr<char[]> bytes(new char[kMaxHeld]);
    size_t held = 0;
    XFile file;
    bool hasFailed = false;
    const auto write = [&] {
        // Nothing follows bytes that could not be written, so that the file holds the document's beginning.
        hasFailed = hasFailed || !file.Write(bytes.get(), held);
        held = 0;
    };
    XmlWriter out("\r\n", [&](std::wstring_view chunk) {
        if (kMaxHeld - held < chunk.size() * kMaxUtf8Bytes) {
            write();
        }
        held += EncodeUtf8(chunk, {bytes.get() + held, kMaxHeld - held});
    });
    if (file.Open(path, GENERIC_WRITE, CREATE_ALWAYS)) {
        WriteDocument(out, content.source, content.converted);
        write();
    }
}

/// The document as one text, with nothing between its lines.
Bstr JoinDocument(const Content& content) {
    std::vector<XString> chunks; // takes an eighth of the time of one text that grows
    size_t size = 0;
    XmlWriter out("", [&](std::wstring_view chunk) {
        chunks.emplace_back(chunk.data(), chunk.size());
        size += chunk.size();
    });
    WriteDocument(out, content.source, content.converted);
    Bstr text(size);
    wchar_t* end = text.Get();
    for (const XString& chunk : chunks) {
        end = std::copy_n(chunk.Text(), chunk.Size(), end);
    }
    return text;
}

/// As WriteDocumentFile, with the bytes of the transformed document.
void ReplaceFile(const XString& path, const std::vector<uint8_t>& bytes) {
    XFile file;
    if (file.Open(path, GENERIC_WRITE, CREATE_ALWAYS)) {
        file.Write(bytes.data(), bytes.size());
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

    Content content;
    Gather(content, context, info, sourceFile, convertedFile);
    if (transform) {
        std::vector<uint8_t> transformed;
        if (FileExists(context.xsltFile) &&
            !TransformDocument(context.log, kScope, JoinDocument(content), context.xsltFile, transformed)) {
            return 0;
        }
        ReplaceFile(outputPath, transformed);
    } else {
        WriteDocumentFile(outputPath, content);
    }
    Log(kLeave, context.log, kScope);
    return 1;
}
