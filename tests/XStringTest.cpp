#include "support/XString.h"
#include "support/XStringList.h"

#include "tests/Wide.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TEST(XString, ReadsAsEmptyWhenNothingWasAssigned) {
    XString owner(L"0123456789");
    owner.Assign(L"");
    EXPECT_EQ(owner.Capacity(), 11u) << "an emptied string keeps its buffer";
    XString moved(L"x");
    const XString taken = std::move(moved);
    for (const XString& empty :
         {XString(), XString(nullptr), XString(L""), std::move(owner), std::move(moved)}) {
        EXPECT_EQ(empty.Length(), 1u);
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_EQ(Wide(empty), L"");
    }
}

TEST(XString, AssignTakesExactlyTheRoomItNeeds) {
    XString text;
    text.Reserve(40);
    text.Assign(L"0123456789");
    EXPECT_EQ(text.Capacity(), 40u);
    XString small;
    small.Reserve(5);
    small.Assign(L"0123456789");
    EXPECT_EQ(small.Capacity(), 11u);
    small.Assign(small.Text() + 4); // from its own tail
    EXPECT_EQ(Wide(small), L"456789");
    small.Assign(L"abcdef", 4); // three units and a terminator
    EXPECT_EQ(Wide(small), L"abc");
}

TEST(XString, AppendLeavesSlackAndMayTakeTheStringItself) {
    XString text;
    text.Append(L"ab");
    EXPECT_EQ(text.Capacity(), 28u);
    text.Assign(L"0123456789");
    ASSERT_EQ(text.Length(), 11u);
    XString exact(text.Text());
    exact.Append(exact); // must outgrow its buffer
    EXPECT_EQ(Wide(exact), L"01234567890123456789");
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
    EXPECT_EQ(text.Mid(2, 3).Capacity(), 3u);

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
    const std::pair<int64_t, const wchar_t*> rows[] = {
        {0, L"0"},
        {INT64_MIN, L"-9223372036854775808"},
    };
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(Wide(XString::FromInt64(value)), expected);
    }
}

TEST(XStringList, GrowsByDoublingSteps) {
    XStringList list;
    const std::pair<size_t, size_t> rows[] = {{16, 16}, {17, 48}, {48, 48}, {49, 112}, {113, 240}};
    for (const auto& [count, capacity] : rows) {
        while (list.Count() < count) {
            list.Add(XString::FromInt64(static_cast<int64_t>(list.Count())));
        }
        EXPECT_EQ(list.Capacity(), capacity) << count;
    }
    EXPECT_EQ(Wide(list[0]), L"0");
    EXPECT_EQ(Wide(list[112]), L"112");
    list.Clear();
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.Capacity(), 16u);
}

} // namespace
