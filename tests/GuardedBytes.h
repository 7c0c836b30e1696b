#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <vector>

/// A read-only copy of bytes that ends right before an inaccessible page: one byte read too far, or any byte
/// written, ends the test process.
class GuardedBytes {
public:
    explicit GuardedBytes(const std::vector<uint8_t>& bytes) : m_size(bytes.size()) {
        constexpr size_t kPage = 4096;
        const size_t pages = (m_size + kPage - 1) / kPage;
        m_base = static_cast<uint8_t*>(
            VirtualAlloc(nullptr, (pages + 1) * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        m_begin = m_base + pages * kPage - m_size;
        if (m_size != 0) {
            std::memcpy(m_begin, bytes.data(), m_size);
        }
        DWORD old = 0;
        VirtualProtect(m_base, pages * kPage + 1, PAGE_READONLY, &old);
        VirtualProtect(m_base + pages * kPage, kPage, PAGE_NOACCESS, &old);
    }
    ~GuardedBytes() { VirtualFree(m_base, 0, MEM_RELEASE); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    const uint8_t* Data() const noexcept { return m_begin; }
    size_t Size() const noexcept { return m_size; }

private:
    uint8_t* m_base = nullptr;
    uint8_t* m_begin = nullptr;
    size_t m_size;
};
