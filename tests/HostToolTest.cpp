#include "support/ModuleFolder.h"
#include "tests/shared/Files.h"
#include "tests/shared/TestWindow.h"
#include "tests/shared/Thread.h"

#include <cstdlib>

// dsphost as its users see it: arguments, output and exit status, with real files in a folder of their own.

namespace {

/// A file of four samples.
constexpr char kWave[] = "RIFF\x2C\0\0\0WAVE"
                         "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x80\x3E\0\0\x02\0\x10\0"
                         "data\x08\0\0\0\1\0\2\0\3\0\4\0";

TEST(HostTool, ReportsTheDocumentOrTheFault) {
    const std::wstring programs = ModuleFolder(nullptr).Text();
    const std::wstring tools = programs + L"..\\..\\tools\\";
    const TempFolder folder;
    SetCurrentDirectoryW(folder.Path(L"").c_str());
    SetEnvironmentVariableW(L"TMP", folder.Path(L"").c_str());
    WriteTestFile(L"s.wave", std::string(kWave, sizeof kWave - 1));
    WriteTestFile(L"c.wave", ReadBytes(L"s.wave"));
    WriteTestFile(L"n.wave", "no audio");
    const struct {
        std::wstring arguments;
        int exitStatus;
        std::vector<const char*> outputs; // and '|' before the errors
        WPARAM button = 0;                // of the panel
    } rows[] = {
        {L"s.wave c.wave", 0, {"c.wave: ", "\\c.xml, ", " bytes\n|"}},
        {L"--settings \"-ext=\\\".txt\\\"\" - c.wave", 0, {"\\c.txt, "}},
        {L"--settings -filename=n.doc s.wave c.wave", 0, {"c.wave: n.doc, "}},
        {L"--trace t --errors e s.wave gone.wave", 1, {"There is no file ", "exist '", "gone.wave'\n"}},
        {L"--settings \"-xsltfile=gone.xsl -ext=.out\" s.wave c.wave",
         1,
         {"c.out, 0 bytes", "no style sheet gone.xsl"}},
        {L"--settings -ext=.n n.wave c.wave", 1, {"wav.dll cannot read "}},
        {L"s.wave t", 1, {"No decoder library reads files with the extension ."}},
        {L"s.wave c._", 1, {"There is no file ", "did not write", "Write XML incompatible"}},
        {L"--plugin \"" + tools + L"decoder\\wav.dll\" s.wave c.wave", 1, {"does not export DSP_Create"}},
        {L"--plugin gone.dll s.wave c.wave", 1, {"|Cannot load ", "\\gone.dll (error 126)"}},
        {L"--panel --settings -ext=.a", 0, {"-xsltfile=\"\" -ext=\".a\"\n|"}, IDOK},
        {L"--panel", 1, {"|Cancelled\n"}, IDCANCEL},
        {L"--help", 0, {"Usage: dsphost"}},
        {L"a b c", 2, {"|dsphost: one SOURCE and one CONVERTED"}},
        {L"--panel a", 2, {"--panel takes no files"}},
        {L"-\u00E9 a b", 2, {"unknown option -\xC3\xA9 "}},
        {L"a b --trace", 2, {"--trace needs a value"}},
    };
    for (const auto& row : rows) {
        if (row.button != 0 && !MakeTopWindow().IsValid()) {
            continue; // without a display
        }
        const Thread press([button = row.button] {
            HWND host = nullptr;
            GUITHREADINFO window = {};
            window.cbSize = sizeof window;
            const auto isReady = [&window] { return GetDlgCtrlID(window.hwndFocus) == 1008; };
            for (int i = 0; button != 0 && !isReady() && i < 2000; ++i) {
                Sleep(10);
                host = FindWindowW(L"#32770", L"DSP settings");
                GetGUIThreadInfo(GetWindowThreadProcessId(host, nullptr), &window);
            }
            EXPECT_TRUE(button == 0 || isReady()) << "the focus is in the panel";
            PostMessageW(host, WM_COMMAND, button, 0);
        });
        // Each run has a file of its own: Wine's desktop keeps it open if this run started the desktop.
        const std::wstring out = L"out" + std::to_wstring(&row - rows);
        const std::wstring command =
            L"\"\"" + tools + L"dsphost.exe\" " + row.arguments + L" >" + out + L" 2>" + out + L"e <NUL\"";
        EXPECT_EQ(_wsystem(command.c_str()), row.exitStatus) << row.arguments;
        const std::string output = ReadBytes(out) + '|' + ReadBytes(out + L"e");
        for (const char* expected : row.outputs) {
            EXPECT_NE(output.find(expected), std::string::npos) << expected << "\nin\n" << output;
        }
    }
    const std::string document = ReadBytes(L"c.xml");
    EXPECT_LT(document.find("<FileBitrate>128<"), document.find("<ConvertedFile>")) << "none of the source";
    EXPECT_TRUE(ReadUtf16(L"t").starts_with(L"IsLive"));
    EXPECT_TRUE(ReadUtf16(L"e").starts_with(L"Error reading"));
    WIN32_FIND_DATAW found = {};
    const OwnedFind left(FindFirstFileW(L"*.tmp", &found));
    EXPECT_FALSE(left.IsValid()) << found.cFileName;
    SetCurrentDirectoryW(programs.c_str());
}

} // namespace
