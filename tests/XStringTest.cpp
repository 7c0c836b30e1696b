#include "support/XString.h"

#include "tests/shared/Wide.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TEST(XString, ReadsAsEmptyWhenNothingWasAssigned) {
    XString owner(L"0123456789");
    owner.Assign(L"");
    XString moved(L"x");
    const XString taken = std::move(moved);
    for (const XString& empty :
         {XString(), XString(nullptr), XString(L""), std::move(owner), std::move(moved)}) {
        EXPECT_EQ(empty.Length(), 1u);
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_EQ(Wide(empty), L"");
    }
}

TEST(XString, AssignsAndAppendsPartsOfItself) {
    XString text(L"0123456789");
    text.Assign(text.Text() + 4);
    EXPECT_EQ(Wide(text), L"456789");
    text.Assign(L"abcdef", 4); // three units and a terminator
    EXPECT_EQ(Wide(text), L"abc");
    std::wstring expected = L"abc";
    for (int i = 0; i < 6; ++i) { // outgrows its buffer now and then
        text.Append(text);
        expected += expected;
    }
    EXPECT_EQ(Wide(text), expected);
    EXPECT_EQ(Wide(text.Copy()), expected);
}

TEST(XString, CutsByPositionAndIgnoresRangesOutside) {
    const struct {
        size_t first, last;
        const wchar_t* expected;
    } mids[] = {{1, 5, L"abcde"}, {2, 3, L"bc"}, {5, 99, L"e"}, {0, 3, L""}, {6, 9, L""}, {3, 2, L""}};
    const XString text(L"abcde");
    for (const auto& mid : mids) {
        EXPECT_EQ(Wide(text.Mid(mid.first, mid.last)), mid.expected) << mid.first << "…" << mid.last;
    }

    const struct {
        size_t count;
        const wchar_t* expected;
    } drops[] = {{0, L"abcde"}, {2, L"abc"}, {5, L""}, {9, L""}};
    for (const auto& drop : drops) {
        XString dropped(L"abcde");
        dropped.DropLast(drop.count);
        EXPECT_EQ(Wide(dropped), drop.expected) << drop.count;
    }
    EXPECT_EQ(text.Find(L'a', 2), 0u);
    EXPECT_EQ(text.Find(L'e', 2), 5u);
    EXPECT_EQ(text.Find(L'a', 0), 0u);
    EXPECT_EQ(text.FindLast(L'x'), 0u);
}

TEST(XString, ComparesUnitsAsUnsignedAndFoldsAsciiOnly) {
    const struct {
        const wchar_t* a;
        const wchar_t* b;
        size_t count;
        bool ignoreCase;
        int expected;
    } rows[] = {
        {L"<-<-", L"<-<-  x", 4, false, 0},  {L"IsLive", L"islive", 0, false, -1},
        {L"IsLive", L"islive", 0, true, 0},  {L"abc", nullptr, 0, false, 1},
        {L"abcd", L"abc", 3, false, 0},      {L"\xE4", L"\xC4", 0, true, 1},
        {L"\xFFFF", L"\x0001", 0, false, 1}, {L"[", L"{", 0, true, -1},
        {L"AZ", L"az", 0, true, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Compare(row.a, row.b, row.count, row.ignoreCase), row.expected)
            << row.a << " / " << (row.b != nullptr ? row.b : L"null");
    }
}

TEST(XString, WritesIntegers) {
    EXPECT_EQ(Wide(XString::FromInt64(0)), L"0");
    EXPECT_EQ(Wide(XString::FromInt64(INT64_MIN)), L"-9223372036854775808");
}

} // namespace
