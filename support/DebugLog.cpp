#include "support/DebugLog.h"

#include "support/XMutex.h"
#include "support/XString.h"

namespace {

constexpr const wchar_t* kErrorPrefix = L"*** Error: ";
constexpr const wchar_t* kIndentStep = L"  ";
constexpr size_t kMarkerSize = 4;

XMutex logMutex;
XString indent; // guarded by logMutex

bool BeginsWith(const wchar_t* message, const wchar_t* marker) noexcept {
    return Compare(message, marker, kMarkerSize) == 0;
}

XString BuildLine(const wchar_t* head, const wchar_t* message, const wchar_t* scope) {
    constexpr size_t kFrame = 8; // brackets, spaces, line end, terminator
    XString line;
    line.Reserve(TextSize(head) + TextSize(message) + TextSize(scope) + kFrame);
    line.Append(head);
    line.Append(message);
    if (scope != nullptr) {
        line.Append(L"  [");
        line.Append(scope);
        line.Append(L"]");
    }
    line.Append(L"\r\n");
    return line;
}

void WriteToHost(HANDLE file, const XString& line) noexcept {
    if (file != nullptr && file != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        WriteFile(file, line.Text(), static_cast<DWORD>(line.Size() * sizeof(wchar_t)), &written, nullptr);
    }
}

} // namespace

void Log(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope, const wchar_t* prefix) {
    const XMutex::Lock lock(logMutex);
    if (BeginsWith(message, kLeave)) {
        indent.DropLast(TextSize(kIndentStep));
    }
    WriteToHost(owner.debugFile, BuildLine(prefix != nullptr ? prefix : indent.Text(), message, scope));
    if (BeginsWith(message, kEnter)) {
        indent.Append(kIndentStep);
    }
}

void LogError(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope) {
    Log(message, owner, scope, kErrorPrefix);
    WriteToHost(owner.errorFile, BuildLine(L"", message, scope));
}
