#include "decoders/DecoderCache.h"

#include "support/Owner.h"

#include <vector>

namespace {

OwnedKey OpenCache(REGSAM access) noexcept {
    HKEY key = nullptr;
    const LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Brevik\\Zentaro\\DecoderCache64", 0,
                                           nullptr, 0, access, nullptr, &key, nullptr);
    return OwnedKey(status == ERROR_SUCCESS ? key : nullptr);
}

} // namespace

XString ReadCacheEntry(const XString& extension) {
    const OwnedKey key = OpenCache(KEY_QUERY_VALUE);
    DWORD size = 0;
    if (!key.IsValid() ||
        RegQueryValueExW(key.Get(), extension.Text(), nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
        return XString();
    }
    // Anyone can write here: the data may lack its terminator, have an odd size, or have grown since it was
    // asked.
    std::vector<wchar_t> data(size / sizeof(wchar_t) + 2, L'\0');
    DWORD type = 0;
    if (RegQueryValueExW(key.Get(), extension.Text(), nullptr, &type, reinterpret_cast<BYTE*>(data.data()),
                         &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return XString();
    }
    return XString(data.data());
}

void WriteCacheEntry(const XString& extension, const XString& libraryPath) {
    const OwnedKey key = OpenCache(KEY_WRITE);
    if (key.IsValid()) {
        RegSetValueExW(key.Get(), extension.Text(), 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(libraryPath.Text()),
                       static_cast<DWORD>(libraryPath.Length() * sizeof(wchar_t)));
    }
}
