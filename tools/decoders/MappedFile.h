#pragma once

#include "support/Owner.h"

#include <string_view>

/// A file in memory, read by the system where it is looked at.
class MappedFile {
public:
    /// Opens a path (CreateFileW, shared with everyone who reads or writes), once; paths of 260 characters or
    /// more get the "\\?\" prefix.
    bool Open(const wchar_t* path);

    /// What the file held when it was opened, for as long as the object lives. Looking at a part that can no
    /// longer be read, as on a medium that was removed, ends the process.
    std::string_view Bytes() const noexcept { return m_bytes; }

private:
    Owner<const char*, UnmapViewOfFile> m_view;
    std::string_view m_bytes;
};
