#pragma once

#include "metadata/WaveFormat.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

// The document made in the plainest way: a list is read into strings of its own, which are named, escaped,
// split and joined one at a time.

struct PlainEntry {
    std::wstring name, value;
    bool hasRawData = false;
};
using PlainList = std::vector<PlainEntry>;

struct PlainFile {
    std::wstring name, nameNoExt, ext, path, created, modified, accessed;
    AudioInfo info = {};
    PlainList properties, idTags;
};

inline PlainList ReadPlainly(const uint8_t* data, int64_t size) {
    int64_t at = 0;
    const auto readWord = [&] {
        int32_t word = 0;
        std::memcpy(&word, data + at, sizeof word);
        at += 4;
        return word;
    };
    const auto readText = [&](int64_t end) {
        std::wstring text;
        while (end - at >= 2) {
            const wchar_t unit = static_cast<wchar_t>(data[at] | data[at + 1] << 8);
            at += 2;
            if (unit == 0) {
                break;
            }
            text += unit;
        }
        return text;
    };
    PlainList list;
    const int32_t count = size < 5 ? 0 : readWord();
    while (static_cast<int64_t>(list.size()) < count && size - at >= 4) {
        const int64_t begin = at;
        const int32_t entrySize = readWord();
        const int64_t end = begin + entrySize;
        if (entrySize < 0 || end > size) {
            break;
        }
        PlainEntry& entry = list.emplace_back();
        entry.name = entrySize == 5 ? L"" : readText(end);
        if (end - at < 1) {
            break;
        }
        entry.value = readText(end);
        entry.hasRawData = at < end;
        at = end;
    }
    return list;
}

inline std::wstring Escaped(std::wstring text) {
    const std::pair<wchar_t, const wchar_t*> entities[] = {
        {L'&', L"&amp;"}, {L'"', L"&quot;"}, {L'\'', L"&apos;"}, {L'<', L"&lt;"}, {L'>', L"&gt;"}};
    for (const auto& [unit, entity] : entities) {
        for (size_t at = 0; (at = text.find(unit, at)) != std::wstring::npos; ++at) {
            text.replace(at, 1, entity);
        }
    }
    return text;
}

inline std::wstring ElementName(std::wstring name) {
    const std::wstring leftOut = L"# &\"'<>()/\\:";
    std::erase_if(name, [&](wchar_t unit) { return leftOut.find(unit) != std::wstring::npos; });
    return name;
}

inline std::string PlainUtf8(const std::wstring& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            c = 0x10000 + (c - 0xD800) * 0x400 + (text[++i] - 0xDC00u);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        constexpr uint32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
        const int tail = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        bytes += static_cast<char>(kLead[tail] | c >> (6 * tail));
        for (int rest = tail - 1; rest >= 0; --rest) {
            bytes += static_cast<char>(0x80 | (c >> (6 * rest) & 0x3F));
        }
    }
    return bytes;
}

/// The document's lines, without ends.
inline std::vector<std::wstring> PlainDocument(const PlainFile& source, const PlainFile& converted) {
    std::vector<std::wstring> lines = {L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", L"<AudioMetadata>"};
    const auto add = [&](const std::wstring& open, const std::wstring& element, const std::wstring& value) {
        lines.push_back(open + L"<" + element + L">" + value + L"</" + element + L">");
    };
    const auto addEntry = [&](const std::wstring& name, const std::wstring& value) {
        const std::wstring element = ElementName(name);
        lines.push_back(L"\t\t\t<" + element + L" name=\"" + Escaped(name) + L"\">" + Escaped(value) + L"</" +
                        element + L">");
    };
    for (const bool isSource : {true, false}) {
        const PlainFile& file = isSource ? source : converted;
        const std::wstring section = isSource ? L"SourceFile>" : L"ConvertedFile>";
        lines.push_back(L"\t<" + section);
        add(L"\t\t", L"FileName", Escaped(file.name));
        add(L"\t\t", L"FileNameNoExt", Escaped(file.nameNoExt));
        add(L"\t\t", L"FileNameExt", Escaped(file.ext));
        add(L"\t\t", L"FileNamePath", Escaped(file.path));
        add(L"\t\t", L"FileSize", std::to_wstring(int64_t{file.info.fileSize}));
        add(L"\t\t", L"FileLength", std::to_wstring(int64_t{file.info.length}));
        add(L"\t\t", L"FileBitrate", std::to_wstring(int32_t{file.info.bitrate}));
        add(L"\t\t", L"FileCreated", file.created);
        add(L"\t\t", L"FileModified", file.modified);
        add(L"\t\t", L"FileAccessed", file.accessed);
        lines.push_back(L"\t\t<AudioProperties>");
        for (const PlainEntry& entry : file.properties) {
            const std::wstring element = ElementName(entry.name);
            if (!entry.hasRawData && element.substr(0, 1) != L"_" &&
                (!element.empty() || !isSource)) {
                addEntry(entry.name, entry.value);
            }
        }
        lines.push_back(L"\t\t</AudioProperties>");
        lines.push_back(L"\t\t<AudioFormat>");
        const WaveFormat format(file.info.format);
        add(L"\t\t\t", L"Channels", std::to_wstring(format.Channels()));
        add(L"\t\t\t", L"SamplesPerSec", std::to_wstring(format.SamplesPerSec()));
        add(L"\t\t\t", L"BitsPerSample", std::to_wstring(format.BitsPerSample()));
        add(L"\t\t\t", L"AvgBytesPerSec", std::to_wstring(format.AvgBytesPerSec()));
        lines.push_back(L"\t\t</AudioFormat>");
        lines.push_back(L"\t\t<IDTags>");
        for (const PlainEntry& entry : file.idTags) {
            for (size_t at = 0; !entry.hasRawData && !entry.value.empty() && at <= entry.value.size();) {
                const size_t end = std::min(entry.value.find(L'\r', at), entry.value.size());
                addEntry(entry.name, entry.value.substr(at, end - at));
                at = end + 1;
            }
        }
        lines.push_back(L"\t\t</IDTags>");
        lines.push_back(L"\t</" + section);
    }
    lines.push_back(L"</AudioMetadata>");
    return lines;
}

/// The document as it lies in its file.
inline std::string PlainDocumentFile(const PlainFile& source, const PlainFile& converted) {
    std::string bytes;
    for (const std::wstring& line : PlainDocument(source, converted)) {
        bytes += PlainUtf8(line) + "\r\n";
    }
    return bytes;
}
