// The document of packed lists of any content, in both encodings, against the plainest way to read, name,
// escape, split and write them.

#include "metadata/Document.h"
#include "support/Utf16Writer.h"
#include "support/Utf8Writer.h"
#include "tests/FileInMemory.h"
#include "tests/Wide.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct PlainEntry {
    std::wstring name, value;
    bool hasRawData = false;
};

class PlainReader {
public:
    PlainReader(const uint8_t* data, size_t size) : m_data(data), m_left(static_cast<int64_t>(size)) {}

    std::vector<PlainEntry> Read() {
        std::vector<PlainEntry> entries;
        int32_t count = 0;
        if (!ReadWord(count)) {
            return entries;
        }
        for (int32_t i = 0; i < count; ++i) {
            int32_t entrySize = 0;
            const int64_t left = m_left;
            if (!ReadWord(entrySize) || entrySize < 0 || entrySize > left) {
                break;
            }
            m_left = entrySize - 4;
            PlainEntry& entry = entries.emplace_back();
            entry.name = entrySize == 5 ? L"" : ReadText();
            if (m_left < 1) {
                break;
            }
            entry.value = ReadText();
            entry.hasRawData = m_left > 0;
            m_data += m_left;
            m_left = left - entrySize;
        }
        return entries;
    }

private:
    bool ReadWord(int32_t& word) {
        if (m_left < 4) {
            return false;
        }
        std::memcpy(&word, m_data, 4);
        m_data += 4;
        m_left -= 4;
        return true;
    }

    std::wstring ReadText() {
        std::wstring text;
        while (m_left >= 2) {
            const wchar_t unit = static_cast<wchar_t>(m_data[0] | m_data[1] << 8);
            m_data += 2;
            m_left -= 2;
            if (unit == 0) {
                break;
            }
            text += unit;
        }
        return text;
    }

    const uint8_t* m_data;
    int64_t m_left;
};

std::wstring Escape(std::wstring text) {
    const std::pair<wchar_t, const wchar_t*> entities[] = {
        {L'&', L"&amp;"}, {L'"', L"&quot;"}, {L'\'', L"&apos;"}, {L'<', L"&lt;"}, {L'>', L"&gt;"}};
    for (const auto& [unit, entity] : entities) {
        for (size_t at = 0; (at = text.find(unit, at)) != std::wstring::npos; ++at) {
            text.replace(at, 1, entity);
        }
    }
    return text;
}

std::wstring ElementName(std::wstring name) {
    std::erase_if(
        name, [](wchar_t unit) { return std::wstring(L"# &\"'<>()/\\:").find(unit) != std::wstring::npos; });
    return name;
}

std::string Utf8(const std::wstring& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            c = 0x10000 + (c - 0xD800) * 0x400 + (text[++i] - 0xDC00u);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr uint32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(kLead[more] | c >> (6 * more));
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6) {
            bytes += static_cast<char>(0x80 | (c >> shift & 0x3F));
        }
    }
    return bytes;
}

using Lines = std::vector<std::wstring>;

void AddElement(Lines& lines, const std::wstring& open, const std::wstring& element,
                const std::wstring& value) {
    lines.push_back(open + L"<" + element + L">" + value + L"</" + element + L">");
}

void AddEntry(Lines& lines, const std::wstring& name, const std::wstring& value) {
    const std::wstring element = ElementName(name);
    lines.push_back(L"\t\t\t<" + element + L" name=\"" + Escape(name) + L"\">" + Escape(value) + L"</" +
                    element + L">");
}

