// Linked into each of our libraries when GCC builds it, in place of the runtime's own functions (libsupc++).
// Those keep the exceptions of a thread in emulated thread-local storage: the first throw takes a TLS index
// and locks of the thread library, which are not given back when the library is unloaded. Hosts load and
// unload libraries often; once the 1,088 indices of a process are used up, the runtime ends it. For
// exceptions that are thrown when memory is out, they allocate 70 KB while the library is loaded, behind a
// lock that needs memory itself.
//
// Here a thread has a record only while it has an exception, and is found by its id. So nothing is taken
// while the library is loaded, nothing has to be given back at its end or at a thread's, and nothing can be
// used up. The interface is that of the Itanium C++ ABI, "Exception handling", which other parts of the
// runtime call.

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <utility>

// NOLINTBEGIN(bugprone-reserved-identifier)
namespace __cxxabiv1 {

/// What the runtime keeps for each thread, as the ABI defines it.
struct __cxa_eh_globals {
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

} // namespace __cxxabiv1
// NOLINTEND(bugprone-reserved-identifier)

namespace {

struct ThreadRecord;

/// What lies before an exception's object. The runtime's part ends at the object; GCC 12 to 14 use 160 bytes
/// of it.
struct alignas(std::max_align_t) ExceptionHead {
    ThreadRecord* owner;
    alignas(std::max_align_t) uint8_t runtimesPart[256];
};

/// Room for an exception, for when there is no memory.
struct alignas(std::max_align_t) Room {
    uint8_t bytes[sizeof(ExceptionHead) + 48];
    bool isTaken;
};

/// A thread that has exceptions. The runtime changes `globals` on that thread alone.
struct ThreadRecord {
    __cxxabiv1::__cxa_eh_globals globals;
    DWORD thread;
    size_t exceptions; ///< allocated and not freed yet
    ThreadRecord* next;
    Room rooms[4]; ///< one exception may be thrown while another is handled, and so on
};

SRWLOCK lock = SRWLOCK_INIT; // guards what follows; it takes nothing of the system and cannot fail
ThreadRecord* records = nullptr;
ThreadRecord spares[8]; // for when there is no memory; the free ones have no thread

class Lock {
public:
    Lock() noexcept { AcquireSRWLockExclusive(&lock); }
    ~Lock() { ReleaseSRWLockExclusive(&lock); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

bool IsSpare(const ThreadRecord* record) noexcept {
    return record >= std::begin(spares) && record < std::end(spares);
}

/// The calling thread's record, made when there is none. Without memory, and when all spare records are
/// taken, waits until another thread has handled its exceptions. No thread that has a record waits, so that
/// none waits for ever.
ThreadRecord& OwnRecord() noexcept {
    const DWORD thread = GetCurrentThreadId();
    {
        const Lock locked;
        for (ThreadRecord* record = records; record != nullptr; record = record->next) {
            if (record->thread == thread) {
                return *record;
            }
        }
    }
    auto* record = static_cast<ThreadRecord*>(std::malloc(sizeof(ThreadRecord)));
    for (;; Sleep(1)) {
        const Lock locked;
        for (ThreadRecord& spare : spares) {
            if (record == nullptr && spare.thread == 0) {
                record = &spare;
            }
        }
        if (record != nullptr) {
            *record = {};
            record->thread = thread;
            record->next = std::exchange(records, record);
            return *record;
        }
    }
}

/// Memory for an exception of that thread, null when there is none.
void* TakeMemory(ThreadRecord& owner, size_t size) noexcept {
    void* memory = std::malloc(size);
    const Lock locked;
    for (Room& room : owner.rooms) {
        if (memory == nullptr && size <= sizeof room.bytes && !room.isTaken) {
            room.isTaken = true;
            memory = room.bytes;
        }
    }
    owner.exceptions += memory != nullptr ? 1 : 0;
    return memory;
}

/// Frees the memory of an exception, and with the last one its thread's record.
void GiveMemory(ThreadRecord* owner, void* memory) noexcept {
    ThreadRecord* unused = nullptr;
    {
        const Lock locked;
        for (Room& room : owner->rooms) {
            if (memory == room.bytes) {
                room.isTaken = false;
                memory = nullptr;
            }
        }
        if (--owner->exceptions == 0) {
            ThreadRecord** link = &records;
            while (*link != owner) {
                link = &(*link)->next;
            }
            *link = owner->next;
            owner->thread = 0;
            unused = IsSpare(owner) ? nullptr : owner;
        }
    }
    std::free(memory);
    std::free(unused);
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

__cxxabiv1::__cxa_eh_globals* __cxa_get_globals() noexcept {
    return &OwnRecord().globals;
}

__cxxabiv1::__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return &OwnRecord().globals;
}

/// Called by each throw, before the object is made.
void* __cxa_allocate_exception(size_t size) noexcept {
    ThreadRecord& owner = OwnRecord();
    void* memory = TakeMemory(owner, sizeof(ExceptionHead) + size);
    if (memory == nullptr) {
        std::terminate(); // as the ABI demands: an exception larger than any of ours, or a fifth one at once
    }
    std::memset(memory, 0, sizeof(ExceptionHead));
    auto* head = static_cast<ExceptionHead*>(memory);
    head->owner = &owner;
    return head + 1;
}

/// Called when the last handler of an exception ends, on whatever thread. The runtime has no use for the
/// record of its thread any more, unless the thread has other exceptions.
void __cxa_free_exception(void* object) noexcept {
    ExceptionHead* head = static_cast<ExceptionHead*>(object) - 1;
    GiveMemory(head->owner, head);
}
}
// NOLINTEND(bugprone-reserved-identifier)
