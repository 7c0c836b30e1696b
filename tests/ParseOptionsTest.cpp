#include "plugin/ParseOptions.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// All options as one text: name[value] in order.
std::wstring Parsed(const wchar_t* text) {
    OptionLists lists;
    lists.names.Add(XString(L"stale"));
    lists.values.Add(XString(L"stale"));
    ParseOptions(lists, XString(text));
    EXPECT_EQ(lists.names.Count(), lists.values.Count());
    std::wstring all;
    for (size_t i = 0; i < lists.names.Count(); ++i) {
        all += std::wstring(lists.names[i].Text()) + L"[" + lists.values[i].Text() + L"]";
    }
    return all;
}

TEST(ParseOptions, ReadsEveryFormOfOption) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"", L""},
        {L"-xsltfile=\"C:\\My Files\\a-b.xsl\" -ext=\"txt\"", L"xsltfile[C:\\My Files\\a-b.xsl]ext[txt]"},
        {L"--ext = \"xml\"", L"ext[xml]"},
        {L"-ext  == =txt rest -a", L"ext[txt]a[]"},
        {L"-xsltfile=\"abc -ext=x y", L"xsltfile[]ext[x]"}, // goes on just after the quote
        {L"-ext\"txt\"-b=1", L"ext[txt]b[1]"},
        {L"-a=b-c -d", L"a[b-c]d[]"},
        {L"-=x -\"y\" - z -e=1", L"e[1]"},
        {L"-a=\"b c\"d -e", L"a[b c]e[]"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(Parsed(text), expected) << text;
    }
}

} // namespace
