#include "metadata/Document.h"
#include "metadata/TagList.h"
#include "metadata/WaveFormat.h"
#include "metadata/XmlText.h"

#include "tests/GuardedBytes.h"
#include "tests/TagBlob.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::wstring Wide(const XString& text) {
    return text.Text();
}

std::vector<std::wstring> Wide(const XStringList& list) {
    std::vector<std::wstring> texts;
    for (const XString& text : list) {
        texts.push_back(text.Text());
    }
    return texts;
}

TEST(XmlText, EscapesTheFiveCharactersAndNothingElse) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"", L""},
        {L"a&b<c>\"d'", L"a&amp;b&lt;c&gt;&quot;d&apos;"},
        {L"&amp;", L"&amp;amp;"},
        {L"plain\r\n\t\x0001 \xD83D\xDE00 \xD800", L"plain\r\n\t\x0001 \xD83D\xDE00 \xD800"},
        {L"&&", L"&amp;&amp;"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(Wide(EscapeXmlText(XString(text))), expected);
    }
    const XString escaped = EscapeXmlText(XString(L"a&b"));
    EXPECT_EQ(escaped.Capacity(), escaped.Length()) << "measured, not grown";
}

TEST(XmlText, ElementNamesLoseTwelveCharacters) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"Sample Rate", L"SampleRate"},
                                                              {L"ID3:TXXX (Mood)", L"ID3TXXXMood"},
                                                              {L"1st/2nd", L"1st2nd"},
                                                              {L"( )", L""},
                                                              {L"#a &\"b'<>c()/\\:", L"abc"},
                                                              {L"-=,[!?.é", L"-=,[!?.é"},
                                                              {L"", L""},
                                                              {L"tab\tand\rreturn", L"tab\tand\rreturn"}};
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(Wide(MakeElementName(XString(name))), expected);
    }
}

TEST(XmlText, SplitsAtCarriageReturns) {
    const std::pair<const wchar_t*, std::vector<std::wstring>> rows[] = {{L"", {}},
                                                                         {L"a", {L"a"}},
                                                                         {L"a\rb", {L"a", L"b"}},
                                                                         {L"a\r", {L"a", L""}},
                                                                         {L"\ra", {L"", L"a"}},
                                                                         {L"a\r\rb", {L"a", L"", L"b"}},
                                                                         {L"\r", {L"", L""}},
                                                                         {L"a\nb", {L"a\nb"}}};
    XStringList pieces;
    for (const auto& [text, expected] : rows) {
        SplitValues(pieces, XString(text));
        EXPECT_EQ(Wide(pieces), expected) << text;
    }
}

