#pragma once

#include "support/XString.h"

#include <windows.h>

/// The folder of a module's file, with its trailing backslash; for null that of the process's program
/// (GetModuleFileNameW). The path may stand in double quotes as in a command line, and one of 1,000 units or
/// more is cut. Empty when the system does not know it.
XString ModuleFolder(HMODULE module);
