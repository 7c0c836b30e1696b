#pragma once

#include "decoders/DecoderRecords.h"

#include <windows.h>

#include <functional>
#include <string>

/// What a conversion asks of the system and of decoder libraries, whoever writes the document and however:
/// the waits for the log's mutex, existence checks, times, the registry, the libraries, the output file. It
/// traces nothing and puts no text together: every path is ready.
class BareConversion {
public:
    std::wstring source; ///< empty when there is no source file
    std::wstring converted;
    std::wstring output;
    std::wstring library;        ///< the decoder library for both files; empty when none decodes them
    std::wstring decoderPattern; ///< finds every library; needed when none decodes the files

    /// Makes the calls in the plug-in's order; `write` writes the document to the open output file.
    void Run(const std::function<void(HANDLE file)>& write) const;

private:
    void ReadFromDecoder(const std::wstring& file, OpenFlags flag) const;
};
