#include "tools/check/Conversions.h"

#include "tools/check/Expected.h"
#include "tools/check/Files.h"

#include <fstream>

namespace fs = std::filesystem;

void Conversions::Run(Report& report) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(base / "recording")) {
        fs::copy_file(entry.path(), temp / entry.path().filename());
    }
    ProgramRun run = Convert(L"");
    Report::Result result = Compare(run, L"tone.xml", L"document");
    report.Add(result, Report::kDocument, "dsphost document", run);
    for (const fs::path& sheet : FilesIn(StyleSheets(), L".xslt")) {
        if (isStopped()) {
            return;
        }
        run = Convert(L"-xsltfile=\\\"" + sheet.wstring() + L"\\\" -ext=.out");
        result = Compare(run, L"tone.out", sheet.stem().wstring());
        report.Add(result, Report::kStyleSheet, "dsphost " + Utf8(sheet.filename()), run);
    }
    if (isAccepting || isStopped()) {
        return;
    }
    run = Transform(StyleSheets() / "Json.xslt");
    result = Compare(run, L"tone.script", L"Json");
    report.Add(result, Report::kScript, "cscript Json.xslt", run);

    std::ofstream(temp / "broken.xslt") << "<xsl:stylesheet";
    fs::remove(temp / "tone.script");
    run = Transform(temp / "broken.xslt");
    const bool isRefused = run.problem.empty() && run.exit == 1 && !fs::exists(temp / "tone.script") &&
                           run.output.find("broken.xslt") != std::string::npos;
    report.Add(isRefused ? Report::kPassed : Report::kFailed, Report::kScript, "cscript a broken style sheet",
               run);
}

ProgramRun Conversions::Convert(const std::wstring& settings) const {
    const std::wstring arguments = L"tone.wav tone.flac --settings \"" + settings + L"\"";
    return RunProgram(base / "tools" / "dsphost.exe", arguments, temp, temp);
}

ProgramRun Conversions::Transform(const fs::path& styleSheet) const {
    const std::wstring arguments = L"//nologo \"" + (StyleSheets() / "Transform.js").wstring() +
                                   L"\" tone.xml \"" + styleSheet.wstring() + L"\" tone.script";
    return RunProgram(SystemFolder() / "cscript.exe", arguments, temp, temp);
}

Report::Result Conversions::Compare(ProgramRun& run, const wchar_t* made,
                                    const std::wstring& expected) const {
    if (!run.IsDone()) {
        return Report::kFailed;
    }
    const std::string output = Masked(ReadFile(temp / made), temp);
    const fs::path path = base / "expected" / (expected + L".txt");
    if (isAccepting) {
        std::ofstream(path, std::ios::binary) << output;
        return Report::kPassed;
    }
    if (!fs::exists(path)) {
        run.output += "There is no file " + Utf8(path) + "\n";
        return Report::kFailed;
    }
    const std::string differences = Differences(ReadFile(path), output);
    run.output += differences;
    return differences.empty() ? Report::kPassed : Report::kFailed;
}
