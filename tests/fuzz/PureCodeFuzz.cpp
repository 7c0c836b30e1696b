// Feeds the code that calls no Win32 with anything, natively and under sanitizers (scripts/fuzz.sh): it must
// read nothing out of bounds, and give what the plainest way to do the same gives.
//
// wchar_t has 16 bits here as on Windows, which the C library of the machine knows nothing of: no
// std::wstring.

#include "metadata/Document.h"
#include "metadata/XmlText.h"
#include "plugin/ParseOptions.h"
#include "support/Paths.h"
#include "support/Utf16Writer.h"

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

Text Plain(Utf16View text) {
    Text units;
    for (size_t i = 0; i < text.Size(); ++i) {
        units.push_back(text[i]);
    }
    return units;
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

/// What `append` hands to a writer.
template<class Append>
Text Written(Append append) {
    Utf16Writer measure(nullptr);
    append(measure);
    Text text(measure.Size());
    Utf16Writer store(text.data());
    append(store);
    return text;
}

void CheckTextTools(Utf16View text) {
    Text escaped = Plain(text);
    ReplaceAll(escaped, L'&', L"&amp;");
    ReplaceAll(escaped, L'"', L"&quot;");
    ReplaceAll(escaped, L'\'', L"&apos;");
    ReplaceAll(escaped, L'<', L"&lt;");
    ReplaceAll(escaped, L'>', L"&gt;");
    Require(Written([text](auto& out) { EscapeXmlText(out, text); }) == escaped, "escaping");

    Text name = Plain(text);
    for (const wchar_t unit : Plain(L"# &\"'<>()/\\:")) {
        std::erase(name, unit);
    }
    Require(Written([text](auto& out) { MakeElementName(out, text); }) == name, "element name");

    SplitValues values(text);
    Text joined;
    size_t count = 0;
    for (Utf16View value; values.Next(value); ++count) {
        const Text piece = Plain(value);
        Require(std::find(piece.begin(), piece.end(), L'\r') == piece.end(), "a piece holds a separator");
        if (count != 0) {
            joined.push_back(L'\r');
        }
        joined.insert(joined.end(), piece.begin(), piece.end());
    }
    Require(joined == Plain(text) && (count != 0) == !text.IsEmpty(), "splitting");
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
    facts.idTags = ParseTagBlob(data, static_cast<int32_t>(size));
    facts.properties = facts.idTags;
    std::memcpy(&facts.info, data, std::min(size, sizeof facts.info));
    for (const TagEntry& entry : facts.idTags) {
        CheckTextTools(entry.name);
        CheckTextTools(entry.value);
    }
    const Text document = Written([&facts](auto& out) { Document(out).Write(facts, facts); });
    Require(document.size() > 1000, "a line of the document's frame is missing");

    // The same bytes as text: a terminator ends it, as it ends the host's texts.
    const Text bytes = Plain(Utf16View(data, size / sizeof(wchar_t)));
    const XString text(bytes.data(),
                       static_cast<size_t>(std::find(bytes.begin(), bytes.end(), 0) - bytes.begin()));
    CheckTextTools(text);
    CheckPaths(text);
    CheckOptions(text);
    return 0;
}
