#include "plugin/ParseOptions.h"

#include <utility>

namespace {

/// Position of the first of these units at or after `pos`, or that of the terminator.
template<class... Units>
size_t FindAny(const XString& text, size_t pos, Units... units) noexcept {
    while (pos <= text.Size() && ((text.At(pos) != units) && ...)) {
        ++pos;
    }
    return pos < text.Length() ? pos : text.Length();
}

} // namespace

void ParseOptions(OptionLists& lists, const XString& text) {
    lists.names.Clear();
    lists.values.Clear();
    const size_t endPos = text.Length();
    size_t pos = 1;
    while (pos < endPos) {
        size_t namePos = FindAny(text, pos, L'-') + 1;
        if (namePos > endPos) {
            break;
        }
        if (text.At(namePos) == L'-') {
            ++namePos;
        }
        const size_t nameEnd = FindAny(text, namePos, L'"', L'=', L' ');
        if (nameEnd <= namePos) {
            pos = nameEnd + 1;
            continue;
        }

        XString value;
        pos = nameEnd;
        while (text.At(pos) == L' ' || text.At(pos) == L'=') {
            ++pos;
        }
        if (text.At(pos) == L'"') {
            ++pos;
            const size_t quotePos = text.Find(L'"', pos);
            if (quotePos != 0) {
                value = text.Mid(pos, quotePos - 1);
                pos = quotePos + 1;
            }
        } else if (pos < endPos && text.At(pos) != L'-') {
            const size_t valueEnd = FindAny(text, pos, L' ');
            value = text.Mid(pos, valueEnd - 1);
            pos = valueEnd + 1;
        }
        lists.names.Add(text.Mid(namePos, nameEnd - 1));
        lists.values.Add(std::move(value));
    }
}

const wchar_t* FindOption(const OptionLists& lists, const wchar_t* name) noexcept {
    for (size_t i = 0; i < lists.names.Count(); ++i) {
        if (Compare(lists.names[i].Text(), name, 0, true) == 0) {
            return lists.values[i].Text();
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
