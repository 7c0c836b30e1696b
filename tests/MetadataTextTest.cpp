#include "metadata/TagList.h"
#include "metadata/WaveFormat.h"
#include "metadata/XmlText.h"
#include "metadata/XmlWriter.h"
#include "support/Utf8.h"

#include "tests/shared/TagBlob.h"
#include "tests/shared/Wide.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// What `append` hands to a writer.
template<class Append>
std::wstring Written(const Append& append) {
    std::wstring text;
    XmlWriter out("\r\n", [&](std::wstring_view chunk) { text += chunk; });
    append(out);
    out.Flush();
    return text;
}

TEST(XmlWriter, EscapesTheFiveCharactersAndNothingElse) {
    for (const wchar_t* rest : {L"", L"12345678"}) { // eight units at a time, and one by one
        const std::wstring text = std::wstring(L"a&b<c>\"d' &amp;?@\r\n\t\x0001 \xD800\xFFFF") + rest;
        EXPECT_EQ(Written([&](XmlWriter& out) { out.AppendEscaped(Utf16View(text.data(), text.size())); }),
                  std::wstring(L"a&amp;b&lt;c&gt;&quot;d&apos; &amp;amp;?@\r\n\t\x0001 \xD800\xFFFF") + rest);
    }
}

TEST(XmlWriter, ElementNamesLoseTwelveCharacters) {
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"Sample Rate", L"SampleRate"}, {L"( )", L""}, {L"#a &\"b'<>c()/\\:-=,[!?.\t\r", L"abc-=,[!?.\t\r"}};
    for (const auto& [name, expected] : rows) {
        const Utf16View view(name.data(), name.size());
        EXPECT_EQ(Written([&](XmlWriter& out) { out.AppendElementName(view); }), expected);
        EXPECT_EQ(FirstOfElementName(view), expected[0]);
    }
}

TEST(XmlWriter, SplitsNoSurrogatePairBetweenChunks) {
    for (const std::wstring ahead : {L"", L"x", L"xx"}) {
        std::wstring pairs = ahead;
        std::wstring name = ahead; // without its blanks it has pairs, too
        for (int i = 0; i < 20000; ++i) {
            pairs += L"\xD83D\xDE00";
            name += L"\xD83D \xDE00";
        }
        const std::wstring expected = pairs + L"&lt;\r\n" + pairs + L"\xD83D";
        std::wstring written;
        XmlWriter out("\r\n", [&](std::wstring_view chunk) {
            ASSERT_FALSE(chunk.front() == 0xDE00) << "after " << written.size() << " units";
            written += chunk;
        });
        out.AppendEscaped(Utf16View(pairs.data(), pairs.size()));
        out.AppendLine("&lt;");
        out.AppendElementName(Utf16View(name.data(), name.size()));
        out.AppendEscaped(Utf16View(L"\xD83D", 1));
        out.Flush();
        EXPECT_TRUE(written == expected);
    }
}

TEST(Utf8, ReplacesUnpairedSurrogates) {
    for (const wchar_t* rest : {L"", L"12345678"}) {
        const std::wstring text =
            std::wstring(L"a\x7F\x80\x7FF\x800\xFFFF\xD83D\xD83D\xDE00\xDE00z\xDBFF\xDFFF\xD83D") + rest;
        std::vector<char> room(text.size() * kMaxUtf8Bytes);
        EXPECT_EQ(std::string(room.data(), EncodeUtf8(text, room)),
                  "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD"
                  "z\xF4\x8F\xBF\xBF\xEF\xBF\xBD" +
                      std::string(rest, rest + std::char_traits<wchar_t>::length(rest)));
    }
}

TEST(SplitValues, CutsAtCarriageReturns) {
    const std::pair<const wchar_t*, std::vector<std::wstring>> rows[] = {
        {L"", {}}, {L"a\rb\nc", {L"a", L"b\nc"}}, {L"\ra\r\r", {L"", L"a", L"", L""}}};
    for (const auto& [text, expected] : rows) {
        const XString whole(text);
        SplitValues values(whole);
        std::vector<std::wstring> parts;
        for (Utf16View part; values.Next(part);) {
            parts.push_back(Wide(part));
        }
        EXPECT_EQ(parts, expected) << text;
    }
}

