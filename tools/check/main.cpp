#include "tools/PrivateRegistry.h"
#include "tools/check/Conversions.h"
#include "tools/check/Files.h"
#include "tools/check/SystemFacts.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <sstream>
#include <string_view>
#include <vector>

// Checks the plug-in on this machine: conversions through every style sheet, and every test in a process of
// its own. The package for the check has what it needs in the folders beside its own.
//
// With the argument --accept, what the conversions make becomes what is expected of them, and nothing else is
// tested.

namespace {

namespace fs = std::filesystem;

std::atomic<bool> stopped = false;
std::atomic<bool> closing = false;

BOOL WINAPI Stop(DWORD event) {
    stopped = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The window is closed, or the user logs off: the system ends this process when the handler returns.
        closing = true;
        Sleep(INFINITE); // until main returns
    }
    return TRUE;
}

fs::path BaseFolder() {
    wchar_t path[1000] = {};
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return fs::path(path).parent_path().parent_path();
}

/// Those of the package's files that are not there, a comma before each.
std::string MissingFiles(const fs::path& base) {
    std::string missing;
    std::istringstream names(ReadFile(base / "tests" / "files.txt"));
    for (std::string name; std::getline(names, name);) {
        if (!fs::exists(base / name)) {
            missing += ", " + name;
        }
    }
    return missing;
}

/// The names in what a GoogleTest program lists: "Suite." and below it, indented, its tests.
std::vector<std::string> TestNames(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream lines(list);
    std::string suite;
    for (std::string line; std::getline(lines, line);) {
        line.erase(std::min(line.find_first_of("#\r"), line.size())); // a comment or the line's end
        line.erase(line.find_last_not_of(' ') + 1);
        if (line.starts_with("  ")) {
            names.push_back(suite + line.substr(2));
        } else if (line.ends_with('.')) {
            suite = line;
        }
    }
    return names;
}

Report::Result ResultOf(const ProgramRun& run) {
    if (run.IsDone() && run.output.find("[  PASSED  ] 1 test.") != std::string::npos) {
        return Report::kPassed;
    }
    const bool isSkipped = run.IsDone() && run.output.find("[  SKIPPED ] 1 test") != std::string::npos;
    return isSkipped ? Report::kSkipped : Report::kFailed;
}

void RunTests(const fs::path& folder, const fs::path& temp, Report& report) {
    for (const fs::path& program : FilesIn(folder, L".exe")) {
        const ProgramRun list = RunProgram(program, L"--gtest_list_tests", folder, temp);
        const std::vector<std::string> names = TestNames(list.output);
        if ((!list.IsDone() || names.empty()) && !stopped) {
            report.Add(Report::kFailed, Report::kTest, Utf8(program.stem()) + " lists no tests", list);
        }
        for (const std::string& name : names) {
            const std::wstring filter(name.begin(), name.end());
            const ProgramRun run = RunProgram(program, L"--gtest_filter=" + filter, folder, temp);
            if (stopped) { // and with it, perhaps, the program
                return;
            }
            report.Add(ResultOf(run), Report::kTest, Utf8(program.stem()) + " " + name, run);
        }
    }
}

/// What this check, or an earlier one that was ended, has left.
void RemoveLeftovers(const fs::path& temp) {
    RemoveTree(temp);
    PrivateRegistry::RemoveAll();
}

void Check(const fs::path& base, const fs::path& temp, bool isAccepting, Report& report) {
    fs::create_directories(temp);
    SetErrorMode(SEM_NOGPFAULTERRORBOX); // programs that crash end at once
    SetEnvironmentVariableW(L"TEMP", temp.c_str());
    SetEnvironmentVariableW(L"TMP", temp.c_str());
    SetEnvironmentVariableW(L"TZ", L"Asia/Tokyo"); // as in tests/CMakeLists.txt; no effect on Windows
    Conversions conversions;
    conversions.base = base;
    conversions.temp = temp;
    conversions.isAccepting = isAccepting;
    conversions.isStopped = [] { return stopped.load(); };
    conversions.Run(report);
    if (!isAccepting && !stopped) {
        RunTests(base / "tests" / "run", temp, report);
    }
}

bool RunCheck(const fs::path& base, bool isAccepting, Report& report) {
    const fs::path temp = base / "temp";
    std::string problem;
    RemoveLeftovers(temp);
    try {
        Check(base, temp, isAccepting, report);
        problem = stopped ? "it was stopped" : "";
    } catch (const std::exception& exception) {
        problem = exception.what();
    }
    RemoveLeftovers(temp);
    return report.Finish(problem);
}

/// A window that was opened for the check would close before anyone has read it.
void WaitForUser() {
    DWORD mode = 0;
    if (!closing && GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) &&
        GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode)) {
        std::puts("Press Enter to end.");
        std::getchar();
    }
}

} // namespace

int main(int count, char** arguments) {
    const bool isAccepting = count > 1 && std::string_view(arguments[1]) == "--accept";
    const fs::path base = BaseFolder();
    SetConsoleCtrlHandler(Stop, TRUE);
    Report report(base / "check.log");
    const std::string missing = MissingFiles(base);
    bool passed = false;
    if (!report.IsOpen()) {
        report.Print(
            "This folder cannot be written to: unzip the archive into another one, such as a folder of "
            "your documents.\n");
    } else if (!missing.empty()) {
        report.Print("Unzip the archive again, for files are missing, perhaps removed by a virus scanner: " +
                     missing.substr(2) + ".\n");
    } else {
        report.Print(
            SystemFacts(base / "dist" / "WriteMetadataFile.dll", ReadFile(base / "tests" / "commit.txt")) +
            "\n");
        passed = RunCheck(base, isAccepting, report);
        if (!closing) {
            std::puts("The details are in check.log.");
        }
    }
    WaitForUser();
    return passed ? 0 : 1;
}
