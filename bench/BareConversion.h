#pragma once

#include "decoders/DecoderRecords.h"

#include <windows.h>

#include <functional>
#include <string>

/// Writes a document to its open file.
using WriteDocument = std::function<void(HANDLE file)>;

/// Counted by the benchmark's decoder library: the calls of Create, Get, Open and Destroy.
extern "C" __declspec(dllexport) int decoderCalls;

/// What a conversion asks of the system and of decoder libraries, whoever writes the document and however:
/// the waits for the log's mutex, existence checks, time stamps, the registry, the libraries, the output
/// file. There is no trace, and no text is put together: every path is ready.
class BareConversion {
public:
    std::wstring source; ///< empty when the source is no file
    std::wstring converted;
    std::wstring output;
    const wchar_t* extension = nullptr; ///< of both files
    std::wstring library;               ///< the decoder library for both files; empty when none decodes them
    std::wstring decoderPattern;        ///< finds every library; needed when none decodes the files

    /// One conversion: all the calls in the plug-in's order, and the document by `write`.
    void Run(const WriteDocument& write) const;

private:
    void ReadFromDecoder(const std::wstring& file, OpenFlags flag) const;
};
