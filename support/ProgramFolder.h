#pragma once

#include "support/XString.h"

#include <windows.h>

/// The folder of a module's file, with its trailing backslash: of the process's program when `module` is
/// null. Empty when the system cannot tell (GetModuleFileNameW); a path of 1,000 units or more comes cut.
XString ModuleFolder(HMODULE module);
