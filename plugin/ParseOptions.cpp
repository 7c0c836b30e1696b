#include "plugin/ParseOptions.h"

#include <algorithm>
#include <string_view>

using namespace std::string_view_literals;

std::vector<Option> ParseOptions(const XString& settings) {
    const std::wstring_view text(settings.Text(), settings.Size());
    const auto isAt = [text](size_t at, wchar_t unit) { return text.substr(at).starts_with(unit); };
    std::vector<Option> options;
    size_t at = 0;
    while ((at = text.find(L'-', at)) != text.npos) {
        at += isAt(at + 1, L'-') ? 2u : 1u;
        const size_t nameEnd = std::min(text.find_first_of(L"\"= "sv, at), text.size());
        const std::wstring_view name = text.substr(at, nameEnd - at);
        if (name.empty()) {
            at = nameEnd + 1;
            continue;
        }
        std::wstring_view value;
        at = std::min(text.find_first_not_of(L" ="sv, nameEnd), text.size());
        if (isAt(at, L'"')) {
            ++at;
            if (const size_t quote = text.find(L'"', at); quote != text.npos) {
                value = text.substr(at, quote - at);
                at = quote + 1;
            }
        } else if (!isAt(at, L'-')) {
            value = text.substr(at, text.find(L' ', at) - at);
            at += value.size();
        }
        options.push_back({XString(name.data(), name.size()), XString(value.data(), value.size())});
    }
    return options;
}

const wchar_t* FindOption(const std::vector<Option>& options, const wchar_t* name) noexcept {
    for (const Option& option : options) {
        if (Compare(option.name.Text(), name, 0, true) == 0) {
            return option.value.Text();
        }
    }
    return L"";
}

XString FormatOptions(const wchar_t* xsltFile, const wchar_t* extension) {
    XString text(L"-xsltfile=\"");
    text.Append(xsltFile);
    text.Append(L"\" -ext=\"");
    text.Append(extension);
    text.Append(L"\"");
    return text;
}
