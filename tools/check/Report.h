#pragma once

#include "support/Owner.h"

#include "tools/check/Program.h"

/// The lines on the console and in check.log; in the log also the whole output of what failed.
class Report {
public:
    explicit Report(const std::filesystem::path& log);

    /// Whether the log could be made.
    bool IsOpen() const { return m_log.IsValid(); }

    enum Result { kPassed, kFailed, kSkipped };

    /// What a failure says something about.
    enum Subject { kDocument, kStyleSheet, kScript, kTest };

    void Add(Result result, Subject subject, const std::string& name, const ProgramRun& run);

    /// Ends with a line of the counts and a sentence for the user; `problem` is what ended the check early,
    /// if anything did. True when nothing did, something ran and nothing failed.
    bool Finish(const std::string& problem);

    /// Each line ends with LF.
    void Print(const std::string& text) const;

private:
    std::string Sentence(const std::string& problem) const;

    OwnedFile m_log;
    int m_counts[3] = {};
    std::string m_failed[4]; // names by subject, each after ", "
    std::string m_details;
};
