#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// Owned bytes of one allocation, at most 4 GiB. Pure code.
class ByteBuffer {
public:
    ByteBuffer() noexcept = default;
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() = default;

    /// Replaces the content by a copy of `size` bytes; `data` may be null only when `size` is 0. Throws
    /// std::bad_alloc and leaves the buffer as it was.
    void Assign(const void* data, uint32_t size);

    uint32_t Size() const noexcept { return m_size; }

    /// Null while the size is 0.
    const uint8_t* Data() const noexcept { return m_bytes.get(); }

private:
    std::unique_ptr<uint8_t[]> m_bytes;
    uint32_t m_size = 0;
};
