#include "tools/host/ProcessUse.h"

#include <psapi.h>

ProcessUse ProcessUse::Now() noexcept {
    ProcessUse use;
    PROCESS_MEMORY_COUNTERS memory = {};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory)) {
        use.privateBytes = memory.PagefileUsage;
    }
    GetProcessHandleCount(GetCurrentProcess(), &use.handles);
    return use;
}
