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
    EXPECT_EQ(Wide(text), L"");
}

} // namespace
