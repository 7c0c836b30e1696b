#include "metadata/TagList.h"
#include "metadata/WaveFormat.h"
#include "metadata/XmlText.h"
#include "support/Utf16Writer.h"

#include "tests/TagBlob.h"
#include "tests/Wide.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// What `append` hands to a writer.
template<class Append>
std::wstring Written(Append append) {
    Utf16Writer measure(nullptr);
    append(measure);
    std::wstring text(measure.Position(), L'?');
    Utf16Writer store(text.data());
    append(store);
    return text;
}

TEST(XmlText, EscapesTheFiveCharactersAndNothingElse) {
    const XString plain(L"a&b<c>\"d' &amp;\r\n\t\x0001 \xD800");
    EXPECT_EQ(Written([&](auto& out) { EscapeXmlText(out, plain); }),
              L"a&amp;b&lt;c&gt;&quot;d&apos; &amp;amp;\r\n\t\x0001 \xD800");
}

TEST(XmlText, ElementNamesLoseTwelveCharacters) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"Sample Rate", L"SampleRate"}, {L"( )", L""}, {L"#a &\"b'<>c()/\\:-=,[!?.\t\r", L"abc-=,[!?.\t\r"}};
    for (const auto& [name, expected] : rows) {
        const XString whole(name);
        EXPECT_EQ(Written([&](auto& out) { MakeElementName(out, whole); }), expected);
        EXPECT_EQ(FirstOfElementName(whole), expected[0]);
    }
}

TEST(XmlText, SplitsAtCarriageReturns) {
    const std::pair<const wchar_t*, std::vector<std::wstring>> rows[] = {
        {L"", {}}, {L"a\rb\nc", {L"a", L"b\nc"}}, {L"\ra\r\r", {L"", L"a", L"", L""}}};
    for (const auto& [text, expected] : rows) {
        const XString whole(text);
        SplitValues values(whole);
        std::vector<std::wstring> pieces;
        for (Utf16View piece; values.Next(piece);) {
            pieces.push_back(Wide(piece));
        }
        EXPECT_EQ(pieces, expected) << text;
    }
}

// What the parser makes of a list, as one line of text: "name=value" or "name=value+N" with N bytes of raw
// data, entries parted by "|".
std::wstring Parsed(const std::vector<uint8_t>& bytes) {
    const std::vector<uint8_t> exact(bytes); // with no room behind its end
    std::wstring text;
    for (const TagEntry& entry : ParseTagBlob(exact.data(), static_cast<int32_t>(exact.size()))) {
        text += (text.empty() ? L"" : L"|") + Wide(entry.name) + L"=" + Wide(entry.value);
        if (!entry.rawData.empty()) {
            text += L"+" + std::to_wstring(entry.rawData.size());
        }
    }
    return text;
}

std::vector<uint8_t> Bytes(std::initializer_list<int> bytes) {
    return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

TEST(TagBlob, KeepsWhatFitsAndStopsAtTheFirstBadEntry) {
    const auto entry = [](int32_t size, const std::vector<uint8_t>& rest) {
        TagBlob blob;
        blob.AddSized(size, rest);
        return blob;
    };
    const auto followed = [&](int32_t size, const std::vector<uint8_t>& rest) {
        return entry(size, rest).Add(L"next", L"1").Bytes();
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
        {"entry past the end", entry(5, {}).Bytes(), L""},
        {"size 0", followed(0, {}), L"="},
        {"size 5 is one raw byte", followed(5, Bytes({7})), L"=+1|next=1"},
        {"name without terminator", followed(8, Bytes({'a', 0, 'b', 0})), L"ab="},
        {"odd byte after the name", followed(9, Bytes({'a', 0, 0, 0, 7})), L"a=+1|next=1"},
        {"name without terminator, odd byte", followed(7, Bytes({'a', 0, 7})), L"a=+1|next=1"},
        {"six raw bytes", TagBlob().Add(L"pic", L"png", Bytes({1, 2, 3, 4, 5, 6})).Add(L"b", L"2").Bytes(),
         L"pic=png+6|b=2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Parsed(row.bytes), row.expected) << row.label;
    }
}

TEST(TagBlob, RawDataHoldsTheBytes) {
    const std::vector<uint8_t> bytes = TagBlob().Add(L"pic", L"png", Bytes({1, 2, 255})).Bytes();
    const TagEntry entry = *ParseTagBlob(bytes.data(), static_cast<int32_t>(bytes.size())).begin();
    EXPECT_EQ(std::vector<uint8_t>(entry.rawData.begin(), entry.rawData.end()), Bytes({1, 2, 255}));
}

TEST(WaveFormat, WorksOutBlockSizeAndByteRateOfPcmAndFloat) {
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
        int32_t expected;
    } rows[] = {
        {"PCM", plain(1, 2, 16, 44100), 176400},
        {"other formats keep theirs", plain(85, 2, 0, 44100), 777},
        {"extensible PCM", extensible(1, 22), 288000},
        {"extensible float", extensible(3, 0xFFFF), 288000},
        {"extension too short", extensible(1, 21), 777},
        // 65535 x 65535 is -131071 as a signed number; an eighth of it is 0xC001 in 16 bits.
        {"block size wraps", plain(1, 0xFFFF, 0xFFFF, 1), 0xC001},
        {"byte rate wraps", plain(1, 1, 16, 0xC0000000), INT32_MIN},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WaveFormat(row.format).AvgBytesPerSec(), row.expected) << row.label;
    }
    const WaveFormat signedRate(plain(1, 2, 16, 0x80000000));
    EXPECT_EQ(signedRate.SamplesPerSec(), INT32_MIN);
}

} // namespace
