#pragma once

#include "decoders/DecoderRecords.h"
#include "metadata/TagList.h"
#include "metadata/XmlWriter.h"
#include "support/XString.h"

/// Texts of one file for the document, unescaped. All are empty when there is no such file on disk.
struct FileTexts {
    XString name;
    XString nameNoExt;
    XString ext;
    XString path;
    XString created;
    XString modified;
    XString accessed;
};

/// The facts of one file: everything that the document says about it. The lists are read where they lie.
struct FileFacts {
    FileTexts texts;
    AudioInfo info = {};
    TagList properties;
    TagList idTags;
};

/// Name and folder parts of a path; the times stay empty.
FileTexts SplitFileTexts(const XString& path);

/// Writes the metadata document line by line, in one pass over the facts, and flushes the writer. Allocates
/// nothing. Pure code.
void WriteDocument(XmlWriter& out, const FileFacts& source, const FileFacts& converted);
