#pragma once

#include "support/Owner.h"

#include <string>
#include <string_view>

/// A registry of the process's own, empty at first, in place of HKEY_CURRENT_USER for as long as the object
/// lives: what the program and the libraries in it write does not reach the user's. There may be one at a
/// time.
///
/// It lies below the user's key Software, under a name with the process's id; a process that is killed leaves
/// it there. It cannot be a volatile key: below one, the library could make none that are not volatile.
class PrivateRegistry {
public:
    /// Without the rights to make the key, the user's registry stays in place.
    PrivateRegistry() {
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str()); // of a killed process that had the same id
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr);
        const OwnedKey owned(key);
        if (owned.IsValid()) {
            RegOverridePredefKey(HKEY_CURRENT_USER, owned.Get());
        }
    }
    ~PrivateRegistry() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    }
    PrivateRegistry(const PrivateRegistry&) = delete;
    PrivateRegistry& operator=(const PrivateRegistry&) = delete;

    /// Deletes those of all processes, also of such as run.
    static void RemoveAll() {
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, kParent, 0, KEY_ALL_ACCESS, &key);
        const OwnedKey parent(key);
        wchar_t name[256] = {};
        for (DWORD i = 0; RegEnumKeyW(parent.Get(), i, name, 256) == ERROR_SUCCESS;) {
            if (!std::wstring_view(name).starts_with(kName) ||
                RegDeleteTreeW(parent.Get(), name) != ERROR_SUCCESS) {
                ++i; // nothing has moved up to its place
            }
        }
    }

private:
    static constexpr const wchar_t* kParent = L"Software";
    static constexpr const wchar_t* kName = L"WriteMetadataFile-"; // and the process's id

    std::wstring m_path = std::wstring(kParent) + L"\\" + kName + std::to_wstring(GetCurrentProcessId());
};