// What the parser makes of a list, as one line of text: "name=value" with a "+" for each byte of raw data,
// entries parted by "|".
std::wstring Parsed(const std::vector<uint8_t>& bytes) {
    const std::vector<uint8_t> exact(bytes); // with no room behind its end
    std::wstring text;
    for (const TagEntry& entry : ParseTagBlob(exact.data(), static_cast<int32_t>(exact.size()))) {
        text += (text.empty() ? L"" : L"|") + Wide(entry.name) + L"=" + Wide(entry.value);
        text.append(entry.rawData.size(), L'+');
    }
    return text;
}

TEST(TagBlob, KeepsWhatFitsAndStopsAtTheFirstBadEntry) {
    const auto followed = [](int32_t size, const std::vector<uint8_t>& rest) {
        return TagBlob().AddSized(size, rest).Add(L"next", L"1").Bytes();
    };
    const struct {
        const char* label;
        std::vector<uint8_t> bytes;
        const wchar_t* expected;
    } rows[] = {
        {"nothing", {}, L""},
        {"negative count", TagBlob().Add(L"a", L"1").WithCount(-1), L""},
        {"two entries", TagBlob().Add(L"a", L"1").Add(L"b", L"").Bytes(), L"a=1|b="},
        {"count ends the list", TagBlob().Add(L"a", L"1").Add(L"b", L"2").WithCount(1), L"a=1"},
        {"negative entry size", followed(-4, {}), L""},
        {"entry past the end", TagBlob().AddSized(5, {}).Bytes(), L""},
        {"size 0", followed(0, {}), L"="},
        {"size 5 is one raw byte", followed(5, {7}), L"=+|next=1"},
        {"name without terminator", followed(8, {'a', 0, 'b', 0}), L"ab="},
        {"odd byte after the name", followed(9, {'a', 0, 0, 0, 7}), L"a=+|next=1"},
        {"name without terminator, odd byte", followed(7, {'a', 0, 7}), L"a=+|next=1"},
        {"six raw bytes", TagBlob().Add(L"pic", L"png", {1, 2, 3, 4, 5, 6}).Add(L"b", L"2").Bytes(),
         L"pic=png++++++|b=2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Parsed(row.bytes), row.expected) << row.label;
    }
}

TEST(WaveFormat, WorksOutTheByteRateOfPcmAndFloat) {
    const auto plain = [](uint16_t tag, uint16_t channels, uint16_t bits, uint32_t rate) {
        AudioFormat format = {};
        format.wFormatTag = tag;
        format.nChannels = channels;
        format.wBitsPerSample = bits;
        format.nSamplesPerSec = rate;
        format.nAvgBytesPerSec = 777;
        return format;
    };
    const auto extensible = [&](uint8_t subFormat, uint16_t cbSize) {
        AudioFormat format = plain(0xFFFE, 2, 24, 48000);
        format.cbSize = cbSize;
        const uint8_t guid[16] = {subFormat, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
        memcpy(format.SubFormat, guid, sizeof guid);
        return format;
    };
    const struct {
        const char* label;
        AudioFormat format;
        uint32_t expected;
    } rows[] = {
        {"PCM", plain(1, 2, 16, 44100), 176400},
        {"other formats keep theirs", plain(85, 2, 0, 44100), 777},
        {"extensible PCM", extensible(1, 22), 288000},
        {"extensible float", extensible(3, 0xFFFF), 288000},
        {"extension too short", extensible(1, 21), 777},
        // 65535 x 65535 is -131071 as a signed number; an eighth of it is 0xC001 in 16 bits.
        {"block size wraps", plain(1, 0xFFFF, 0xFFFF, 1), 0xC001},
        {"byte rate wraps", plain(1, 1, 16, 0xC0000000), 0x80000000},
        {"never 0", plain(1, 0, 16, 44100), 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ByteRate(row.format), row.expected) << row.label;
    }
}

} // namespace
