#include "plugin/ParseOptions.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// All options as one text: name[value] in order.
std::wstring Parsed(const wchar_t* text) {
    std::wstring all;
    for (const Option& option : ParseOptions(XString(text))) {
        all += std::wstring(option.name.Text()) + L"[" + option.value.Text() + L"]";
    }
    return all;
}

TEST(ParseOptions, ReadsEveryFormOfOption) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"", L""},
        {L"-xsltfile=\"C:\\My Files\\a-b.xsl\" -ext=\"txt\"", L"xsltfile[C:\\My Files\\a-b.xsl]ext[txt]"},
        {L"--ext = \"xml\"", L"ext[xml]"},
        {L"---ext=xml", L"-ext[xml]"},
        {L"-ext  == =txt rest -a", L"ext[txt]a[]"},
        {L"-xsltfile=\"abc -ext=x y", L"xsltfile[]ext[x]"}, // goes on just after the quote
        {L"-ext\"txt\"-b=1", L"ext[txt]b[1]"},
        {L"-a -b=c-d=e\"f -g", L"a[]b[c-d=e\"f]g[]"},
        {L"-=x -\"y\" - z -e=1", L"e[1]"},
        {L"-a=\"b c\"d -e", L"a[b c]e[]"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(Parsed(text), expected) << text;
    }
}

} // namespace
