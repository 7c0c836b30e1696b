#include "support/ProgramFolder.h"

#include "support/Paths.h"

#include <iterator>

XString ModuleFolder(HMODULE module) {
    wchar_t path[1000];
    const DWORD size = GetModuleFileNameW(module, path, static_cast<DWORD>(std::size(path)));
    return FolderOfProgram(XString(path, size));
}

XString FolderOfProgram(const XString& programPath) {
    if (programPath.At(1) != L'"') {
        return GetFilePath(programPath);
    }
    const size_t quotePos = programPath.Find(L'"', 2);
    return GetFilePath(programPath.Mid(2, quotePos != 0 ? quotePos - 1 : programPath.Size()));
}
