#include "support/DebugLog.h"

#include "support/XMutex.h"
#include "support/XString.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>

namespace {

constexpr const wchar_t* kErrorPrefix = L"*** Error: ";
constexpr size_t kIndentStep = 2; // spaces
constexpr size_t kMarkerSize = 4;

XMutex logMutex;
size_t indent = 0; // spaces; guarded by logMutex

struct Free {
    void operator()(void* block) const noexcept { std::free(block); }
};

bool BeginsWith(const wchar_t* message, const wchar_t* marker) noexcept {
    return Compare(message, marker, kMarkerSize) == 0;
}

/// Only a long line needs memory, so that running out of memory can still be reported.
void WriteLine(HANDLE file, size_t spaces, const wchar_t* prefix, const wchar_t* message,
               const wchar_t* scope) noexcept {
    if (file == nullptr || file == INVALID_HANDLE_VALUE) {
        return;
    }
    const wchar_t* const parts[] = {prefix, message, scope != nullptr ? L"  [" : L"", scope,
                                    scope != nullptr ? L"]\r\n" : L"\r\n"};
    size_t size = spaces;
    for (const wchar_t* part : parts) {
        size += TextSize(part);
    }
    wchar_t shortLine[400];
    std::unique_ptr<wchar_t, Free> longLine;
    wchar_t* line = shortLine;
    if (size > std::size(shortLine)) {
        // Not by "new (std::nothrow)", which may throw and catch an exception inside: this is how running out
        // of memory is reported, and other threads that report it wait for the lock.
        longLine.reset(static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t))));
        line = longLine.get();
    }
    if (line == nullptr) {
        return;
    }
    wchar_t* end = std::fill_n(line, spaces, L' ');
    for (const wchar_t* part : parts) {
        end = std::copy_n(part, TextSize(part), end);
    }
    DWORD written = 0;
    WriteFile(file, line, static_cast<DWORD>(size * sizeof(wchar_t)), &written, nullptr);
}

} // namespace

void Log(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope,
         const wchar_t* prefix) noexcept {
    const XMutex::Lock lock(logMutex);
    if (BeginsWith(message, kLeave)) {
        indent -= std::min(indent, kIndentStep);
    }
    WriteLine(owner.debugFile, prefix != nullptr ? 0 : indent, prefix, message, scope);
    if (BeginsWith(message, kEnter)) {
        indent += kIndentStep;
    }
}

void LogError(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope) noexcept {
    Log(message, owner, scope, kErrorPrefix);
    WriteLine(owner.errorFile, 0, nullptr, message, scope);
}
