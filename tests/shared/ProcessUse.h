#pragma once

#include "support/Owner.h"
#include "tests/shared/Wine.h"

#include <algorithm>
#include <iterator>
#include <vector>

// Handles and heap memory of the process. Its private bytes are too coarse: a system may count them in steps
// of hundreds of kilobytes.

/// A number that grows with every leaked handle: the count of open handles or, under Wine, which does not
/// count them, the highest value of many new ones. On Windows the values of new handles have no order.
inline size_t HandlesInUse() {
    if (!RunsUnderWine()) {
        DWORD count = 0;
        GetProcessHandleCount(GetCurrentProcess(), &count);
        return count;
    }
    std::vector<OwnedHandle> fresh;
    size_t highest = 0;
    for (int i = 0; i < 100; ++i) {
        fresh.emplace_back(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        highest = std::max(highest, reinterpret_cast<size_t>(fresh.back().Get()));
    }
    return highest;
}

/// The bytes in use on all heaps.
inline size_t HeapUse() {
    HANDLE heaps[50];
    const DWORD count = std::min(GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps),
                                 static_cast<DWORD>(std::size(heaps)));
    size_t used = 0;
    for (DWORD i = 0; i < count; ++i) {
        HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) {
            used += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
        HeapUnlock(heaps[i]);
    }
    return used;
}

/// By how much handles (or windows) and bytes may grow though nothing leaks: Windows and its XML parser take
/// some for themselves at any time.
inline size_t SystemsHandles() {
    return RunsUnderWine() ? 0 : 16;
}
inline size_t SystemsBytes(size_t rounds) {
    return RunsUnderWine() ? rounds : rounds * 4096;
}
