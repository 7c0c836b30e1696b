#pragma once

#include "metadata/TagList.h"
#include "metadata/WaveFormat.h"
#include "metadata/XmlText.h"
#include "support/XString.h"

#include <charconv>
#include <iterator>
#include <string_view>

/// Texts of one file for the document, unescaped. All are empty when there is no such file on disk.
struct FileTexts {
    XString name;
    XString nameNoExt;
    XString ext;
    XString path;
    XString created;
    XString modified;
    XString accessed;
};

/// All that the document says of one file. The lists stand where they came from.
struct FileFacts {
    FileTexts texts;
    AudioInfo info = {};
    TagList properties;
    TagList idTags;
};

/// Name and folder parts of a path; the times stay empty.
FileTexts SplitFileTexts(const XString& path);

/// Writes the metadata document line by line, in one pass over the facts, to a Utf8Writer or a Utf16Writer.
/// Takes no memory. Pure code.
template<class Writer>
class Document {
public:
    explicit Document(Writer& out) noexcept : m_out(out) {}

    void Write(const FileFacts& source, const FileFacts& converted) {
        m_out.AppendLine("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        m_out.AppendLine("<AudioMetadata>");
        m_out.AppendLine("\t<SourceFile>");
        WriteFacts(source, NamelessProperty::LeaveOut);
        m_out.AppendLine("\t</SourceFile>");
        m_out.AppendLine("\t<ConvertedFile>");
        WriteFacts(converted, NamelessProperty::Write);
        m_out.AppendLine("\t</ConvertedFile>");
        m_out.AppendLine("</AudioMetadata>");
    }

private:
    /// The two property lists differ on purpose in what they do with a name that leaves no element name.
    enum class NamelessProperty { LeaveOut, Write };

    static constexpr std::string_view kFact = "\t\t<";
    static constexpr std::string_view kFormatFact = "\t\t\t<";

    void WriteFacts(const FileFacts& file, NamelessProperty nameless) {
        const FileTexts& texts = file.texts;
        Element(kFact, "FileName", texts.name);
        Element(kFact, "FileNameNoExt", texts.nameNoExt);
        Element(kFact, "FileNameExt", texts.ext);
        Element(kFact, "FileNamePath", texts.path);
        Element(kFact, "FileSize", file.info.fileSize);
        Element(kFact, "FileLength", file.info.length);
        Element(kFact, "FileBitrate", file.info.bitrate);
        Element(kFact, "FileCreated", texts.created);
        Element(kFact, "FileModified", texts.modified);
        Element(kFact, "FileAccessed", texts.accessed);
        m_out.AppendLine("\t\t<AudioProperties>");
        WriteProperties(file.properties, nameless);
        m_out.AppendLine("\t\t</AudioProperties>");
        m_out.AppendLine("\t\t<AudioFormat>");
        const WaveFormat format(file.info.format);
        Element(kFormatFact, "Channels", format.Channels());
        Element(kFormatFact, "SamplesPerSec", format.SamplesPerSec());
        Element(kFormatFact, "BitsPerSample", format.BitsPerSample());
        Element(kFormatFact, "AvgBytesPerSec", format.AvgBytesPerSec());
        m_out.AppendLine("\t\t</AudioFormat>");
        m_out.AppendLine("\t\t<IDTags>");
        WriteTags(file.idTags);
        m_out.AppendLine("\t\t</IDTags>");
    }

    void WriteProperties(const TagList& properties, NamelessProperty nameless) {
        for (const TagEntry& entry : properties) {
            const wchar_t first = FirstOfElementName(entry.name);
            const bool leftOut = first == L'_' || (first == 0 && nameless == NamelessProperty::LeaveOut);
            if (entry.rawData.empty() && !leftOut) {
                Opening opening;
                WriteEntry(opening, entry.name, entry.value);
            }
        }
    }

    void WriteTags(const TagList& tags) {
        for (const TagEntry& entry : tags) {
            if (entry.rawData.empty()) {
                Opening opening;
                SplitValues values(entry.value);
                for (Utf16View value; values.Next(value);) {
                    WriteEntry(opening, entry.name, value);
                }
            }
        }
    }

    /// Where the text before an entry's value stands, and the element name in it.
    struct Opening {
        size_t begin = 0;
        size_t nameBegin = 0;
        size_t nameEnd = 0;
        size_t end = 0;
    };

    /// Repeats what the line before has already: an entry may have very many values.
    void WriteEntry(Opening& opening, Utf16View name, Utf16View value) {
        if (!m_out.Repeat(opening.begin, opening.end)) {
            opening.begin = m_out.Position();
            m_out.Append("\t\t\t<");
            opening.nameBegin = m_out.Position();
            MakeElementName(m_out, name);
            opening.nameEnd = m_out.Position();
            m_out.Append(" name=\"");
            EscapeXmlText(m_out, name);
            m_out.Append("\">");
            opening.end = m_out.Position();
        }
        EscapeXmlText(m_out, value);
        m_out.Append("</");
        if (!m_out.Repeat(opening.nameBegin, opening.nameEnd)) {
            MakeElementName(m_out, name);
        }
        m_out.AppendLine(">");
    }

    void Element(std::string_view open, std::string_view element, Utf16View text) {
        Begin(open, element);
        EscapeXmlText(m_out, text);
        End(element);
    }

    void Element(std::string_view open, std::string_view element, int64_t number) {
        char digits[20]; // 19 digits and a sign
        const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), number);
        Begin(open, element);
        m_out.Append(std::string_view(digits, static_cast<size_t>(end.ptr - digits)));
        End(element);
    }

    void Begin(std::string_view open, std::string_view element) {
        m_out.Append(open);
        m_out.Append(element);
        m_out.Append(">");
    }

    void End(std::string_view element) {
        m_out.Append("</");
        m_out.Append(element);
        m_out.AppendLine(">");
    }

    Writer& m_out;
};
