#pragma once

#include "support/XString.h"

/// What the command line asks for. All paths are absolute.
struct Options {
    XString plugin;    ///< the plug-in library
    XString settings;  ///< settings text for the plug-in, as the user stored it
    XString traceFile; ///< receives the plug-in's trace; empty for none
    XString errorFile; ///< receives the plug-in's error lines; empty for none
    XString source;    ///< "-" when there is no source file on disk
    XString converted;
    bool panel = false; ///< show the settings panel and convert nothing
    bool help = false;
};

/// Text for --help.
extern const wchar_t* const kHelp;

/// Reads the process's arguments (CommandLineToArgvW). The result is empty, or says what is wrong with them.
XString ParseCommandLine(Options& options);
