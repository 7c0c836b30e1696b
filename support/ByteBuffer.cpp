#include "support/ByteBuffer.h"

#include <cstring>

void ByteBuffer::SetSize(uint32_t size) {
    if (size > m_capacity) {
        m_bytes.reset(new uint8_t[size]);
        m_capacity = size;
    }
    m_size = size;
}

void ByteBuffer::Assign(const void* data, uint32_t size) {
    SetSize(size);
    if (size != 0) {
        std::memcpy(m_bytes.get(), data, size);
    }
}
