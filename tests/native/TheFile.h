#pragma once

#include <cstddef>
#include <cstdint>

/// What files hold from now on. `toldSize` is the size that the system tells, which may be more than the
/// bytes that are there: files get cut while they are read. The bytes must stay.
void SetTheFile(const uint8_t* bytes, size_t size, size_t toldSize);
