#include "support/ByteBuffer.h"

#include <cstring>

void ByteBuffer::Assign(const void* data, uint32_t size) {
    m_bytes.reset(size != 0 ? new uint8_t[size] : nullptr);
    m_size = size;
    if (size != 0) {
        std::memcpy(m_bytes.get(), data, size);
    }
}
