#include "bench/ImportCounts.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

namespace {

constexpr std::string_view kRequired[] = {
    "WaitForSingleObject",  "ReleaseMutex",       "FindFirstFileW",  "FindNextFileW",  "FindClose",
    "GetDriveTypeW",        "CreateFileW",        "CloseHandle",     "GetFileTime",    "GetDateFormatW",
    "FileTimeToSystemTime", "GetTimeFormatW",     "RegCreateKeyExW", "RegCloseKey",    "RegQueryValueExW",
    "RegSetValueExW",       "GetModuleFileNameW", "LoadLibraryW",    "GetProcAddress", "FreeLibrary",
};

void Patch(ULONGLONG& slot, ULONGLONG target) {
    DWORD protection = 0;
    VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &protection);
    slot = target;
    VirtualProtect(&slot, sizeof slot, protection, &protection);
}

} // namespace

#pragma pack(push, 1)
/// mov r11, calls; inc qword [r11]; mov r11, target; jmp r11. No function takes an argument in r11.
struct ImportCounts::Stub {
    uint8_t loadCalls[2] = {0x49, 0xBB};
    uint64_t* calls;
    uint8_t increment[3] = {0x49, 0xFF, 0x03};
    uint8_t loadTarget[2] = {0x49, 0xBB};
    ULONGLONG target;
    uint8_t jump[3] = {0x41, 0xFF, 0xE3};
};
#pragma pack(pop)

ImportCounts::ImportCounts(HMODULE module)
    : m_stubs(static_cast<Stub*>(
          VirtualAlloc(nullptr, std::size(kRequired) * sizeof(Stub), MEM_COMMIT, PAGE_EXECUTE_READWRITE))) {
    m_imports.reserve(std::size(kRequired));
    auto* const base = reinterpret_cast<uint8_t*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
         library->Name != 0; ++library) {
        const auto* name = reinterpret_cast<const ULONGLONG*>(base + library->OriginalFirstThunk);
        auto* slot = reinterpret_cast<ULONGLONG*>(base + library->FirstThunk);
        for (; *name != 0; ++name, ++slot) {
            if (!IMAGE_SNAP_BY_ORDINAL64(*name)) {
                Count(*slot, reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *name)->Name);
            }
        }
    }
}

void ImportCounts::Count(ULONGLONG& slot, const char* name) {
    const auto* const required = std::find(std::begin(kRequired), std::end(kRequired), name);
    if (required != std::end(kRequired) && m_imports.size() < std::size(kRequired)) {
        Stub* const stub = new (m_stubs + m_imports.size()) Stub;
        Import& import = m_imports.emplace_back(Import{name, &slot, slot, 0});
        stub->calls = &import.calls;
        stub->target = slot;
        Patch(slot, reinterpret_cast<ULONGLONG>(stub));
    }
}

ImportCounts::~ImportCounts() {
    for (const Import& import : m_imports) {
        Patch(*import.slot, import.target);
    }
    VirtualFree(m_stubs, 0, MEM_RELEASE);
}

std::map<std::string, uint64_t> ImportCounts::Calls() const {
    std::map<std::string, uint64_t> calls;
    for (const std::string_view name : kRequired) {
        calls[std::string(name)] = 0;
    }
    for (const Import& import : m_imports) {
        calls[import.name] += import.calls;
    }
    return calls;
}
