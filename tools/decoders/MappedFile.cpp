#include "tools/decoders/MappedFile.h"

#include "support/Paths.h"

bool MappedFile::Open(const wchar_t* path) {
    const OwnedFile file(CreateFileW(MakeLongPath(XString(path), kOpenPathLimit).Text(), GENERIC_READ,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size = {};
    if (!file.IsValid() || !GetFileSizeEx(file.Get(), &size) || size.QuadPart == 0) {
        return file.IsValid(); // the system maps no empty file
    }
    const OwnedHandle mapping(CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY,
                                                 static_cast<DWORD>(size.HighPart), size.LowPart, nullptr));
    m_view.Reset(static_cast<const char*>(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, 0)));
    if (m_view.IsValid()) {
        m_bytes = {m_view.Get(), static_cast<size_t>(size.QuadPart)};
    }
    return m_view.IsValid();
}
