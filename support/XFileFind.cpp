#include "support/XFileFind.h"

#include "support/Paths.h"

#include <utility>

XFileFind::XFileFind(XString&& pattern) : m_pattern(std::move(pattern)) {
    StripBackslashes(m_pattern);
}

bool XFileFind::Next() {
    bool found = false;
    do {
        if (m_started) {
            found = m_search.IsValid() && FindNextFileW(m_search.Get(), &m_findData);
        } else {
            m_started = true;
            m_search.Reset(FindFirstFileW(MakeLongPath(m_pattern, kScanPathLimit).Text(), &m_findData));
            found = m_search.IsValid();
        }
    } while (found &&
             (Compare(m_findData.cFileName, L".") == 0 || Compare(m_findData.cFileName, L"..") == 0));
    if (found) {
        m_path = GetFilePath(m_pattern);
        m_path.Append(m_findData.cFileName);
    }
    return found;
}

bool FileExists(const XString& path) {
    if (path.IsEmpty()) {
        return false;
    }
    if (XFileFind(path.Copy()).Next()) {
        return true;
    }
    // The find calls do not report drive roots and share roots. A drive of unknown type counts as existing.
    XString folder = path.Copy();
    EnsureTrailingBackslash(folder);
    return GetDriveTypeW(folder.Text()) != DRIVE_NO_ROOT_DIR;
}
