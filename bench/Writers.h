#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One line of a tag, in UTF-16.
struct EntryLine {
    std::wstring element;
    std::wstring name;
    std::wstring value;
};

/// What the other ways to write a document start from: the converted file's tags, and everything around them
/// ready-made.
struct DocumentParts {
    /// `document` is what the plug-in wrote for these tags, of which none is left out.
    DocumentParts(const std::vector<uint8_t>& packedTags, const std::string& document);

    const std::vector<uint8_t>& tags; ///< a TagBlob
    std::vector<EntryLine> lines;     ///< its entries, named and split
    std::string head;                 ///< the plug-in's own bytes up to the tags
    std::string tail;                 ///< and after them
    size_t roomSize;                  ///< bytes, enough for the whole document
    std::unique_ptr<char[]> room;     ///< as large, kept from one writing to the next
};

// Both write the plug-in's bytes with one WriteFile.

/// The limit: one pass over the TagBlob, from its bytes to UTF-8, in memory that is there already. Head
/// and tail are copied.
void WriteInSinglePass(HANDLE file, const DocumentParts& document);

/// A tree of UTF-8 texts from the ready lines, printed by RapidXML.
void WriteWithRapidXml(HANDLE file, const DocumentParts& document);
