#include "toolkit/WindowRegistry.h"

#include "support/XMutex.h"

#include <algorithm>
#include <vector>

namespace {

struct Entry {
    HWND hwnd;
    XWindow* object;
};

XMutex registryMutex;
std::vector<Entry> registry; // guarded by registryMutex

} // namespace

void RegisterWindow(XWindow& object, HWND hwnd) {
    const XMutex::Lock lock(registryMutex);
    UnregisterWindow(object);
    registry.push_back({hwnd, &object});
}

XWindow* FindWindowObject(HWND hwnd) noexcept {
    const XMutex::Lock lock(registryMutex);
    const auto found = std::find_if(registry.begin(), registry.end(),
                                    [hwnd](const Entry& entry) { return entry.hwnd == hwnd; });
    return found != registry.end() ? found->object : nullptr;
}

void UnregisterWindow(const XWindow& object) noexcept {
    const XMutex::Lock lock(registryMutex);
    std::erase_if(registry, [&object](const Entry& entry) { return entry.object == &object; });
}
