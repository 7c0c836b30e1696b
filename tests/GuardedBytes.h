#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <vector>

/// A copy of bytes that ends right before an inaccessible page: one byte read too far ends the test process.
class GuardedBytes {
public:
    /// Pages for so many bytes, which `Assign` may give again and again.
    explicit GuardedBytes(size_t capacity) : m_pages((capacity + kPage - 1) / kPage * kPage) {
        m_base = static_cast<uint8_t*>(
            VirtualAlloc(nullptr, m_pages + kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        Protect(m_base + m_pages, kPage, PAGE_NOACCESS);
    }
    /// Read-only as well.
    explicit GuardedBytes(const std::vector<uint8_t>& bytes) : GuardedBytes(bytes.size()) {
        Assign(bytes.data(), bytes.size());
        Protect(m_base, m_pages + 1, PAGE_READONLY);
        Protect(m_base + m_pages, kPage, PAGE_NOACCESS);
    }
    ~GuardedBytes() { VirtualFree(m_base, 0, MEM_RELEASE); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    void Assign(const void* bytes, size_t size) {
        m_size = size;
        if (size != 0) {
            std::memcpy(m_base + m_pages - size, bytes, size);
        }
    }

    const uint8_t* Data() const noexcept { return m_base + m_pages - m_size; }
    size_t Size() const noexcept { return m_size; }

private:
    static constexpr size_t kPage = 4096;

    static void Protect(uint8_t* pages, size_t size, DWORD protection) {
        DWORD old = 0;
        VirtualProtect(pages, size, protection, &old);
    }

    size_t m_pages; // bytes
    uint8_t* m_base = nullptr;
    size_t m_size = 0;
};
