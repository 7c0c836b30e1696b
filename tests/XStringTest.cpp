#include "support/XString.h"

#include "tests/shared/Wide.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
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
    } rows[] = {{2, 3, L"bc"}, {5, 99, L"e"}, {0, 3, L""}, {6, 9, L""}, {3, 2, L""}};
    XString text(L"abcde");
    for (const auto& row : rows) {
        EXPECT_EQ(Wide(text.Mid(row.first, row.last)), row.expected) << row.first << "…" << row.last;
    }
    EXPECT_EQ(text.Find(L'a', 2), 0u);
    EXPECT_EQ(text.Find(L'e', 2), 5u);
    EXPECT_EQ(text.Find(L'a', 0), 0u);
    EXPECT_EQ(text.FindLast(L'x'), 0u);
    text.DropLast(2);
    EXPECT_EQ(Wide(text), L"abc");
    text.DropLast(4);
    EXPECT_EQ(Wide(text), L"");
}

TEST(XString, ComparesUnitsAsUnsignedAndFoldsAsciiOnly) {
    EXPECT_EQ(Compare(L"\xFFFF", L"\x0001"), 1);
    for (const auto& [a, b, expected] :
         {std::tuple{L"AZ", L"az", 0}, {L"[", L"{", -1}, {L"\xE4", L"\xC4", 1}}) {
        EXPECT_EQ(Compare(a, b, 0, true), expected) << a;
    }
}

} // namespace
