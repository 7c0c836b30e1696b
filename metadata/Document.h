#pragma once

#include "metadata/TagList.h"
#include "metadata/WaveFormat.h"
#include "support/XStringList.h"

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

/// All that the document says of one file.
struct FileFacts {
    FileTexts texts;
    AudioInfo info = {};
    TagList properties;
    TagList idTags;
};

/// Name and folder parts of a path; the times stay empty.
FileTexts SplitFileTexts(const XString& path);

/// The lines of the metadata document, without line ends. Pure code.
XStringList BuildDocument(const FileFacts& source, const FileFacts& converted);
