#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// Owned bytes of one allocation, at most 4 GiB. Moves and never copies. Pure code.
class ByteBuffer {
public:
    /// Sets the size; what the bytes hold afterwards is undefined. A larger buffer is taken only when the
    /// present one does not hold `size` bytes. Throws std::bad_alloc and leaves the buffer as it was.
    void SetSize(uint32_t size);

    /// Replaces the content by a copy of `size` bytes; `data` may be null only when `size` is 0.
    void Assign(const void* data, uint32_t size);

    uint32_t Size() const noexcept { return m_size; }
    bool IsEmpty() const noexcept { return m_size == 0; }

    /// Null while nothing was ever stored.
    uint8_t* Data() noexcept { return m_bytes.get(); }
    const uint8_t* Data() const noexcept { return m_bytes.get(); }

private:
    std::unique_ptr<uint8_t[]> m_bytes;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;
};
