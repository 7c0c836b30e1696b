#include "support/Paths.h"

XString GetFileName(const XString& path) {
    return path.Mid(path.FindLast(L'\\') + 1, path.Size());
}

XString GetFileNameNoExt(const XString& path) {
    XString name = GetFileName(path);
    if (const size_t dotPos = name.FindLast(L'.'); dotPos != 0) {
        name.DropLast(name.Length() - dotPos);
    }
    return name;
}

XString GetFileExt(const XString& path) {
    const size_t dotPos = path.FindLast(L'.');
    return dotPos > path.FindLast(L'\\') ? path.Mid(dotPos, path.Size()) : XString(L".");
}

XString GetFilePath(const XString& path) {
    const size_t separatorPos = path.FindLast(L'\\');
    return path.Mid(1, separatorPos != 0 ? separatorPos : path.Size());
}

void EnsureTrailingBackslash(XString& path) {
    if (path.IsEmpty() || path.At(path.Size()) != L'\\') {
        path.Append(L"\\");
    }
}

void StripBackslashes(XString& path) {
    size_t size = path.Size();
    while (size > 0 && path.At(size) == L'\\') {
        --size;
    }
    path.DropLast(path.Size() - size);
}

XString MakeLongPath(const XString& path, size_t limit) {
    const bool isLong = path.Size() >= limit && Compare(path.Text(), L"\\\\", 2) != 0;
    XString longPath(isLong ? L"\\\\?\\" : L"");
    longPath.Append(path);
    return longPath;
}
