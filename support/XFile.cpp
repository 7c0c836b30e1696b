#include "support/XFile.h"

#include "support/Paths.h"

#include <algorithm>

bool XFile::Open(const XString& fileName, DWORD access, DWORD disposition) {
    m_file.Reset();
    if (!fileName.IsEmpty()) {
        m_file.Reset(CreateFileW(MakeLongPath(fileName, kOpenPathLimit).Text(), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    return IsOpen();
}

bool XFile::Write(const void* data, size_t count) noexcept {
    if (data == nullptr) {
        return count == 0;
    }
    if (!IsOpen()) {
        return false;
    }
    constexpr size_t kMaxWrite = size_t{1} << 30; // one call counts in 32 bits
    const char* rest = static_cast<const char*>(data);
    while (count != 0) {
        const DWORD part = static_cast<DWORD>(std::min(count, kMaxWrite));
        DWORD written = 0;
        if (!WriteFile(m_file.Get(), rest, part, &written, nullptr) || written != part) {
            return false;
        }
        rest += part;
        count -= part;
    }
    return true;
}
