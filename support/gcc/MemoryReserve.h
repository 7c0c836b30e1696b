#pragma once

// Memory kept back for the moment when memory runs out. With GCC's runtime, throwing std::bad_alloc needs
// memory itself: for the exception and, once on each thread, for the runtime's own state. Without it the
// runtime throws again, endlessly, until the host's thread crashes. So the first allocation that fails
// releases the reserve and then throws.

/// Allocates the reserve again after it was released, if there is enough memory. To be called before any work
/// that may run out of memory.
void RefillMemoryReserve() noexcept;
