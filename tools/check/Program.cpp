#include "tools/check/Program.h"

#include "support/Owner.h"

#include <chrono>

namespace {

constexpr DWORD kTimeLimit = 600'000; // ms

/// Open for the program to write to and for us to read from.
OwnedFile CreateOutput(const std::filesystem::path& temp) {
    // Each run has a file of its own: a program that is left running may keep it open.
    static int count = 0;
    const std::filesystem::path path = temp / ("output-" + std::to_string(++count));
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return OwnedFile(CreateFileW(
        path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
}

std::string ReadOutput(HANDLE file) {
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::string text(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    text.resize(read);
    return text;
}

} // namespace

ProgramRun RunProgram(const std::filesystem::path& program, const std::wstring& arguments,
                      const std::filesystem::path& folder, const std::filesystem::path& temp) {
    ProgramRun run;
    const OwnedFile output = CreateOutput(temp);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.Get();
    startup.hStdError = output.Get();
    std::wstring command = L"\"" + program.wstring() + L"\" " + arguments;
    PROCESS_INFORMATION started = {};
    const auto start = std::chrono::steady_clock::now();
    if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                        folder.c_str(), &startup, &started)) {
        run.problem = "cannot be started (error " + std::to_string(GetLastError()) + ")";
        return run;
    }
    const OwnedHandle process(started.hProcess);
    const OwnedHandle thread(started.hThread);
    // When we are killed, the job's handle closes and its programs end as well.
    const OwnedHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    AssignProcessToJobObject(job.Get(),
                             process.Get()); // fails where we run in a job ourselves, before Windows 8
    ResumeThread(thread.Get());
    if (WaitForSingleObject(process.Get(), kTimeLimit) != WAIT_OBJECT_0) {
        run.problem = "was ended after " + std::to_string(kTimeLimit / 1000) + " s";
        TerminateJobObject(job.Get(), 1);
        TerminateProcess(process.Get(), 1);
        WaitForSingleObject(process.Get(), INFINITE);
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    GetExitCodeProcess(process.Get(), &run.exit);
    run.output = ReadOutput(output.Get());
    return run;
}
