#pragma once

#include "bench/Blobs.h"

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A part of a document without attributes.
struct FrameElement {
    enum Kind { Begin, End, Leaf } kind; ///< End has neither name nor text, Begin no text
    std::wstring name;
    std::wstring text;
};

/// What every way of writing starts from: the converted file's tags as the host hands them over, and all that
/// stands around them ready-made.
struct DocumentParts {
    Blob tags;
    std::string head; ///< the plug-in's own bytes up to the tags
    std::string tail; ///< and after them
    std::vector<FrameElement> headElements;
    std::vector<FrameElement> tailElements;
    std::unique_ptr<char[]> room; ///< for the whole document, kept from one writing to the next

    /// Takes head and tail from what the plug-in wrote for these tags; ASCII without entities.
    DocumentParts(Blob&& packedTags, const std::string& written);
};

/// Makes a whole document in a sink: Begin, End, Leaf (name, text) and Entry (element, name, value), which
/// writes one element of a tag. Names are filtered and values split here.
template<class Sink>
void Build(Sink& sink, const DocumentParts& document) {
    const auto put = [&sink](const FrameElement& element) {
        switch (element.kind) {
        case FrameElement::Begin:
            return sink.Begin(element.name);
        case FrameElement::End:
            return sink.End();
        case FrameElement::Leaf:
            return sink.Leaf(element.name, element.text);
        }
    };
    for (const FrameElement& element : document.headElements) {
        put(element);
    }
    std::wstring element;
    ForEachEntry(document.tags, [&](const PackedEntry& entry) {
        if (entry.hasData || *entry.value == 0) {
            return;
        }
        element.clear();
        for (const wchar_t* unit = entry.name; *unit != 0; ++unit) {
            if (*unit >= 128 || std::wstring_view(L"# &\"'<>()/\\:").find(*unit) == std::wstring_view::npos) {
                element += *unit;
            }
        }
        std::wstring_view rest(entry.value);
        for (size_t cr = rest.find(L'\r'); cr != std::wstring_view::npos; cr = rest.find(L'\r')) {
            sink.Entry(element, entry.name, rest.substr(0, cr));
            rest.remove_prefix(cr + 1);
        }
        sink.Entry(element, entry.name, rest);
    });
    for (const FrameElement& tailElement : document.tailElements) {
        put(tailElement);
    }
}

// Ways to write a document, each with one WriteFile. The last three keep to what the document says, but put
// no line ends or tabs between the elements.

/// The limit: one pass over the packed list, from its bytes to UTF-8, in memory that is there already. Head
/// and tail are copied.
void WriteInSinglePass(HANDLE file, const DocumentParts& document);

/// A tree of UTF-8 texts, printed.
void WriteWithRapidXml(HANDLE file, const DocumentParts& document);

/// IXmlWriter with a stream in memory.
void WriteWithXmlLite(HANDLE file, const DocumentParts& document);

/// A DOM, saved to a stream in memory. Needs COM.
void WriteWithMsxml(HANDLE file, const DocumentParts& document);

/// Whether two documents have the same elements, attributes and texts in the same order. Both are parsed in
/// place.
bool SaysTheSame(std::string&& first, std::string&& second);
