#pragma once

#include <windows.h>

/// The plug-in's own module; null until the library's entry has run.
extern HMODULE moduleHandle;
