#pragma once

#include "tools/check/Report.h"

#include <functional>

/// Converts the recording, and compares the document and what each style sheet makes of it with the expected
/// files; then runs the script that applies style sheets without the plug-in.
class Conversions {
public:
    std::filesystem::path base;      ///< holds the folders "dist", "tools", "recording" and "expected"
    std::filesystem::path temp;      ///< for what is made; absolute
    std::function<bool()> isStopped; ///< asked before each program
    bool isAccepting = false;        ///< what is made becomes the expected files

    void Run(Report& report) const;

private:
    ProgramRun Convert(const std::wstring& settings) const;
    ProgramRun Transform(const std::filesystem::path& styleSheet) const;
    Report::Result Compare(ProgramRun& run, const wchar_t* made, const std::wstring& expected) const;
    std::filesystem::path StyleSheets() const { return base / "dist" / "XSLT"; }
};
