#include "bench/Writers.h"

#include <array>
#include <cstring>
#include <string_view>

namespace {

// What the units below 128 mean in a value; the others take two bytes and more.
enum : uint8_t { kPlain, kZero, kSeparator, kFirstEntity };
constexpr std::wstring_view kSpecial = L"&\"'<>";

struct Entity {
    char bytes[8]; // always copied whole
    size_t size;
};
constexpr Entity kEntities[] = {{"&amp;", 5}, {"&quot;", 6}, {"&apos;", 6}, {"&lt;", 4}, {"&gt;", 4}};

constexpr std::array<uint8_t, 128> Meanings() {
    std::array<uint8_t, 128> meanings = {};
    meanings[0] = kZero;
    meanings['\r'] = kSeparator;
    for (size_t i = 0; i < kSpecial.size(); ++i) {
        meanings[kSpecial[i]] = static_cast<uint8_t>(kFirstEntity + i);
    }
    return meanings;
}
constexpr std::array<uint8_t, 128> kMeanings = Meanings();

constexpr std::array<bool, 128> LeftOutOfNames() {
    std::array<bool, 128> leftOut = {};
    for (const wchar_t unit : std::wstring_view(L"# &\"'<>()/\\:")) {
        leftOut[unit] = true;
    }
    return leftOut;
}
constexpr std::array<bool, 128> kLeftOutOfNames = LeftOutOfNames();

/// Passes over plain units, copying them.
const wchar_t* CopyPlain(const wchar_t* units, const wchar_t* end, char*& out) {
    char* to = out;
    while (end - units >= 4) {
        const unsigned a = units[0], b = units[1], c = units[2], d = units[3];
        if ((a | b | c | d) >= 128 || (kMeanings[a] | kMeanings[b] | kMeanings[c] | kMeanings[d]) != kPlain) {
            break;
        }
        const uint32_t four = a | b << 8 | c << 16 | d << 24;
        std::memcpy(to, &four, sizeof four);
        units += 4;
        to += 4;
    }
    while (units < end && *units < 128 && kMeanings[*units] == kPlain) {
        *to++ = static_cast<char>(*units++);
    }
    out = to;
    return units;
}

/// Writes one character of 128 or above; an unpaired surrogate becomes the replacement character.
const wchar_t* PutWide(const wchar_t* units, const wchar_t* end, char*& out) {
    uint32_t code = *units++;
    if (code < 0x800) {
        *out++ = static_cast<char>(0xC0 | code >> 6);
    } else {
        if ((code & 0xFC00) == 0xD800 && units < end && (*units & 0xFC00) == 0xDC00) {
            code = 0x10000 + ((code & 0x3FF) << 10) + (*units++ & 0x3FFu);
            *out++ = static_cast<char>(0xF0 | code >> 18);
            *out++ = static_cast<char>(0x80 | (code >> 12 & 0x3F));
        } else {
            code = (code & 0xF800) == 0xD800 ? 0xFFFD : code;
            *out++ = static_cast<char>(0xE0 | code >> 12);
        }
        *out++ = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    }
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
    return units;
}

void Put(std::string_view bytes, char*& out) {
    std::memcpy(out, bytes.data(), bytes.size());
    out += bytes.size();
}

/// Writes units up to the next CR or zero, or up to the end; the one that ends it is not passed over.
const wchar_t* PutValue(const wchar_t* units, const wchar_t* end, char*& out) {
    while ((units = CopyPlain(units, end, out)) < end) {
        if (*units >= 128) {
            units = PutWide(units, end, out);
        } else if (const uint8_t meaning = kMeanings[*units]; meaning >= kFirstEntity) {
            const Entity& entity = kEntities[meaning - kFirstEntity];
            std::memcpy(out, entity.bytes, sizeof entity.bytes);
            out += entity.size;
            ++units;
        } else {
            break;
        }
    }
    return units;
}

/// Writes the element's name, and passes over the whole name of the entry.
const wchar_t* PutElement(const wchar_t* units, const wchar_t* end, char*& out) {
    while (units < end && *units != 0) {
        if (*units >= 128) {
            units = PutWide(units, end, out);
        } else if (kLeftOutOfNames[*units]) {
            ++units;
        } else {
            *out++ = static_cast<char>(*units++);
        }
    }
    return units;
}

/// CR has no special meaning in a name.
void PutName(const wchar_t* units, const wchar_t* end, char*& out) {
    while ((units = PutValue(units, end, out)) < end) {
        *out++ = static_cast<char>(*units++);
    }
}

void PutEntry(const wchar_t* name, const wchar_t* end, char*& out) {
    char* const line = out;
    constexpr std::string_view kOpen = "\t\t\t<";
    Put(kOpen, out);
    const wchar_t* units = PutElement(name, end, out);
    const std::string_view element(line + kOpen.size(), static_cast<size_t>(out - line) - kOpen.size());
    Put(" name=\"", out);
    PutName(name, units, out);
    Put("\">", out);
    const std::string_view opening(line, static_cast<size_t>(out - line));
    units += units < end;

    const bool isEmpty = units == end || *units == 0;
    for (;; ++units) {
        units = PutValue(units, end, out);
        Put("</", out);
        Put(element, out);
        Put(">\r\n", out);
        if (units == end || *units == 0) {
            break;
        }
        Put(opening, out);
    }
    units += units < end;
    if (isEmpty || units < end) {
        out = line; // no value at all, or binary content
    }
}

} // namespace

void WriteInSinglePass(HANDLE file, const DocumentParts& document) {
    char* out = document.room.get();
    Put(document.head, out);
    const uint8_t* at = document.tags.data() + sizeof(int32_t);
    for (const uint8_t* const end = document.tags.data() + document.tags.size(); at < end;) {
        const uint32_t size = *reinterpret_cast<const uint32_t*>(at);
        PutEntry(reinterpret_cast<const wchar_t*>(at + sizeof size),
                 reinterpret_cast<const wchar_t*>(at + size), out);
        at += size;
    }
    Put(document.tail, out);
    DWORD written = 0;
    WriteFile(file, document.room.get(), static_cast<DWORD>(out - document.room.get()), &written, nullptr);
}