void AddFile(Lines& lines, const FileFacts& file, const std::vector<PlainEntry>& entries, bool isSource) {
    AddElement(lines, L"\t\t", L"FileName", Escape(Wide(file.texts.name)));
    for (const wchar_t* empty : {L"FileNameNoExt", L"FileNameExt", L"FileNamePath"}) {
        AddElement(lines, L"\t\t", empty, L"");
    }
    AddElement(lines, L"\t\t", L"FileSize", std::to_wstring(int64_t{file.info.fileSize}));
    AddElement(lines, L"\t\t", L"FileLength", std::to_wstring(int64_t{file.info.length}));
    AddElement(lines, L"\t\t", L"FileBitrate", std::to_wstring(int32_t{file.info.bitrate}));
    for (const wchar_t* empty : {L"FileCreated", L"FileModified", L"FileAccessed"}) {
        AddElement(lines, L"\t\t", empty, L"");
    }
    lines.push_back(L"\t\t<AudioProperties>");
    for (const PlainEntry& entry : entries) {
        const std::wstring element = ElementName(entry.name);
        if (!entry.hasRawData && element.substr(0, 1) != L"_" && (!element.empty() || !isSource)) {
            AddEntry(lines, entry.name, entry.value);
        }
    }
    lines.push_back(L"\t\t</AudioProperties>");
    lines.push_back(L"\t\t<AudioFormat>");
    const WaveFormat format(file.info.format);
    AddElement(lines, L"\t\t\t", L"Channels", std::to_wstring(format.Channels()));
    AddElement(lines, L"\t\t\t", L"SamplesPerSec", std::to_wstring(format.SamplesPerSec()));
    AddElement(lines, L"\t\t\t", L"BitsPerSample", std::to_wstring(format.BitsPerSample()));
    AddElement(lines, L"\t\t\t", L"AvgBytesPerSec", std::to_wstring(format.AvgBytesPerSec()));
    lines.push_back(L"\t\t</AudioFormat>");
    lines.push_back(L"\t\t<IDTags>");
    for (const PlainEntry& entry : entries) {
        for (size_t at = 0; !entry.hasRawData && !entry.value.empty() && at <= entry.value.size();) {
            const size_t end = std::min(entry.value.find(L'\r', at), entry.value.size());
            AddEntry(lines, entry.name, entry.value.substr(at, end - at));
            at = end + 1;
        }
    }
    lines.push_back(L"\t\t</IDTags>");
}

Lines PlainDocument(const FileFacts& facts, const std::vector<PlainEntry>& entries) {
    Lines lines = {L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", L"<AudioMetadata>", L"\t<SourceFile>"};
    AddFile(lines, facts, entries, true);
    lines.push_back(L"\t</SourceFile>");
    lines.push_back(L"\t<ConvertedFile>");
    AddFile(lines, facts, entries, false);
    lines.push_back(L"\t</ConvertedFile>");
    lines.push_back(L"</AudioMetadata>");
    return lines;
}

} // namespace

/// The input: two bytes that tell how much the writer holds already, and the list. The list's last bytes are
/// an AudioInfo as well.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint16_t ahead = 0;
    if (size < sizeof ahead) {
        return 0;
    }
    std::memcpy(&ahead, data, sizeof ahead);
    data += sizeof ahead;
    size -= sizeof ahead;

    const std::vector<PlainEntry> entries = PlainReader(data, size).Read();
    FileFacts facts;
    facts.properties = ParseTagBlob(data, static_cast<int32_t>(size));
    facts.idTags = facts.properties;
    const size_t infoSize = std::min(size, sizeof facts.info);
    std::memcpy(&facts.info, data + size - infoSize, infoSize);
    facts.texts.name = XString(entries.empty() ? L"" : entries[0].name.c_str());
    const Lines lines = PlainDocument(facts, entries);

    FileInMemory file;
    std::string utf8(ahead % 65000, 'x');
    Utf8Writer out(file);
    out.Append(utf8);
    Document(out).Write(facts, facts);
    out.Flush();
    std::wstring utf16;
    for (const std::wstring& line : lines) {
        utf8 += Utf8(line) + "\r\n";
        utf16 += line;
    }
    Require(file.bytes == utf8, "document in UTF-8");

    Utf16Writer measure(nullptr);
    Document(measure).Write(facts, facts);
    std::wstring stored(measure.Size(), L'?');
    Utf16Writer store(stored.data());
    Document(store).Write(facts, facts);
    Require(stored == utf16, "document in UTF-16");
    return 0;
}
