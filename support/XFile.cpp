#include "support/XFile.h"

#include "support/Paths.h"

#include <algorithm>

bool XFile::Open(const XString& fileName, DWORD access, DWORD disposition) {
    Close();
    if (!fileName.IsEmpty()) {
        m_file.Reset(CreateFileW(MakeLongPath(fileName, kOpenPathLimit).Text(), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    return IsOpen();
}

bool XFile::Write(const void* data, size_t count) noexcept {
    if (count != 0 && (data == nullptr || !IsOpen())) {
        return false;
    }
    // Network redirectors refuse very large single writes, and one call counts in 32 bits.
    constexpr size_t kLargestWrite = size_t{16} << 20;
    const char* rest = static_cast<const char*>(data);
    while (count != 0) {
        const DWORD piece = static_cast<DWORD>(std::min(count, kLargestWrite));
        DWORD written = 0;
        if (!WriteFile(m_file.Get(), rest, piece, &written, nullptr) || written != piece) {
            return false;
        }
        rest += piece;
        count -= piece;
    }
    return true;
}
