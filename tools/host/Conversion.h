#pragma once

#include "tools/host/DecoderFolder.h"
#include "tools/host/Options.h"
#include "tools/host/PluginLibrary.h"

/// The conversion of one file, as the plug-in sees it.
class Conversion {
public:
    /// The options must outlive the conversion.
    explicit Conversion(const Options& options) : m_options(options) {}

    /// Asks the decoder libraries about both files. False, after messages, when something could not be read;
    /// the conversion can be run all the same, with less to report.
    bool GatherFacts();

    /// Announces the conversion, passes the audio of the source, ends it and has the document written. The
    /// audio is that of a WAVE file's data chunk; the bytes of any other source file stand in for theirs, and
    /// a conversion without a source file has none. False, after a message, when a call does not answer 1 or
    /// the audio was changed.
    bool Run(const PluginInstance& instance);

private:
    bool HasSourceFile() const noexcept;
    bool PassAudio(const PluginInstance& instance);

    const Options& m_options;
    FileReport m_source;
    FileReport m_converted;
};
