#include "support/Owner.h"
#include "support/ProgramFolder.h"
#include "support/XFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// dsphost as its users see it: arguments, output and exit status, with real files in a folder of their own.

namespace {

/// 16 bytes of audio, which are UTF-16 text, behind a format and before another chunk.
constexpr char kWave[] = "RIFF\x3C\0\0\0WAVE"
                         "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x80\x3E\0\0\x02\0\x10\0"
                         "data\x10\0\0\0<\0a\0u\0d\0i\0o\0>\0!\0"
                         "junk\0\0\0\0";

struct Outcome {
    DWORD exitStatus = 0;
    std::string output; // both streams
};

class HostTool : public testing::Test {
protected:
    HostTool() {
        wchar_t folder[MAX_PATH + 1] = {};
        wchar_t file[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH + 1, folder);
        GetTempFileNameW(folder, L"hst", 0, file);
        DeleteFileW(file);
        CreateDirectoryW(file, nullptr);
        m_folder = std::wstring(file) + L"\\";
        for (const wchar_t* name : {L"s.wave", L"c.wave"}) {
            Write(name, kWave, sizeof kWave - 1);
        }
    }
    ~HostTool() override {
        for (const wchar_t* name :
             {L"s.wave", L"c.wave", L"c.xml", L"c.txt", L"gone.xml", L"t", L"e", L"out"}) {
            DeleteFileW((m_folder + name).c_str());
        }
        RemoveDirectoryW(m_folder.c_str());
    }

    void Write(const wchar_t* name, const char* bytes, size_t size) const {
        XFile file;
        EXPECT_TRUE(file.Open(XString((m_folder + name).c_str()), GENERIC_WRITE, CREATE_ALWAYS) &&
                    file.Write(bytes, size));
    }

    std::string ReadAll(const wchar_t* name) const {
        XFile file;
        std::string bytes;
        char byte = 0;
        DWORD read = 0;
        file.Open(XString((m_folder + name).c_str()), GENERIC_READ, OPEN_EXISTING);
        while (ReadFile(file.Handle(), &byte, 1, &read, nullptr) && read == 1) {
            bytes += byte;
        }
        return bytes;
    }

    bool Exists(const wchar_t* name) const {
        return GetFileAttributesW((m_folder + name).c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    /// Runs dsphost in the folder; "@" in the arguments stands for the folder of the test programs.
    Outcome Run(std::wstring arguments) const {
        const std::wstring programs = ModuleFolder(nullptr).Text();
        if (const size_t at = arguments.find(L'@'); at != std::wstring::npos) {
            arguments.replace(at, 1, programs);
        }
        std::wstring command = L"\"" + programs + L"..\\..\\tools\\dsphost.exe\" " + arguments;
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        OwnedFile out(CreateFileW((m_folder + L"out").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                  CREATE_ALWAYS, 0, nullptr));
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out.Get();
        startup.hStdError = out.Get();
        PROCESS_INFORMATION process = {};
        Outcome outcome;
        EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   m_folder.c_str(), &startup, &process));
        const OwnedHandle thread(process.hThread);
        const OwnedHandle owned(process.hProcess);
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 30000), WAIT_OBJECT_0);
        GetExitCodeProcess(process.hProcess, &outcome.exitStatus);
        out.Reset();
        outcome.output = ReadAll(L"out");
        return outcome;
    }

private:
    std::wstring m_folder;
};

TEST_F(HostTool, TellsWhatCameOut) {
    const struct {
        const wchar_t* arguments;
        DWORD exitStatus;
        std::vector<const char*> outputs;
    } rows[] = {
        {L"s.wave c.wave", 0, {"c.wave: ", "\\c.xml, "}},
        {L"--settings \"-ext=\\\".txt\\\"\" - c.wave", 0, {"\\c.txt, "}},
        {L"--repeat 3 s.wave c.wave", 0, {"3 conversions, each "}},
        {L"s.wave gone.wave", 1, {"wav.dll cannot read", "file does not exist '", "gone.wave'\n"}},
        {L"s.wave c._", 1, {"extension ._", "did not write", "Write XML incompatible"}},
        {L"--plugin @..\\..\\tools\\decoder\\wav.dll s.wave c.wave", 1, {"does not export DSP_Create"}},
        {L"--plugin none.dll s.wave c.wave", 1, {"Cannot load", "none.dll (error 126)"}},
        {L"--plugin @fixtures\\rogue_plugin.dll --settings write s.wave c.wave", 0, {"\\c.xml, 0 bytes"}},
        {L"--plugin @fixtures\\rogue_plugin.dll --settings write,report s.wave c.wave",
         1,
         {"reports:\n<audio>!\n"}},
        {L"--plugin @fixtures\\rogue_plugin.dll --settings write,change s.wave c.wave",
         1,
         {"changed the audio"}},
        {L"--plugin @fixtures\\rogue_plugin.dll --settings write,refuse s.wave c.wave",
         1,
         {"answers 0 to DSP_EndConversion"}},
        {L"--plugin @fixtures\\rogue_plugin.dll --settings nothing s.wave c.wave", 1, {"did not write"}},
        {L"--errors none\\e s.wave c.wave", 1, {"Cannot create"}},
        {L"--help", 0, {"Usage: dsphost"}},
        {L"", 2, {"one SOURCE and one CONVERTED"}},
        {L"a b c", 2, {"one SOURCE and one CONVERTED"}},
        {L"--none a b", 2, {"unknown option --none"}},
        {L"a b --trace", 2, {"--trace needs a value"}},
        {L"--repeat 0 a b", 2, {"--repeat needs a number"}},
        {L"--repeat 4294967297 a b", 2, {"--repeat needs a number"}},
        {L"--repeat 2x a b", 2, {"--repeat needs a number"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.arguments);
        const Outcome outcome = Run(row.arguments);
        EXPECT_EQ(outcome.exitStatus, row.exitStatus);
        for (const char* expected : row.outputs) {
            EXPECT_NE(outcome.output.find(expected), std::string::npos) << expected << "\nin\n"
                                                                        << outcome.output;
        }
    }
    EXPECT_TRUE(Exists(L"c.xml") && Exists(L"c.txt"));
}

TEST_F(HostTool, KeepsTraceAndErrorsInFiles) {
    EXPECT_EQ(Run(L"--trace t --errors e s.wave gone.wave").exitStatus, 1u);
    const std::string trace = ReadAll(L"t");
    const std::string errors = ReadAll(L"e");
    const std::string live("I\0s\0L\0i\0v\0e\0", 12);
    const std::string error("E\0r\0r\0o\0r\0 \0r\0e\0a\0d\0i\0n\0g\0", 26);
    EXPECT_EQ(trace.substr(0, live.size()), live);
    EXPECT_EQ(errors.substr(0, error.size()), error);
    EXPECT_NE(trace.find(error), std::string::npos);
}

} // namespace
