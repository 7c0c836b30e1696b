#include "metadata/Document.h"

#include "support/Paths.h"

FileTexts SplitFileTexts(const XString& path) {
    FileTexts texts;
    texts.name = GetFileName(path);
    texts.nameNoExt = GetFileNameNoExt(path);
    texts.ext = GetFileExt(path);
    texts.path = GetFilePath(path);
    return texts;
}
