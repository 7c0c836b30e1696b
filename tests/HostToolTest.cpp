#include "support/ProgramFolder.h"
#include "tests/Files.h"

// dsphost as its users see it: arguments, output and exit status, with real files in a folder of their own.

namespace {

/// 16 bytes of audio, which are UTF-16 text, behind a format and before another chunk.
constexpr char kWave[] = "RIFF\x3C\0\0\0WAVE"
                         "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x80\x3E\0\0\x02\0\x10\0"
                         "data\x10\0\0\0<\0a\0u\0d\0i\0o\0>\0!\0"
                         "junk\0\0\0\0";

class HostTool : public testing::Test {
protected:
    HostTool() {
        for (const wchar_t* name : {L"s.wave", L"c.wave"}) {
            WriteTestFile(m_folder.Path(name), std::string(kWave, sizeof kWave - 1));
        }
    }

    std::wstring Path(const wchar_t* name) const { return m_folder.Path(name); }

    /// Where both streams of the last run went. Each run has a file of its own: Wine's desktop, if the run
    /// was what started it, holds on to it.
    std::wstring Output() const { return m_folder.Path(L"out" + std::to_wstring(m_runs)); }

    /// Runs dsphost in the folder and gives its exit status. "@" in the arguments stands for the folder of
    /// the test programs.
    DWORD Run(std::wstring arguments) {
        ++m_runs;
        const std::wstring programs = ModuleFolder(nullptr).Text();
        if (const size_t at = arguments.find(L'@'); at != std::wstring::npos) {
            arguments.replace(at, 1, programs);
        }
        std::wstring command = L"\"" + programs + L"..\\..\\tools\\dsphost.exe\" " + arguments;
        const OwnedFile out = CreateTestFile(Output());
        SetHandleInformation(out.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = out.Get();
        PROCESS_INFORMATION process = {};
        EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   Path(L"").c_str(), &startup, &process));
        const OwnedHandle thread(process.hThread);
        const OwnedHandle owned(process.hProcess);
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 30000), WAIT_OBJECT_0);
        DWORD exitStatus = 0;
        GetExitCodeProcess(process.hProcess, &exitStatus);
        return exitStatus;
    }

private:
    const TempFolder m_folder;
    int m_runs = 0;
};

TEST_F(HostTool, TellsWhatCameOut) {
    const std::wstring rogue = L"--plugin @fixtures\\rogue_plugin.dll s.wave c.wave --settings ";
    const struct {
        std::wstring arguments;
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
        {rogue + L"behave", 0, {"\\c.xml, 0 bytes"}},
        {rogue + L"report", 1, {"reports:\n<audio>!\n"}},
        {rogue + L"change", 1, {"changed the audio"}},
        {rogue + L"refuse", 1, {"answers 0 to DSP_EndConversion"}},
        {rogue + L"forget", 1, {"did not write"}},
        {L"--errors none\\e s.wave c.wave", 1, {"Cannot create"}},
        {L"--help", 0, {"Usage: dsphost"}},
        {L"", 2, {"one SOURCE and one CONVERTED"}},
        {L"--none a b", 2, {"unknown option --none"}},
        {L"a b --trace", 2, {"--trace needs a value"}},
        {L"--repeat 4294967297 a b", 2, {"--repeat needs a number"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.arguments);
        EXPECT_EQ(Run(row.arguments), row.exitStatus);
        const std::string output = ReadBytes(Output());
        for (const char* expected : row.outputs) {
            EXPECT_NE(output.find(expected), std::string::npos) << expected << "\nin\n" << output;
        }
    }
    EXPECT_TRUE(Exists(Path(L"c.xml")) && Exists(Path(L"c.txt")));
}

TEST_F(HostTool, KeepsTraceAndErrorsInFiles) {
    EXPECT_EQ(Run(L"--trace t --errors e s.wave gone.wave"), 1u);
    const std::wstring trace = ReadUtf16(Path(L"t"));
    EXPECT_TRUE(trace.starts_with(L"IsLive")) << trace;
    EXPECT_NE(trace.find(L"Error reading"), std::wstring::npos) << trace;
    EXPECT_TRUE(ReadUtf16(Path(L"e")).starts_with(L"Error reading"));
}

} // namespace
