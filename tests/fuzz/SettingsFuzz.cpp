// Settings texts.

#include "plugin/ParseOptions.h"
#include "tests/fuzz/Require.h"
#include "tests/shared/Wide.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

Pairs Read(const std::wstring& text) {
    Pairs pairs;
    for (const Option& option : ParseOptions(XString(text.c_str()))) {
        pairs.emplace_back(Wide(option.name), Wide(option.value));
    }
    return pairs;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A terminator ends the text, as it ends the host's.
    std::wstring text = Wide(Utf16View(data, size / sizeof(wchar_t))).c_str();
    for (const auto& [name, value] : Read(text)) {
        Require(!name.empty() && text.find(L'-' + name) != text.npos, "a name");
        Require(text.find(value) != text.npos, "a value");
    }

    // What the panel writes is read back.
    std::erase(text, L'"');
    const std::wstring half = text.substr(text.size() / 2);
    const XString formatted = FormatOptions(text.c_str(), half.c_str());
    Require(Read(Wide(formatted)) == Pairs{{L"xsltfile", text}, {L"ext", half}}, "round trip");
    return 0;
}
