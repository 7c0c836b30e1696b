#pragma once

#include "support/Owner.h"

#include "tools/check/Program.h"

/// The lines on the console and in check.log, and in the log, at its end, the whole output of what failed.
class Report {
public:
    /// When the log cannot be written, lines go to the console alone.
    explicit Report(const std::filesystem::path& log);

    enum Result { kPassed, kFailed, kSkipped };

    void Add(Result result, const std::string& name, const ProgramRun& run);

    /// Ends the lines with the counts and the problem that ended the check, if any. True when there is none,
    /// something ran and nothing failed.
    bool Finish(const std::string& problem);

    /// Each line ends with LF.
    void Print(const std::string& text) const;

private:
    OwnedFile m_log;
    int m_counts[3] = {};
    std::string m_failures;
};
