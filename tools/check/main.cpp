#include "support/Owner.h"
#include "tools/check/Program.h"
#include "tools/check/Report.h"
#include "tools/check/SavedCache.h"
#include "tools/check/SystemFacts.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <sstream>
#include <vector>

// Checks the plug-in on this machine: conversions through every style sheet, and every test in a process of
// its own. The build and the package for the check put what it needs into the folders beside its own.

namespace {

namespace fs = std::filesystem;

std::atomic<bool> stopped = false;

BOOL WINAPI StopOnCtrlC(DWORD event) {
    stopped = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    return stopped;
}

fs::path BaseFolder() {
    wchar_t path[1000] = {};
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return fs::path(path).parent_path().parent_path();
}

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::vector<fs::path> FilesIn(const fs::path& folder, const wchar_t* extension) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Removes a folder with paths of any length below it; `folder` begins with "\\?\".
void RemoveTree(const std::wstring& folder) {
    WIN32_FIND_DATAW entry = {};
    OwnedFind search(FindFirstFileW((folder + L"\\*").c_str(), &entry));
    for (bool found = search.IsValid(); found; found = FindNextFileW(search.Get(), &entry)) {
        const std::wstring name = entry.cFileName;
        const std::wstring path = std::wstring(folder).append(L"\\").append(name);
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL); // may be read-only
            DeleteFileW(path.c_str());
        } else if (name != L"." && name != L"..") {
            RemoveTree(path);
        }
    }
    search.Reset();
    RemoveDirectoryW(folder.c_str());
}

/// The recording's document, and the result of each style sheet.
void Convert(const fs::path& base, const fs::path& temp, Report& report) {
    for (const fs::directory_entry& entry : fs::directory_iterator(base / "recording")) {
        fs::copy_file(entry.path(), temp / entry.path().filename());
    }
    const auto convert = [&](const std::string& name, const std::wstring& settings) {
        const ProgramRun run = RunProgram(base / "tools" / "dsphost.exe",
                                          L"tone.wav tone.flac --settings \"" + settings + L"\"", temp, temp);
        report.Add(run.IsDone() ? Report::kPassed : Report::kFailed, "dsphost " + name, run);
    };
    convert("document", L"");
    for (const fs::path& sheet : FilesIn(base / "dist" / "XSLT", L".xslt")) {
        if (!stopped) {
            convert(Utf8(sheet.filename()), L"-xsltfile=\\\"" + sheet.wstring() + L"\\\" -ext=.out");
        }
    }
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
        if (!list.IsDone() || names.empty()) {
            report.Add(Report::kFailed, Utf8(program.stem()) + " lists no tests", list);
        }
        for (const std::string& name : names) {
            if (stopped) {
                return;
            }
            const std::wstring filter(name.begin(), name.end());
            const ProgramRun run = RunProgram(program, L"--gtest_filter=" + filter, folder, temp);
            report.Add(ResultOf(run), Utf8(program.stem()) + " " + name, run);
        }
    }
}

void Check(const fs::path& base, const fs::path& temp, Report& report) {
    const SavedCache cache;
    fs::create_directories(temp);
    SetConsoleCtrlHandler(StopOnCtrlC, TRUE);
    SetErrorMode(SEM_NOGPFAULTERRORBOX); // programs that crash end at once
    SetEnvironmentVariableW(L"TEMP", temp.c_str());
    SetEnvironmentVariableW(L"TMP", temp.c_str());
    SetEnvironmentVariableW(L"TZ", L"Asia/Tokyo"); // as in tests/CMakeLists.txt; no effect on Windows
    Convert(base, temp, report);
    RunTests(base / "tests" / "run", temp, report);
}

/// A window that was opened for the check would close before anyone has read it.
void WaitForUser() {
    DWORD mode = 0;
    if (GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) &&
        GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode)) {
        std::puts("check.log has the details. Press Enter to end.");
        std::getchar();
    }
}

} // namespace

int main() {
    const fs::path base = BaseFolder();
    const fs::path temp = base / "temp";
    Report report(base / "check.log");
    report.Print(SystemFacts(base / "dist" / "WriteMetadataFile.dll") + "\n");
    std::string problem;
    try {
        Check(base, temp, report);
        problem = stopped ? "stopped" : "";
    } catch (const std::exception& exception) {
        problem = exception.what();
    }
    RemoveTree(L"\\\\?\\" + temp.wstring());
    const bool passed = report.Finish(problem);
    WaitForUser();
    return passed ? 0 : 1;
}
