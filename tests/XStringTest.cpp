#include "support/XString.h"

#include "tests/shared/Wide.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(XString, AssignsAndAppendsPartsOfItself) {
    XString text(L"0123456789");
    text.Assign(text.Text() + 4);
    EXPECT_EQ(Wide(text), L"456789");
    text.Assign(L"abcdef", 4); // three units and a terminator
    std::wstring expected = L"abc";
    for (int i = 0; i < 6; ++i) { // outgrows its buffer now and then
        text.Append(text);
        expected += expected;
    }
    const XString taken = std::move(text);
    EXPECT_EQ(Wide(taken), expected);
    text.Append(L"anew");
    EXPECT_EQ(Wide(text), L"anew");
}

TEST(XString, ComparesWithTheCaseOfLatinLettersOrWithout) {
    const struct {
        const wchar_t *a, *b;
        size_t count;
        int withCase, without;
    } rows[] = {
        {L"AMZ", L"amz", 0, -1, 0},  {L"\u00C4", L"\u00E4", 0, -1, -1},
        {L"@[", L"`{", 0, -1, -1},   {L"ab", L"a", 0, 1, 1},
        {L"a", L"ab", 0, -1, -1},    {L"abX", L"abY", 2, 0, 0},
        {L"abX", L"abY", 3, -1, -1}, {L"a", L"a", 9, 0, 0},
        {L"a", nullptr, 0, 1, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Compare(row.a, row.b, row.count), row.withCase) << row.a;
        EXPECT_EQ(Compare(row.a, row.b, row.count, true), row.without) << row.a;
    }
}

} // namespace
