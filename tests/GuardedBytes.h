#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <vector>

/// A read-only copy of bytes that ends right before an inaccessible page: one byte read too far, or any byte
/// written, ends the test process.
class GuardedBytes {
public:
    /// Empty, with pages for so many bytes.
    explicit GuardedBytes(size_t capacity) : m_pages((capacity + kPage - 1) / kPage * kPage) {
        m_base = static_cast<uint8_t*>(
            VirtualAlloc(nullptr, m_pages + kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        Protect(m_base + m_pages, PAGE_NOACCESS);
    }
    explicit GuardedBytes(const std::vector<uint8_t>& bytes) : GuardedBytes(bytes.size()) {
        Assign(bytes.data(), bytes.size());
    }
    ~GuardedBytes() { VirtualFree(m_base, 0, MEM_RELEASE); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    /// Replaces the content; no more bytes than there are pages for.
    void Assign(const void* bytes, size_t size) {
        m_size = size;
        if (m_pages != 0) {
            Protect(m_base, PAGE_READWRITE);
            std::memcpy(m_base + m_pages - size, bytes, size);
            Protect(m_base, PAGE_READONLY);
        }
    }

    const uint8_t* Data() const noexcept { return m_base + m_pages - m_size; }
    size_t Size() const noexcept { return m_size; }

private:
    static constexpr size_t kPage = 4096;

    /// The content's pages, or the one behind them.
    void Protect(uint8_t* pages, DWORD protection) {
        DWORD old = 0;
        VirtualProtect(pages, pages == m_base ? m_pages : kPage, protection, &old);
    }

    size_t m_pages; // bytes
    uint8_t* m_base = nullptr;
    size_t m_size = 0;
};
