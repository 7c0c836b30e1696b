#pragma once

#include "support/Owner.h"
#include "support/XString.h"

/// Lists the entries of a folder that match a pattern, files and folders alike, in the order in which the
/// system returns them (FindFirstFileW, FindNextFileW). Sub-folders are not entered; "." and ".." are
/// skipped.
class XFileFind {
public:
    /// `pattern` is a folder plus a name that may hold wildcards; backslashes at its end are dropped.
    explicit XFileFind(XString&& pattern);

    /// Moves to the next entry; false when there is none, and on every later call.
    bool Next();

    /// Full path of the current entry: the folder of the pattern and the entry's name.
    const XString& Path() const noexcept { return m_path; }

    bool IsFolder() const noexcept { return (m_findData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

private:
    XString m_pattern;
    XString m_path;
    WIN32_FIND_DATAW m_findData = {};
    OwnedFind m_search;
    bool m_started = false;
};

/// Whether a file, a folder, a drive root or the root of a network share of that name exists. Wildcards match
/// as the system matches them. An empty path does not exist.
bool FileExists(const XString& path);
