#include "tools/host/Options.h"

#include "support/ModuleFolder.h"
#include "support/Owner.h"
#include "tools/host/Console.h"

#include <shellapi.h>

#include <memory>

const wchar_t* const kHelp =
    LR"(Usage: dsphost [--plugin DLL] [--settings TEXT] [--trace FILE] [--errors FILE] SOURCE CONVERTED
       dsphost --panel [--plugin DLL] [--settings TEXT] [--trace FILE] [--errors FILE]

Stands in for the converter: loads the plug-in and drives it through the conversion of SOURCE, which may be "-"
for none on disk, into CONVERTED, which must have been converted before. What the converter reports about the
two files comes from the decoder libraries in the folder "decoder" beside this program.

  --plugin DLL     the plug-in; else ..\dist\WriteMetadataFile.dll from the folder of this program
  --settings TEXT  settings for the plug-in, such as  -ext=".txt" -xsltfile="C:\style sheets\a.xsl"
  --trace FILE     write the plug-in's trace to FILE (UTF-16)
  --errors FILE    write the plug-in's error lines to FILE, too (UTF-16)
  --help           show this text

With --panel it shows the plug-in's settings panel in a window and converts nothing. OK prints the settings text
that comes back; Cancel prints none and ends with exit status 1.

Exit status: 0 when a document was written, 1 when something failed, the document is empty or the plug-in reported
an error, 2 when the arguments are wrong.)";

namespace {

void FreeArguments(wchar_t** arguments) noexcept {
    LocalFree(static_cast<void*>(arguments));
}

using OwnedArguments = Owner<wchar_t**, FreeArguments>;

using TextMember = XString Options::*;

constexpr struct {
    const wchar_t* name;
    TextMember value;
} kTextOptions[] = {
    {L"--plugin", &Options::plugin},
    {L"--settings", &Options::settings},
    {L"--trace", &Options::traceFile},
    {L"--errors", &Options::errorFile},
};

bool IsEqual(const XString& a, const wchar_t* b) {
    return Compare(a.Text(), b) == 0;
}

/// The plug-in must get whole paths. An empty path, "-" and what the system refuses stay as they are.
void MakeAbsolute(XString& path) {
    if (path.IsEmpty() || IsEqual(path, L"-")) {
        return;
    }
    const DWORD length = GetFullPathNameW(path.Text(), 0, nullptr, nullptr);
    const auto buffer = std::make_unique<wchar_t[]>(size_t{length} + 1);
    if (GetFullPathNameW(path.Text(), length, buffer.get(), nullptr) < length) {
        path.Assign(buffer.get());
    }
}

} // namespace

XString ParseCommandLine(Options& options) {
    int count = 0;
    const OwnedArguments arguments(CommandLineToArgvW(GetCommandLineW(), &count));
    size_t fileCount = 0;
    for (int i = 1; arguments.IsValid() && i < count; ++i) {
        const XString argument(arguments.Get()[i]);
        TextMember textValue = nullptr;
        for (const auto& option : kTextOptions) {
            textValue = IsEqual(argument, option.name) ? option.value : textValue;
        }
        if (IsEqual(argument, L"--help")) {
            options.help = true;
            return XString();
        }
        if (IsEqual(argument, L"--panel")) {
            options.panel = true;
            continue;
        }
        if (textValue != nullptr) {
            if (++i == count) {
                return Concat(argument, L" needs a value");
            }
            (options.*textValue).Assign(arguments.Get()[i]);
        } else if (argument.At(1) == L'-' && argument.Size() > 1) {
            return Concat(L"unknown option ", argument);
        } else if (++fileCount <= 2) {
            (fileCount == 1 ? options.source : options.converted).Assign(argument.Text());
        }
    }
    if (options.panel && fileCount != 0) {
        return XString(L"--panel takes no files");
    }
    if (!options.panel && fileCount != 2) {
        return XString(L"one SOURCE and one CONVERTED file are needed");
    }
    if (options.plugin.IsEmpty()) {
        options.plugin = Concat(ModuleFolder(nullptr), L"..\\dist\\WriteMetadataFile.dll");
    }
    for (XString* path :
         {&options.plugin, &options.traceFile, &options.errorFile, &options.source, &options.converted}) {
        MakeAbsolute(*path);
    }
    return XString();
}
