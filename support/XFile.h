#pragma once

#include "support/Owner.h"
#include "support/XString.h"

#include <cstdint>

/// One file, opened for writing or for its times. Failures are not logged: they show in the results alone.
class XFile {
public:
    /// Opens `fileName` (CreateFileW, shared for reading and writing), closing what was open before. Paths of
    /// 260 characters or more get the "\\?\" prefix. `access` and `disposition` are those of CreateFileW. An
    /// empty name fails without a system call.
    bool Open(const XString& fileName, DWORD access, DWORD disposition);

    bool IsOpen() const noexcept { return m_file.IsValid(); }

    /// Writes all of the bytes at the current position; false when fewer were written or nothing is open.
    /// `data` may be null only when `count` is 0.
    bool Write(const void* data, size_t count) noexcept;

    /// The open handle, still owned here, or INVALID_HANDLE_VALUE.
    HANDLE Handle() const noexcept { return m_file.Get(); }

private:
    OwnedFile m_file;
};
