#pragma once

#include "tests/Files.h"
#include "tests/fixtures/FixtureDecoder.h"

#include <map>

/// The decoder folder beside the test program, filled with fixture libraries, and the registry cache, empty
/// at first. The folder and the cache are the machine's: one test process at a time uses them.
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

    /// Adds a library under that name; the order in which the system lists them is that of their names.
    FixtureBehaviour& Add(const wchar_t* name, const wchar_t* fixture = L"complete") {
        EXPECT_TRUE(CopyFileW((L"fixtures\\" + std::wstring(fixture) + L".dll").c_str(), PathOf(name).c_str(),
                              FALSE));
        return m_behaviours[name];
    }

    FixtureBehaviour& Of(const std::wstring& name) { return m_behaviours[name]; }

    /// What the libraries were told since the last call, one call each: "name: call".
    std::vector<std::wstring> Calls() { return std::exchange(m_calls, {}); }

    static std::wstring Folder() {
        wchar_t path[1000];
        GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
        return std::wstring(path, wcsrchr(path, L'\\') + 1) + L"decoder\\";
    }
    static std::wstring PathOf(const std::wstring& name) { return Folder() + name; }

    static constexpr const wchar_t* kCacheKey = L"Software\\Brevik\\Zentaro\\DecoderCache64";

    /// The stored text, or "none".
    static std::wstring Cached(const wchar_t* extension) {
        wchar_t data[1000];
        DWORD size = sizeof data;
        const LSTATUS status =
            RegGetValueW(HKEY_CURRENT_USER, kCacheKey, extension, RRF_RT_REG_SZ, nullptr, data, &size);
        return status == ERROR_SUCCESS ? data : L"none";
    }

    static void Store(const wchar_t* extension, const std::wstring& bytes, DWORD type = REG_SZ) {
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kCacheKey, extension, type, bytes.data(),
                                  static_cast<DWORD>(bytes.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    void Told(const wchar_t* name, const wchar_t* call) {
        m_calls.push_back(std::wstring(name) + L": " + call);
    }

    inline static Decoders* current = nullptr;

private:
    static void Clear() {
        TempFolder::Remove(PathOf(L"."));
        RegDeleteKeyW(HKEY_CURRENT_USER, kCacheKey);
    }

    std::map<std::wstring, FixtureBehaviour> m_behaviours;
    std::vector<std::wstring> m_calls;
};
