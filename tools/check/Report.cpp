#include "tools/check/Report.h"

#include <cstdio>

namespace {

/// With lines ended as Windows' programs expect them.
void Write(HANDLE file, const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\n' && !lines.ends_with('\r')) {
            lines += '\r';
        }
        lines += c;
    }
    DWORD written = 0;
    WriteFile(file, lines.data(), static_cast<DWORD>(lines.size()), &written, nullptr);
}

} // namespace

Report::Report(const std::filesystem::path& log)
    : m_log(CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)) {}

void Report::Add(Result result, Subject subject, const std::string& name, const ProgramRun& run) {
    constexpr const char* kWords[] = {"passed", "FAILED", "skipped"};
    ++m_counts[result];
    char line[32];
    std::snprintf(line, sizeof line, "%-7s %8.2f s  ", kWords[result], run.seconds);
    Print(line + name + "\n");
    if (result != kPassed) {
        const std::string end = run.problem.empty() ? "exit status " + std::to_string(run.exit) : run.problem;
        m_details += "\n==== " + name + ", " + kWords[result] + ", " + end + "\n" + run.output;
    }
    if (result == kFailed) {
        m_failed[subject] += ", " + name.substr(name.find(' ') + 1); // without the program
    }
}

bool Report::Finish(const std::string& problem) {
    Write(m_log.Get(), m_details);
    char counts[80];
    std::snprintf(counts, sizeof counts, "\n%d passed, %d failed, %d skipped\n", m_counts[kPassed],
                  m_counts[kFailed], m_counts[kSkipped]);
    Print(counts + Sentence(problem) + "\n");
    return problem.empty() && m_counts[kPassed] != 0 && m_counts[kFailed] == 0;
}

std::string Report::Sentence(const std::string& problem) const {
    constexpr const char* kMeanings[] = {
        "the plug-in does not write the document that it should, so do not use it here",
        "these style sheets do not make what they should, so do not use them here: ",
        "Transform.js does not make what it should",
        "tests of single parts failed, which may matter in rare cases alone",
    };
    std::string meanings;
    for (const Subject subject : {kDocument, kStyleSheet, kScript, kTest}) {
        if (!m_failed[subject].empty()) {
            meanings += std::string(meanings.empty() ? "" : "; ") + kMeanings[subject] +
                        (subject == kStyleSheet ? m_failed[subject].substr(2) : "");
        }
    }
    const std::string untested = problem.empty() ? "" : "The check was not completed: " + problem + ". ";
    if (!meanings.empty()) {
        return untested + "Not everything works on this machine: " + meanings + ".";
    }
    if (m_counts[kPassed] == 0) {
        return untested + "Nothing was tested.";
    }
    return untested + "Everything that was tested works on this machine" +
           (m_counts[kSkipped] == 0 ? "." : "; what was skipped could not be tried on it.");
}

void Report::Print(const std::string& text) const {
    Write(m_log.Get(), text);
    Write(GetStdHandle(STD_OUTPUT_HANDLE), text);
}
