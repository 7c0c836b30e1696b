#pragma once

#include <cstddef>
#include <cstdint>

/// The content of every file from now on. `reportedSize` is the size that the system reports, which may be
/// more than `size`: files get cut while they are read. The bytes are not copied.
void SetTheFile(const uint8_t* bytes, size_t size, size_t reportedSize);