// What the parser makes of a list, as one line of text: "name=value" or "name=value+N" with N bytes of raw
// data, entries parted by "|".
std::wstring Parsed(const std::vector<uint8_t>& bytes) {
    const GuardedBytes guarded(bytes);
    TagList list;
    list.emplace_back(); // must be gone afterwards
    ParseTagBlob(list, guarded.Data(), static_cast<int32_t>(guarded.Size()));
    std::wstring text;
    for (const TagEntry& entry : list) {
        text += (text.empty() ? L"" : L"|") + Wide(entry.name) + L"=" + Wide(entry.value);
        if (!entry.rawData.IsEmpty()) {
            text += L"+" + std::to_wstring(entry.rawData.Size());
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
        {"half a count", Bytes({1, 0}), L""},
        {"a count alone", Bytes({1, 0, 0, 0}), L""},
        {"half a size", Bytes({1, 0, 0, 0, 9, 0, 0}), L""},
        {"count 0", TagBlob().Add(L"a", L"1").WithCount(0), L""},
        {"negative count", TagBlob().Add(L"a", L"1").WithCount(-1), L""},
        {"two entries", TagBlob().Add(L"a", L"1").Add(L"b", L"").Bytes(), L"a=1|b="},
        {"count ends the list", TagBlob().Add(L"a", L"1").Add(L"b", L"2").WithCount(1), L"a=1"},
        {"list ends before its count", TagBlob().Add(L"a", L"1").WithCount(3), L"a=1"},
        {"negative entry size", followed(-4, {}), L""},
        {"entry past the end", entry(5, {}).Bytes(), L""},
        {"huge entry size", entry(INT32_MAX, {}).Bytes(), L""},
        {"size 0", followed(0, {}), L"="},
        {"size 3", followed(3, {}), L"="},
        {"size 4", followed(4, {}), L"="},
        {"size 5 is one raw byte", followed(5, Bytes({7})), L"=+1|next=1"},
        {"name without terminator", followed(8, Bytes({'a', 0, 'b', 0})), L"ab="},
        {"name only", followed(8, Bytes({'a', 0, 0, 0})), L"a="},
        {"odd byte after the name", followed(9, Bytes({'a', 0, 0, 0, 7})), L"a=+1|next=1"},
        {"name without terminator, odd byte", followed(7, Bytes({'a', 0, 7})), L"a=+1|next=1"},
        {"value without terminator", followed(10, Bytes({'a', 0, 0, 0, 'v', 0})), L"a=v|next=1"},
        {"six raw bytes", TagBlob().Add(L"pic", L"png", Bytes({1, 2, 3, 4, 5, 6})).Add(L"b", L"2").Bytes(),
         L"pic=png+6|b=2"},
        {"unaligned after an odd entry", TagBlob().Add(L"x", L"", Bytes({1})).Add(L"b", L"2").Bytes(),
         L"x=+1|b=2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Parsed(row.bytes), row.expected) << row.label;
    }
}

TEST(TagBlob, RawDataHoldsTheBytesAndNullIsEmpty) {
    const GuardedBytes guarded(TagBlob().Add(L"pic", L"png", Bytes({1, 2, 255})).Bytes());
    TagList list;
    ParseTagBlob(list, guarded.Data(), static_cast<int32_t>(guarded.Size()));
    ASSERT_EQ(list.size(), 1u);
    const uint8_t* raw = list[0].rawData.Data();
    EXPECT_EQ(std::vector<uint8_t>(raw, raw + list[0].rawData.Size()), Bytes({1, 2, 255}));
    for (const int32_t size : {-1, 0}) {
        ParseTagBlob(list, guarded.Data(), size);
        EXPECT_TRUE(list.empty()) << size;
    }
    ParseTagBlob(list, nullptr, 100);
    EXPECT_TRUE(list.empty());
}

TEST(TagBlob, NeverReadsPastAnyEnd) {
    // Cut at every place and with every byte changed in turn, the guard page behind the list stays untouched.
    const std::vector<uint8_t> good =
        TagBlob().Add(L"ab", L"cd").Add(L"p", L"q", Bytes({1, 2, 3})).Add(L"e", L"f").Bytes();
    ASSERT_EQ(Parsed(good), L"ab=cd|p=q+3|e=f");
    for (size_t size = 0; size <= good.size(); ++size) {
        Parsed(std::vector<uint8_t>(good.begin(), good.begin() + static_cast<ptrdiff_t>(size)));
    }
    for (size_t at = 0; at < good.size(); ++at) {
        for (const int value : {0x00, 0x01, 0x03, 0x7F, 0x80, 0xFF}) {
            std::vector<uint8_t> bad = good;
            bad[at] = static_cast<uint8_t>(value);
            Parsed(bad);
        }
    }
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
    const auto extensible = [&](uint8_t subFormat, uint16_t cbSize, uint8_t tail = 0x71) {
        AudioFormat format = plain(0xFFFE, 2, 24, 48000);
        format.cbSize = cbSize;
        const uint8_t guid[16] = {subFormat, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, tail};
        memcpy(format.SubFormat, guid, sizeof guid);
        return format;
    };
    const struct {
        const char* label;
        AudioFormat format;
        int32_t expected;
    } rows[] = {
        {"PCM", plain(1, 2, 16, 44100), 176400},
        {"float", plain(3, 1, 32, 8000), 32000},
        {"12 bits are cut to whole bytes", plain(1, 1, 12, 8000), 8000},
        {"no bits at all", plain(1, 2, 0, 44100), 1},
        {"other formats keep theirs", plain(85, 2, 0, 44100), 777},
        {"extensible PCM", extensible(1, 22), 288000},
        {"extensible float", extensible(3, 0xFFFF), 288000},
        {"extensible A-law", extensible(6, 22), 777},
        {"extension too short", extensible(1, 21), 777},
        {"other sub-format", extensible(1, 22, 0x72), 777},
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

TEST(Document, EachListHasItsOwnRuleForOddNames) {
    // Lines written for one entry in each of the four lists, from the same name and value.
    const struct {
        const wchar_t *name, *value;
        uint32_t rawSize;
        std::vector<std::wstring> sourceProperty, convertedProperty, tag;
    } rows[] = {
        {L"Sample Rate", L"<1>", 0, {L"<SampleRate name=\"Sample Rate\">&lt;1&gt;</SampleRate>"}, {}, {}},
        {L"a\"b", L"", 0, {L"<ab name=\"a&quot;b\"></ab>"}, {L"<ab name=\"a&quot;b\"></ab>"}, {{}}},
        {L"( )", L"x", 0, {{}}, {L"< name=\"( )\">x</>"}, {L"< name=\"( )\">x</>"}},
        {L"_hidden", L"x", 0, {{}}, {{}}, {L"<_hidden name=\"_hidden\">x</_hidden>"}},
        {L"(_)", L"x", 0, {{}}, {{}}, {L"<_ name=\"(_)\">x</_>"}},
        {L"Cover", L"x", 9, {{}}, {{}}, {{}}},
        {L"t",
         L"a&\rb\r",
         0,
         {L"<t name=\"t\">a&amp;\rb\r</t>"},
         {},
         {L"<t name=\"t\">a&amp;</t>", L"<t name=\"t\">b</t>", L"<t name=\"t\"></t>"}},
    };
    for (const auto& row : rows) {
        const auto list = [&row] {
            TagList entries;
            TagEntry& entry = entries.emplace_back();
            entry.name.Assign(row.name);
            entry.value.Assign(row.value);
            entry.rawData.Assign("123456789", row.rawSize);
            return entries;
        };
        FileFacts source, converted;
        source.properties = list();
        source.idTags = list();
        converted.properties = list();
        converted.idTags = list();
        const XStringList lines = BuildDocument(source, converted);
        const auto written = [&lines](size_t& at, const wchar_t* section) {
            std::vector<std::wstring> entries;
            while (Wide(lines[at]) != std::wstring(L"\t\t<") + section + L">") {
                ++at;
            }
            while (Wide(lines[++at]) != std::wstring(L"\t\t</") + section + L">") {
                entries.push_back(Wide(lines[at]));
            }
            return entries;
        };
        const auto expected = [](const std::vector<std::wstring>& texts,
                                 const std::vector<std::wstring>& otherwise) {
            std::vector<std::wstring> entries; // {} means "as otherwise", {""} means none
            for (const std::wstring& text : texts.empty() ? otherwise : texts) {
                if (!text.empty()) {
                    entries.push_back(L"\t\t\t" + text);
                }
            }
            return entries;
        };
        size_t at = 0;
        EXPECT_EQ(written(at, L"AudioProperties"), expected(row.sourceProperty, {})) << row.name;
        EXPECT_EQ(written(at, L"IDTags"), expected(row.tag, row.sourceProperty)) << row.name;
        EXPECT_EQ(written(at, L"AudioProperties"), expected(row.convertedProperty, row.sourceProperty))
            << row.name;
        EXPECT_EQ(written(at, L"IDTags"), expected(row.tag, row.sourceProperty)) << row.name;
    }
}

} // namespace
