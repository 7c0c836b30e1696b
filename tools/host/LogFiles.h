#pragma once

#include "support/Owner.h"
#include "support/XString.h"
#include "tools/host/Options.h"

/// The two files behind the handles that the converter lends to the plug-in.
class LogFiles {
public:
    /// Creates the files that the options name, in place of old ones. Error lines go to a temporary file when
    /// no file is named, so that they are always known; a trace is kept only where one is asked for. False,
    /// after a message, when a file cannot be created.
    bool Create(const Options& options);

    HANDLE ErrorHandle() const noexcept { return m_errors.Get(); }

    /// INVALID_HANDLE_VALUE when there is no trace.
    HANDLE TraceHandle() const noexcept { return m_trace.Get(); }

    /// All error lines written so far.
    XString ReadErrors() const;

private:
    OwnedFile m_errors;
    OwnedFile m_trace;
};
