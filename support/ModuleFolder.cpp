#include "support/ModuleFolder.h"

#include "support/Paths.h"

#include <iterator>

XString ModuleFolder(HMODULE module) {
    wchar_t buffer[1000];
    const DWORD size = GetModuleFileNameW(module, buffer, static_cast<DWORD>(std::size(buffer)));
    const XString path(buffer, size);
    if (path.At(1) != L'"') {
        return GetFilePath(path);
    }
    const size_t quotePos = path.Find(L'"', 2);
    return GetFilePath(path.Mid(2, quotePos != 0 ? quotePos - 1 : path.Size()));
}
