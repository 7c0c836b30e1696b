#include "bench/Document.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace {

// What the units below 128 mean in a value; the others take two bytes and more.
enum : uint8_t { kPlain, kZero, kSeparator, kFirstEntity };
constexpr std::wstring_view kSpecial = L"&\"'<>";
constexpr std::string_view kEntities[] = {"&amp;", "&quot;", "&apos;", "&lt;", "&gt;"};

constexpr std::array<uint8_t, 128> kMeanings = [] {
    std::array<uint8_t, 128> meanings = {};
    meanings[0] = kZero;
    meanings['\r'] = kSeparator;
    for (size_t i = 0; i < kSpecial.size(); ++i) {
        meanings[kSpecial[i]] = static_cast<uint8_t>(kFirstEntity + i);
    }
    return meanings;
}();

constexpr std::array<bool, 128> kLeftOutOfNames = [] {
    std::array<bool, 128> leftOut = {};
    for (const char unit : std::string_view("# &\"'<>()/\\:")) {
        leftOut[static_cast<size_t>(unit)] = true;
    }
    return leftOut;
}();

constexpr size_t kMostBytesPerUnit = 6; // &quot;

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
            Put(kEntities[meaning - kFirstEntity], out);
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

/// The document in the making. There is always room for what is written next.
class Pass {
public:
    explicit Pass(const Document& document) {
        // Pages that stay empty cost nothing.
        MakeRoom(6 * document.tags.size() + document.head.size() + document.tail.size());
        Put(document.head, m_out);
        const uint8_t* at = document.tags.data() + sizeof(int32_t);
        for (const uint8_t* const end = document.tags.data() + document.tags.size(); at < end;) {
            const uint32_t size = *reinterpret_cast<const uint32_t*>(at);
            PutEntry(reinterpret_cast<const wchar_t*>(at + sizeof size),
                     reinterpret_cast<const wchar_t*>(at + size));
            at += size;
        }
        MakeRoom(document.tail.size());
        Put(document.tail, m_out);
    }
    ~Pass() { std::free(m_begin); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    std::string_view Bytes() const { return {m_begin, static_cast<size_t>(m_out - m_begin)}; }

private:
    void MakeRoom(size_t size) {
        if (static_cast<size_t>(m_end - m_out) < size) {
            const auto used = static_cast<size_t>(m_out - m_begin);
            const size_t capacity = 2 * used + size;
            auto* const grown = static_cast<char*>(std::realloc(m_begin, capacity));
            if (grown == nullptr) {
                throw std::bad_alloc();
            }
            m_begin = grown;
            m_out = grown + used;
            m_end = grown + capacity;
        }
    }

    void PutEntry(const wchar_t* name, const wchar_t* end) {
        constexpr size_t kFrame = 64;
        const auto before = static_cast<size_t>(m_out - m_begin);
        MakeRoom(static_cast<size_t>(end - name) * 2 * kMostBytesPerUnit + kFrame);
        Put("\t\t\t<", m_out);
        const char* const element = m_out;
        const wchar_t* units = PutElement(name, end, m_out);
        const auto elementSize = static_cast<size_t>(m_out - element);
        Put(" name=\"", m_out);
        PutName(name, units);
        Put("\">", m_out);
        const auto openSize = static_cast<size_t>(m_out - m_begin) - before;
        units += units < end;

        const wchar_t* const value = units;
        for (;; ++units) {
            units = PutValue(units, end, m_out);
            Put("</", m_out);
            Put({m_begin + before + 4, elementSize}, m_out);
            Put(">\r\n", m_out);
            if (units == end || *units == 0) {
                break;
            }
            MakeRoom(openSize + elementSize + kFrame + static_cast<size_t>(end - units) * kMostBytesPerUnit);
            Put({m_begin + before, openSize}, m_out);
        }
        units += units < end;
        if (units < end || *value == 0) {
            m_out = m_begin + before; // binary content, or no value at all
        }
    }

    /// CR has no special meaning in a name.
    void PutName(const wchar_t* name, const wchar_t* end) {
        while ((name = PutValue(name, end, m_out)) < end) {
            *m_out++ = static_cast<char>(*name++);
        }
    }

    char* m_begin = nullptr;
    char* m_out = nullptr;
    char* m_end = nullptr;
};

} // namespace

void WriteInSinglePass(HANDLE file, const Document& document) {
    const Pass pass(document);
    DWORD written = 0;
    WriteFile(file, pass.Bytes().data(), static_cast<DWORD>(pass.Bytes().size()), &written, nullptr);
}
