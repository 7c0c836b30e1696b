#pragma once

#include <cstdint>
#include <string>

/// Takes what a Utf8Writer writes.
struct FileInMemory {
    std::string bytes;
    size_t writesLeft = SIZE_MAX; ///< the last of them fails after it has written

    bool Write(const void* data, size_t size) {
        bytes.append(static_cast<const char*>(data), size);
        return --writesLeft != 0;
    }
};
