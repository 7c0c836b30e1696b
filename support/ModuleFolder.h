#pragma once

#include "support/XString.h"

#include <windows.h>

/// The folder of a module's file, with its trailing backslash; for null that of the process's program. Empty
/// when the system does not know it (GetModuleFileNameW); a path of 1,000 units or more is cut.
XString ModuleFolder(HMODULE module);
