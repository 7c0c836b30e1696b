#include "metadata/Document.h"

#include "metadata/WaveFormat.h"
#include "metadata/XmlText.h"
#include "support/Paths.h"

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace {

constexpr std::string_view kInFile = "\t\t<";
constexpr std::string_view kInFormat = "\t\t\t<";

/// The two property lists differ on purpose in what they do with a name whose element name is empty.
enum class NamelessProperty { LeaveOut, Write };

void BeginElement(XmlWriter& out, std::string_view open, std::string_view element) {
    out.Append(open);
    out.Append(element);
    out.Append(">");
}

void EndElement(XmlWriter& out, std::string_view element) {
    out.Append("</");
    out.Append(element);
    out.AppendLine(">");
}

void WriteText(XmlWriter& out, std::string_view open, std::string_view element, Utf16View text) {
    BeginElement(out, open, element);
    out.AppendEscaped(text);
    EndElement(out, element);
}

void WriteNumber(XmlWriter& out, std::string_view open, std::string_view element, int64_t number) {
    char digits[20]; // 19 digits and a sign
    const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), number);
    BeginElement(out, open, element);
    out.Append(std::string_view(digits, static_cast<size_t>(end.ptr - digits)));
    EndElement(out, element);
}

void WriteEntry(XmlWriter& out, Utf16View name, Utf16View value) {
    out.Append("\t\t\t<");
    out.AppendElementName(name);
    out.Append(" name=\"");
    out.AppendEscaped(name);
    out.Append("\">");
    out.AppendEscaped(value);
    out.Append("</");
    out.AppendElementName(name);
    out.AppendLine(">");
}

void WriteProperties(XmlWriter& out, const TagList& properties, NamelessProperty nameless) {
    for (const TagEntry& entry : properties) {
        const wchar_t first = FirstOfElementName(entry.name);
        const bool isLeftOut = first == L'_' || (first == 0 && nameless == NamelessProperty::LeaveOut);
        if (entry.rawData.empty() && !isLeftOut) {
            WriteEntry(out, entry.name, entry.value);
        }
    }
}

void WriteTags(XmlWriter& out, const TagList& tags) {
    for (const TagEntry& entry : tags) {
        if (entry.rawData.empty()) {
            SplitValues values(entry.value);
            for (Utf16View value; values.Next(value);) {
                WriteEntry(out, entry.name, value);
            }
        }
    }
}

void WriteFacts(XmlWriter& out, const FileFacts& file, NamelessProperty nameless) {
    const FileTexts& texts = file.texts;
    WriteText(out, kInFile, "FileName", texts.name);
    WriteText(out, kInFile, "FileNameNoExt", texts.nameNoExt);
    WriteText(out, kInFile, "FileNameExt", texts.ext);
    WriteText(out, kInFile, "FileNamePath", texts.path);
    WriteNumber(out, kInFile, "FileSize", file.info.fileSize);
    WriteNumber(out, kInFile, "FileLength", file.info.length);
    WriteNumber(out, kInFile, "FileBitrate", file.info.bitrate);
    WriteText(out, kInFile, "FileCreated", texts.created);
    WriteText(out, kInFile, "FileModified", texts.modified);
    WriteText(out, kInFile, "FileAccessed", texts.accessed);
    out.AppendLine("\t\t<AudioProperties>");
    WriteProperties(out, file.properties, nameless);
    out.AppendLine("\t\t</AudioProperties>");
    out.AppendLine("\t\t<AudioFormat>");
    const AudioFormat& format = file.info.format;
    WriteNumber(out, kInFormat, "Channels", format.nChannels);
    WriteNumber(out, kInFormat, "SamplesPerSec", static_cast<int32_t>(format.nSamplesPerSec));
    WriteNumber(out, kInFormat, "BitsPerSample", format.wBitsPerSample);
    WriteNumber(out, kInFormat, "AvgBytesPerSec", static_cast<int32_t>(ByteRate(format)));
    out.AppendLine("\t\t</AudioFormat>");
    out.AppendLine("\t\t<IDTags>");
    WriteTags(out, file.idTags);
    out.AppendLine("\t\t</IDTags>");
}

} // namespace

FileTexts SplitFileTexts(const XString& path) {
    FileTexts texts;
    texts.name = GetFileName(path);
    texts.nameNoExt = GetFileNameNoExt(path);
    texts.ext = GetFileExt(path);
    texts.path = GetFilePath(path);
    return texts;
}

void WriteDocument(XmlWriter& out, const FileFacts& source, const FileFacts& converted) {
    out.AppendLine("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    out.AppendLine("<AudioMetadata>");
    out.AppendLine("\t<SourceFile>");
    WriteFacts(out, source, NamelessProperty::LeaveOut);
    out.AppendLine("\t</SourceFile>");
    out.AppendLine("\t<ConvertedFile>");
    WriteFacts(out, converted, NamelessProperty::Write);
    out.AppendLine("\t</ConvertedFile>");
    out.AppendLine("</AudioMetadata>");
    out.Flush();
}
