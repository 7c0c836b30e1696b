#include "support/ByteBuffer.h"

#include <cstring>
#include <utility>

ByteBuffer::ByteBuffer(ByteBuffer&& other) noexcept
    : m_bytes(std::move(other.m_bytes)), m_size(std::exchange(other.m_size, 0)) {}

ByteBuffer& ByteBuffer::operator=(ByteBuffer&& other) noexcept {
    if (this != &other) {
        m_bytes = std::move(other.m_bytes);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

void ByteBuffer::Assign(const void* data, uint32_t size) {
    m_bytes.reset(size != 0 ? new uint8_t[size] : nullptr);
    m_size = size;
    if (size != 0) {
        std::memcpy(m_bytes.get(), data, size);
    }
}
