#pragma once

#include <filesystem>
#include <string>

/// The result of running a program.
struct ProgramRun {
    double seconds = 0;
    std::string problem;    ///< why it did not end by itself; empty when it did
    unsigned long exit = 0; ///< its exit status
    std::string output;     ///< all that it wrote, errors included

    bool IsDone() const { return problem.empty() && exit == 0; }
};

/// Runs a program in `folder` and waits until it ends; after ten minutes ends it and the programs that it
/// started. It has no input, and its output goes through a file in `temp` that is deleted before returning.
ProgramRun RunProgram(const std::filesystem::path& program, const std::wstring& arguments,
                      const std::filesystem::path& folder, const std::filesystem::path& temp);
