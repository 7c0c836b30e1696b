#pragma once

#include "tests/fixtures/FixtureDecoder.h"
#include "tests/shared/Files.h"
#include "tools/PrivateRegistry.h"

#include <functional>
#include <map>

/// The decoder folder beside the test program, filled with fixture libraries, and a registry cache of the
/// process's own, empty at first. All test processes share the folder, so only one at a time may use it.
class Decoders {
public:
    Decoders() {
        Clear();
        CreateDirectoryW(Folder().c_str(), nullptr);
        current = this;
    }
    ~Decoders() {
        current = nullptr;
        Clear();
    }
    Decoders(const Decoders&) = delete;
    Decoders& operator=(const Decoders&) = delete;

    /// Adds a library under that name; the system lists them by their names. `missingExport` gets another
    /// name in the library's file.
    FixtureBehaviour& Add(const wchar_t* name, const std::string& missingExport = "") {
        std::string bytes = ReadBytes(L"fixtures\\decoder.dll");
        if (!missingExport.empty()) {
            const size_t at = bytes.find('\0' + missingExport + '\0');
            EXPECT_NE(at, std::string::npos) << missingExport;
            ++bytes[at + missingExport.size()];
        }
        WriteTestFile(PathOf(name), bytes);
        return m_behaviours[name];
    }

    FixtureBehaviour& Of(const std::wstring& name) {
        FixtureBehaviour& behaviour = m_behaviours[name];
        behaviour.context = context;
        return behaviour;
    }

    /// The calls of the libraries since this was last asked, each as "name: call".
    std::vector<std::wstring> Calls() { return std::exchange(m_calls, {}); }

    static std::wstring Folder() {
        wchar_t path[1000];
        GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
        return std::wstring(path, wcsrchr(path, L'\\') + 1) + L"decoder\\";
    }
    static std::wstring PathOf(const std::wstring& name) { return Folder() + name; }

    /// Whether the file system lists files by name and not in the order of creation; "lib.dll" must exist.
    static bool AreListedByName() {
        WIN32_FIND_DATAW first = {};
        WriteTestFile(PathOf(L"a.dll"), "");
        const OwnedFind search(FindFirstFileW(PathOf(L"*.dll").c_str(), &first));
        DeleteFileW(PathOf(L"a.dll").c_str());
        return std::wcscmp(first.cFileName, L"a.dll") == 0;
    }

    static constexpr const char* kUnsorted = "this file system, unlike NTFS, does not list files by name";

    static constexpr const wchar_t* kCacheKey = L"Software\\Brevik\\Zentaro\\DecoderCache64";

    /// The stored text or "none".
    static std::wstring Cached(const wchar_t* extension) {
        wchar_t text[1000] = {};
        DWORD size = sizeof text;
        const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, kCacheKey, extension,
                                            RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text, &size);
        return status == ERROR_SUCCESS ? text : L"none";
    }

    void Record(const wchar_t* name, const wchar_t* call) {
        m_calls.push_back(std::wstring(name) + L": " + call);
        onCall(m_calls.back());
    }

    /// Called during each call with its text, such as "lib.dll: Open2 8".
    std::function<void(const std::wstring& call)> onCall = [](const std::wstring&) {};

    /// What every library's Create must get.
    const void* context = nullptr;

    inline static Decoders* current = nullptr;

private:
    static void Clear() { TempFolder::Remove(Folder().substr(0, Folder().size() - 1)); }

    PrivateRegistry m_registry;
    std::map<std::wstring, FixtureBehaviour> m_behaviours;
    std::vector<std::wstring> m_calls;
};
