#include "metadata/Document.h"

#include "metadata/XmlText.h"
#include "support/Paths.h"

#include <utility>

namespace {

/// The two property lists differ on purpose in what they do with a name that leaves no element name.
enum class NamelessProperty { LeaveOut, Write };

void AddElement(XStringList& lines, const wchar_t* open, const XString& value, const wchar_t* close) {
    XString line;
    line.Reserve(TextSize(open) + value.Size() + TextSize(close) + 1);
    line.Append(open);
    line.Append(value);
    line.Append(close);
    lines.Add(std::move(line));
}

void AddNumber(XStringList& lines, const wchar_t* open, int64_t value, const wchar_t* close) {
    AddElement(lines, open, XString::FromInt64(value), close);
}

/// `name` and `value` come escaped.
void AddEntry(XStringList& lines, const XString& element, const XString& name, const XString& value) {
    constexpr size_t kFrame = 20; // tabs, brackets, the attribute's frame, terminator
    XString line;
    line.Reserve(2 * element.Size() + name.Size() + value.Size() + kFrame);
    line.Append(L"\t\t\t<");
    line.Append(element);
    line.Append(L" name=\"");
    line.Append(name);
    line.Append(L"\">");
    line.Append(value);
    line.Append(L"</");
    line.Append(element);
    line.Append(L">");
    lines.Add(std::move(line));
}

void AddProperties(XStringList& lines, const TagList& properties, NamelessProperty nameless) {
    for (const TagEntry& entry : properties) {
        const XString element = MakeElementName(entry.name);
        const bool hidden = element.At(1) == L'_';
        const bool leftOut = element.IsEmpty() && nameless == NamelessProperty::LeaveOut;
        if (entry.rawData.IsEmpty() && !hidden && !leftOut) {
            AddEntry(lines, element, EscapeXmlText(entry.name), EscapeXmlText(entry.value));
        }
    }
}

void AddTags(XStringList& lines, const TagList& tags) {
    XStringList values;
    for (const TagEntry& entry : tags) {
        if (!entry.rawData.IsEmpty()) {
            continue;
        }
        const XString element = MakeElementName(entry.name);
        const XString name = EscapeXmlText(entry.name);
        SplitValues(values, EscapeXmlText(entry.value));
        for (const XString& value : values) {
            AddEntry(lines, element, name, value);
        }
    }
}

void AddFile(XStringList& lines, const FileFacts& file, NamelessProperty nameless) {
    const FileTexts& texts = file.texts;
    AddElement(lines, L"\t\t<FileName>", EscapeXmlText(texts.name), L"</FileName>");
    AddElement(lines, L"\t\t<FileNameNoExt>", EscapeXmlText(texts.nameNoExt), L"</FileNameNoExt>");
    AddElement(lines, L"\t\t<FileNameExt>", EscapeXmlText(texts.ext), L"</FileNameExt>");
    AddElement(lines, L"\t\t<FileNamePath>", EscapeXmlText(texts.path), L"</FileNamePath>");
    AddNumber(lines, L"\t\t<FileSize>", file.info.fileSize, L"</FileSize>");
    AddNumber(lines, L"\t\t<FileLength>", file.info.length, L"</FileLength>");
    AddNumber(lines, L"\t\t<FileBitrate>", file.info.bitrate, L"</FileBitrate>");
    AddElement(lines, L"\t\t<FileCreated>", texts.created, L"</FileCreated>");
    AddElement(lines, L"\t\t<FileModified>", texts.modified, L"</FileModified>");
    AddElement(lines, L"\t\t<FileAccessed>", texts.accessed, L"</FileAccessed>");
    lines.Add(L"\t\t<AudioProperties>");
    AddProperties(lines, file.properties, nameless);
    lines.Add(L"\t\t</AudioProperties>");
    lines.Add(L"\t\t<AudioFormat>");
    const WaveFormat format(file.info.format);
    AddNumber(lines, L"\t\t\t<Channels>", format.Channels(), L"</Channels>");
    AddNumber(lines, L"\t\t\t<SamplesPerSec>", format.SamplesPerSec(), L"</SamplesPerSec>");
    AddNumber(lines, L"\t\t\t<BitsPerSample>", format.BitsPerSample(), L"</BitsPerSample>");
    AddNumber(lines, L"\t\t\t<AvgBytesPerSec>", format.AvgBytesPerSec(), L"</AvgBytesPerSec>");
    lines.Add(L"\t\t</AudioFormat>");
    lines.Add(L"\t\t<IDTags>");
    AddTags(lines, file.idTags);
    lines.Add(L"\t\t</IDTags>");
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

XStringList BuildDocument(const FileFacts& source, const FileFacts& converted) {
    XStringList lines;
    lines.Add(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    lines.Add(L"<AudioMetadata>");
    lines.Add(L"\t<SourceFile>");
    AddFile(lines, source, NamelessProperty::LeaveOut);
    lines.Add(L"\t</SourceFile>");
    lines.Add(L"\t<ConvertedFile>");
    AddFile(lines, converted, NamelessProperty::Write);
    lines.Add(L"\t</ConvertedFile>");
    lines.Add(L"</AudioMetadata>");
    return lines;
}
