#pragma once

#include "metadata/WaveFormat.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

// The reference code for the document, made for plainness alone: a list is read into strings of its own,
// which are named, escaped, split and joined one at a time.

struct PlainEntry {
    std::wstring name, value;
    int64_t rawSize = 0; // bytes
};
using PlainList = std::vector<PlainEntry>;

/// A file that does not exist, whose tags are its properties as well.
struct PlainFile {
    std::wstring name;
    AudioInfo info = {};
    PlainList entries;
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
        entry.rawSize = end - at;
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

/// The document with the file as its source and as the converted one.
inline std::wstring PlainDocument(const PlainFile& file, const std::wstring& lineEnd) {
    std::wstring document;
    const auto line = [&](const std::wstring& text) { document += text + lineEnd; };
    const auto fact = [&](const std::wstring& element, const std::wstring& text) {
        line(L"\t\t<" + element + L">" + Escaped(text) + L"</" + element + L">");
    };
    const auto number = [&](const wchar_t* tabs, const std::wstring& element, int64_t value) {
        const std::string digits = std::to_string(value);
        line(tabs + (L"<" + element + L">") + std::wstring(digits.begin(), digits.end()) + L"</" + element +
             L">");
    };
    const auto entryLine = [&](const std::wstring& name, const std::wstring& text) {
        const std::wstring element = ElementName(name);
        line(L"\t\t\t<" + element + L" name=\"" + Escaped(name) + L"\">" + Escaped(text) + L"</" + element +
             L">");
    };
    line(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    line(L"<AudioMetadata>");
    for (const bool isSource : {true, false}) {
        const AudioFormat& format = file.info.format;
        line(isSource ? L"\t<SourceFile>" : L"\t<ConvertedFile>");
        fact(L"FileName", file.name);
        fact(L"FileNameNoExt", L"");
        fact(L"FileNameExt", L"");
        fact(L"FileNamePath", L"");
        number(L"\t\t", L"FileSize", file.info.fileSize);
        number(L"\t\t", L"FileLength", file.info.length);
        number(L"\t\t", L"FileBitrate", file.info.bitrate);
        fact(L"FileCreated", L"");
        fact(L"FileModified", L"");
        fact(L"FileAccessed", L"");
        line(L"\t\t<AudioProperties>");
        for (const PlainEntry& entry : file.entries) {
            const std::wstring element = ElementName(entry.name);
            if (entry.rawSize == 0 && element.substr(0, 1) != L"_" && (!element.empty() || !isSource)) {
                entryLine(entry.name, entry.value);
            }
        }
        line(L"\t\t</AudioProperties>");
        line(L"\t\t<AudioFormat>");
        number(L"\t\t\t", L"Channels", format.nChannels);
        number(L"\t\t\t", L"SamplesPerSec", static_cast<int32_t>(format.nSamplesPerSec));
        number(L"\t\t\t", L"BitsPerSample", format.wBitsPerSample);
        number(L"\t\t\t", L"AvgBytesPerSec", static_cast<int32_t>(ByteRate(format)));
        line(L"\t\t</AudioFormat>");
        line(L"\t\t<IDTags>");
        for (const PlainEntry& entry : file.entries) {
            for (size_t at = 0; entry.rawSize == 0 && !entry.value.empty() && at <= entry.value.size();) {
                const size_t end = std::min(entry.value.find(L'\r', at), entry.value.size());
                entryLine(entry.name, entry.value.substr(at, end - at));
                at = end + 1;
            }
        }
        line(L"\t\t</IDTags>");
        line(isSource ? L"\t</SourceFile>" : L"\t</ConvertedFile>");
    }
    line(L"</AudioMetadata>");
    return document;
}
