#pragma once

#include "tools/host/Options.h"

#include <windows.h>

#include <cstdint>

/// The document that the plug-in is to write, watched from before the conversion on.
class DocumentFile {
public:
    /// The name follows from the settings and the converted file.
    explicit DocumentFile(const Options& options);

    const XString& Path() const noexcept { return m_path; }

    /// Whether the settings name a style sheet that does not exist: the plug-in then leaves an empty document
    /// and reports nothing.
    bool LacksStyleSheet() const;

    const XString& StyleSheet() const noexcept { return m_styleSheet; }

    /// Bytes of the document, or -1 when it was not written since construction.
    int64_t WrittenSize() const;

private:
    XString m_styleSheet;
    XString m_path;
    FILETIME m_writtenBefore;
};
