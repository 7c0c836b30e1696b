// Feeds the code that calls no Win32 with anything, natively and under sanitizers (scripts/fuzz.sh): it must
// read nothing out of bounds, and give what the plainest way to do the same gives.
//
// wchar_t has 16 bits here as on Windows, which the C library of the machine knows nothing of: no
// std::wstring.

#include "metadata/Document.h"
#include "metadata/XmlText.h"
#include "plugin/ParseOptions.h"
#include "support/Paths.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using Text = std::vector<wchar_t>;

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "wrong: %s\n", what);
        std::abort();
    }
}

Text Plain(const XString& text) {
    return Text(text.Text(), text.Text() + text.Size());
}

Text Plain(const wchar_t* text) {
    return Text(text, text + TextSize(text));
}

void ReplaceAll(Text& text, wchar_t unit, const wchar_t* replacement) {
    const Text by = Plain(replacement);
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == unit) {
            text.erase(text.begin() + static_cast<ptrdiff_t>(at));
            text.insert(text.begin() + static_cast<ptrdiff_t>(at), by.begin(), by.end());
            at += by.size() - 1;
        }
    }
}

void CheckTextTools(const XString& text) {
    Text escaped = Plain(text);
    ReplaceAll(escaped, L'&', L"&amp;");
    ReplaceAll(escaped, L'"', L"&quot;");
    ReplaceAll(escaped, L'\'', L"&apos;");
    ReplaceAll(escaped, L'<', L"&lt;");
    ReplaceAll(escaped, L'>', L"&gt;");
    Require(Plain(EscapeXmlText(text)) == escaped, "escaping");

    Text name = Plain(text);
    for (const wchar_t unit : Plain(L"# &\"'<>()/\\:")) {
        std::erase(name, unit);
    }
    Require(Plain(MakeElementName(text)) == name, "element name");

    XStringList pieces;
    SplitValues(pieces, text);
    Text joined;
    for (size_t i = 0; i < pieces.Count(); ++i) {
        const Text piece = Plain(pieces[i]);
        Require(std::find(piece.begin(), piece.end(), L'\r') == piece.end(), "a piece holds a separator");
        if (i != 0) {
            joined.push_back(L'\r');
        }
        joined.insert(joined.end(), piece.begin(), piece.end());
    }
    Require(joined == Plain(text) && (pieces.Count() != 0) == !text.IsEmpty(), "splitting");
}

void CheckPaths(const XString& path) {
    Text folderAndName = Plain(GetFilePath(path));
    const Text name = Plain(GetFileName(path));
    if (path.FindLast(L'\\') != 0) {
        folderAndName.insert(folderAndName.end(), name.begin(), name.end());
    }
    Require(folderAndName == Plain(path), "folder and name");

    Text nameAndExt = Plain(GetFileNameNoExt(path));
    const Text ext = Plain(GetFileExt(path));
    Require(!ext.empty() && ext[0] == L'.', "extension without its dot");
    if (nameAndExt.size() != name.size()) {
        nameAndExt.insert(nameAndExt.end(), ext.begin(), ext.end());
    }
    Require(nameAndExt == name, "name and extension");
}

void CheckOptions(const XString& text) {
    OptionLists lists;
    ParseOptions(lists, text);
    Require(lists.names.Count() == lists.values.Count(), "names without values");
    size_t units = 0;
    for (size_t i = 0; i < lists.names.Count(); ++i) {
        Require(!lists.names[i].IsEmpty(), "an option without a name");
        units += lists.names[i].Size() + lists.values[i].Size() + 1;
    }
    Require(units <= text.Size(), "more came out than went in");
    FindOption(lists, L"ext");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FileFacts facts;
    ParseTagBlob(facts.idTags, data, static_cast<int32_t>(size));
    ParseTagBlob(facts.properties, data, static_cast<int32_t>(size));
    std::memcpy(&facts.info, data, std::min(size, sizeof facts.info));
    for (const TagEntry& entry : facts.idTags) {
        CheckTextTools(entry.name);
        CheckTextTools(entry.value);
    }
    const XStringList lines = BuildDocument(facts, facts);
    Require(lines.Count() >= 47, "a line of the document's frame is missing");

    // The same bytes as text: a terminator ends it, as it ends the host's texts.
    const XString bytes = XString::FromBytes(data, size / sizeof(wchar_t));
    const XString text(bytes.Text());
    CheckTextTools(text);
    CheckPaths(text);
    CheckOptions(text);
    return 0;
}
