#include "support/Paths.h"
#include "support/XFileFind.h"
#include "tools/PrivateRegistry.h"
#include "tools/host/Console.h"
#include "tools/host/Conversion.h"
#include "tools/host/DocumentFile.h"
#include "tools/host/LogFiles.h"
#include "tools/host/Options.h"
#include "tools/host/Panel.h"

#include <string>
#include <string_view>

namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongArguments = 2 };

bool LoadPlugin(PluginLibrary& plugin, const XString& path) {
    if (plugin.Load(path.Text())) {
        return true;
    }
    const XString error = XString::FromInt64(GetLastError());
    if (plugin.MissingExport() == nullptr) {
        PrintError(Concat(L"Cannot load ", path, L" (error ", error, L")"));
    } else {
        const std::string_view name = plugin.MissingExport();
        PrintError(Concat(path, L" does not export ", std::wstring(name.begin(), name.end()).c_str()));
    }
    return false;
}

bool Convert(const PluginInstance& instance, const Options& options) {
    const PrivateRegistry registry; // a converter's cache of decoder libraries is not ours to change
    const DocumentFile document(options);
    const bool done = RunConversion(instance, options);
    const int64_t size = document.WrittenSize();
    if (size < 0) {
        PrintError(Concat(L"The plug-in did not write ", document.path));
        return false;
    }
    PrintLine(Concat(GetFileName(options.converted), L": ", document.path, L", ", XString::FromInt64(size),
                     L" bytes"));
    if (!document.styleSheet.IsEmpty() && !FileExists(document.styleSheet)) {
        // The plug-in leaves an empty document then, and reports nothing.
        PrintError(Concat(L"There is no style sheet ", document.styleSheet));
        return false;
    }
    if (size == 0 && document.styleSheet.IsEmpty()) { // a style sheet may have nothing to write
        PrintError(XString(L"The document is empty"));
        return false;
    }
    return done;
}

bool EditSettings(const PluginInstance& instance, XString settings) {
    if (!ShowPanel(instance, settings)) {
        return false;
    }
    PrintLine(settings);
    return true;
}

ExitStatus Run(const Options& options) {
    PluginLibrary plugin;
    LogFiles logs;
    if (!LoadPlugin(plugin, options.plugin) || !logs.Create(options)) {
        return kFailed;
    }
    bool done = true;
    {
        const PluginInstance instance(plugin, {logs.ErrorHandle(), nullptr, logs.TraceHandle()});
        if (plugin.get(instance.Get(), L"IsLive") != 1) {
            PrintError(XString(L"The plug-in does not take part in live conversions"));
            done = false;
        }
        const bool worked = options.panel ? EditSettings(instance, XString(options.settings.Text()))
                                          : Convert(instance, options);
        done = worked && done;
    }
    const XString errors = logs.ReadErrors();
    if (!errors.IsEmpty()) {
        PrintError(Concat(L"The plug-in reports:\n", errors));
        done = false;
    }
    return done ? kDone : kFailed;
}

} // namespace

int main() {
    Options options;
    const XString problem = ParseCommandLine(options);
    if (!problem.IsEmpty()) {
        PrintError(Concat(L"dsphost: ", problem, L" (--help shows more)"));
        return kWrongArguments;
    }
    if (options.help) {
        PrintLine(XString(kHelp));
        return kDone;
    }
    return Run(options);
}
