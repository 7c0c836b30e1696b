// Linked into each of our libraries when GCC builds it, in place of the runtime's own functions (libssp).
// Those seed the guard while the library is loaded by opening a cryptographic provider, which loads and
// unloads another library: the rules for DllMain forbid that.

#include <windows.h>

#include <cstdint>

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
/// The value that instrumented functions keep between their arrays and their return address.
uintptr_t __stack_chk_guard = 0;

/// Called by a function that finds another value there when it returns. Nothing can be trusted any more, so
/// the process ends at once, as it does for the security cookie of Microsoft's compiler. Before Windows 8 the
/// system does not know the interrupt, and would raise an access violation that the host might handle.
[[noreturn]] void __stack_chk_fail() {
    if (IsProcessorFeaturePresent(PF_FASTFAIL_AVAILABLE)) {
        __asm__ volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
    }
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_STACK_BUFFER_OVERRUN));
    __builtin_unreachable();
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

/// Runs while the library is loaded. Not instrumented: the guard changes meanwhile.
__attribute__((constructor, no_stack_protector)) void SeedStackGuard() {
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    auto seed = static_cast<uint64_t>(counter.QuadPart);
    seed ^= uint64_t{GetCurrentProcessId()} << 32 | GetCurrentThreadId();
    seed ^= reinterpret_cast<uintptr_t>(&counter);
    seed *= 0x9E3779B97F4A7C15; // odd, so that no bit is lost; spreads the low bits to the high ones
    __stack_chk_guard = seed ^ seed >> 32;
}

} // namespace
