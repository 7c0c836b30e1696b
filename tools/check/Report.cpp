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

void Report::Add(Result result, const std::string& name, const ProgramRun& run) {
    constexpr const char* kWords[] = {"passed", "FAILED", "skipped"};
    ++m_counts[result];
    char line[32];
    std::snprintf(line, sizeof line, "%-7s %8.2f s  ", kWords[result], run.seconds);
    Print(line + name + "\n");
    if (result != kPassed) {
        const std::string end = run.problem.empty() ? "exit status " + std::to_string(run.exit) : run.problem;
        m_failures += "\n==== " + name + ", " + kWords[result] + ", " + end + "\n" + run.output;
    }
}

bool Report::Finish(const std::string& problem) {
    char counts[80];
    std::snprintf(counts, sizeof counts, "\n%d passed, %d failed, %d skipped", m_counts[kPassed],
                  m_counts[kFailed], m_counts[kSkipped]);
    Print(counts + (problem.empty() ? problem : "; ended early: " + problem) + "\n");
    Write(m_log.Get(), m_failures);
    return problem.empty() && m_counts[kPassed] != 0 && m_counts[kFailed] == 0;
}

void Report::Print(const std::string& text) const {
    Write(m_log.Get(), text);
    Write(GetStdHandle(STD_OUTPUT_HANDLE), text);
}
