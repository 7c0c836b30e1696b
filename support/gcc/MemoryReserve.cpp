#include "support/gcc/MemoryReserve.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr size_t kSize = 16'384; // several times what one throw on a new thread takes

std::atomic<void*> reserve = nullptr;

void ReleaseReserve() noexcept {
    std::free(reserve.exchange(nullptr));
}

[[noreturn]] void GiveUp() {
    ReleaseReserve();
    throw std::bad_alloc();
}

struct Reserve {
    Reserve() {
        RefillMemoryReserve();
        std::set_new_handler(GiveUp);
    }
    Reserve(const Reserve&) = delete;
    Reserve& operator=(const Reserve&) = delete;
    ~Reserve() { ReleaseReserve(); }
};

const Reserve whileLoaded;

} // namespace

void RefillMemoryReserve() noexcept {
    if (reserve.load() == nullptr) {
        // Another thread may have allocated it meanwhile; that block is freed.
        std::free(reserve.exchange(std::malloc(kSize)));
    }
}
