#include "tools/decoders/BoundedFile.h"

#include "support/Paths.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr size_t kWindowSize = 65536;

// In UTF-16 it takes twice the room, and a tag list counts its bytes in a signed 32-bit number.
constexpr uint64_t kLargestText = std::numeric_limits<int32_t>::max() / 2;

} // namespace

bool BoundedFile::Open(const wchar_t* path) {
    m_window.clear();
    m_size = 0;
    m_file.Reset(CreateFileW(MakeLongPath(XString(path), kOpenPathLimit).Text(), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size = {};
    if (!m_file.IsValid() || !GetFileSizeEx(m_file.Get(), &size)) {
        return false;
    }
    m_size = static_cast<uint64_t>(size.QuadPart);
    return true;
}

bool BoundedFile::ReadAt(uint64_t offset, void* out, size_t size) {
    if (offset > m_size || m_size - offset < size) {
        return false;
    }
    if (size > kWindowSize) {
        return ReadFromSystem(offset, out, size);
    }
    const bool inWindow = offset >= m_windowOffset && offset - m_windowOffset <= m_window.size() &&
                          m_window.size() - (offset - m_windowOffset) >= size;
    if (!inWindow) {
        m_window.resize(static_cast<size_t>(std::min<uint64_t>(kWindowSize, m_size - offset)));
        m_windowOffset = offset;
        if (!ReadFromSystem(offset, m_window.data(), m_window.size())) {
            m_window.clear();
            return false;
        }
    }
    std::copy_n(m_window.data() + (offset - m_windowOffset), size, static_cast<uint8_t*>(out));
    return true;
}

bool BoundedFile::ReadFromSystem(uint64_t offset, void* out, size_t size) noexcept {
    LARGE_INTEGER position = {};
    position.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(m_file.Get(), position, nullptr, FILE_BEGIN)) {
        return false;
    }
    uint8_t* rest = static_cast<uint8_t*>(out);
    while (size != 0) {
        constexpr size_t kLargestRead = size_t{16} << 20; // one call counts in 32 bits
        DWORD read = 0;
        if (!ReadFile(m_file.Get(), rest, static_cast<DWORD>(std::min(size, kLargestRead)), &read, nullptr) ||
            read == 0) {
            return false;
        }
        rest += read;
        size -= read;
    }
    return true;
}

bool Section::Read(void* out, size_t size) {
    if (size > Left() || !m_file->ReadAt(m_offset, out, size)) {
        return false;
    }
    m_offset += size;
    return true;
}

bool Section::ReadBig(uint32_t& value) {
    uint8_t bytes[4];
    if (!Read(bytes, sizeof bytes)) {
        return false;
    }
    value = uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
    return true;
}

bool Section::ReadBytes(std::vector<uint8_t>& out, uint64_t size) {
    if (size > Left()) {
        return false;
    }
    out.resize(static_cast<size_t>(size));
    return Read(out.data(), out.size());
}

bool Section::ReadText(std::string& out, uint64_t size) {
    if (size > Left() || size > kLargestText) {
        return false;
    }
    out.resize(static_cast<size_t>(size));
    return Read(out.data(), out.size());
}

Section Section::Take(uint64_t size) noexcept {
    Section taken = *this;
    m_offset += std::min(size, Left());
    taken.m_end = m_offset;
    return taken;
}
