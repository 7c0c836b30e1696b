#pragma once

#include "tools/host/Options.h"
#include "tools/host/PluginLibrary.h"

/// The conversion of one file, as the plug-in sees it: asks the decoder libraries about both files, announces
/// the conversion, passes the audio of the source, ends it and has the document written. The audio is that of
/// a WAVE file's data chunk; the bytes of any other source file stand in for theirs, and a conversion without
/// a source file has none. False, after messages, when something could not be read, which the document then
/// lacks, a call did not answer 1 or the audio was changed.
bool RunConversion(const PluginInstance& instance, const Options& options);
