#pragma once

#include "support/Owner.h"

#include <algorithm>
#include <iterator>
#include <vector>

// What the process holds. Its private bytes say less: a system may count them in steps of hundreds of
// kilobytes.

/// The highest of many new handles: one that was left open raises it, as not all systems count handles.
inline size_t HighestFreshHandle() {
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
