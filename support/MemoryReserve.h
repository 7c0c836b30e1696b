#pragma once

// Memory kept back for the time when there is none. Throwing std::bad_alloc takes some itself with GCC's
// runtime, for the exception and, once on each thread, for the runtime's own state; where it finds none the
// runtime throws in turn, without an end, and the host's thread dies of it. So the first allocation that
// fails releases the reserve and then throws.

/// Fills the reserve again after it was used, if there is memory enough. For the beginning of each work that
/// may run out of memory.
void RefillMemoryReserve() noexcept;
