#include "support/ModuleFolder.h"

#include "support/Paths.h"

#include <iterator>

XString ModuleFolder(HMODULE module) {
    wchar_t path[1000];
    const DWORD size = GetModuleFileNameW(module, path, static_cast<DWORD>(std::size(path)));
    return ModuleFolder(XString(path, size));
}
