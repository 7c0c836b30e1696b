// Settings texts and the paths in them, compared with reference code.

#include "plugin/ParseOptions.h"
#include "support/Paths.h"
#include "tests/fuzz/Require.h"
#include "tests/shared/Wide.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using Options = std::vector<std::pair<std::wstring, std::wstring>>;

Options Read(const XString& text) {
    OptionLists lists;
    ParseOptions(lists, text);
    Require(lists.names.Count() == lists.values.Count(), "names without values");
    Options options;
    for (size_t i = 0; i < lists.names.Count(); ++i) {
        options.emplace_back(Wide(lists.names[i]), Wide(lists.values[i]));
    }
    return options;
}

Options ReadPlainly(const std::wstring& text) {
    Options options;
    size_t at = 0;
    while ((at = text.find(L'-', at)) != std::wstring::npos) {
        const size_t name = text.compare(at, 2, L"--") == 0 ? at + 2 : at + 1;
        const size_t nameEnd = std::min(text.find_first_of(L"\"= ", name), text.size());
        if (nameEnd == name) {
            at = nameEnd + 1;
            continue;
        }
        std::wstring value;
        at = std::min(text.find_first_not_of(L" =", nameEnd), text.size());
        if (text[at] == L'"') {
            const size_t quote = text.find(L'"', ++at);
            if (quote != std::wstring::npos) {
                value = text.substr(at, quote - at);
                at = quote + 1;
            }
        } else if (text[at] != L'-') {
            value = text.substr(at, text.find(L' ', at) - at);
            at += value.size();
        }
        options.emplace_back(text.substr(name, nameEnd - name), value);
    }
    return options;
}

void CheckPaths(const XString& path) {
    const std::wstring whole = Wide(path);
    const std::wstring name = Wide(GetFileName(path));
    const std::wstring nameNoExt = Wide(GetFileNameNoExt(path));
    const bool hasFolder = whole.find(L'\\') != std::wstring::npos;
    Require(Wide(GetFilePath(path)) + (hasFolder ? name : L"") == whole, "folder and name");
    const std::wstring ext = Wide(GetFileExt(path));
    const bool hasExt = name.find(L'.') != std::wstring::npos;
    Require(hasExt ? nameNoExt + ext == name : nameNoExt == name && ext == L".", "name and extension");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A terminator ends the text, as it ends the host's.
    const std::wstring units = Wide(Utf16View(data, size / sizeof(wchar_t)));
    const XString text(units.c_str());
    Require(Read(text) == ReadPlainly(Wide(text)), "options");
    CheckPaths(text);

    // What the panel writes is read back.
    std::wstring field = Wide(text);
    std::erase(field, L'"');
    const XString formatted = FormatOptions(field.c_str(), field.c_str() + field.size() / 2);
    Require(Read(formatted) == Options{{L"xsltfile", field}, {L"ext", field.substr(field.size() / 2)}},
            "round trip");
    return 0;
}
