#include "tools/check/SavedCache.h"

#include "support/Owner.h"

#include <stdexcept>

namespace {

constexpr const wchar_t* kMaker = L"Software\\Brevik";
constexpr const wchar_t* kProduct = L"Software\\Brevik\\Zentaro";
constexpr const wchar_t* kCache = L"Software\\Brevik\\Zentaro\\DecoderCache64";
constexpr const wchar_t* kCopy = L"Software\\Brevik\\Zentaro\\DecoderCache64 before the check";

OwnedKey OpenKey(const wchar_t* path) {
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key);
    return OwnedKey(key);
}

bool Copy(const wchar_t* from, const wchar_t* to) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, to, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const OwnedKey target(key);
    return target.IsValid() && RegCopyTreeW(HKEY_CURRENT_USER, from, target.Get()) == ERROR_SUCCESS;
}

} // namespace

SavedCache::SavedCache()
    : m_hadMaker(OpenKey(kMaker).IsValid()), m_hadProduct(OpenKey(kProduct).IsValid()),
      m_hadCache(OpenKey(kCache).IsValid() || OpenKey(kCopy).IsValid()) {
    if (m_hadCache && !OpenKey(kCopy).IsValid() && !Copy(kCache, kCopy)) {
        RegDeleteTreeW(HKEY_CURRENT_USER, kCopy);
        throw std::runtime_error("the registry cache of decoder libraries cannot be saved");
    }
}

SavedCache::~SavedCache() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kCache);
    if (!m_hadCache || Copy(kCopy, kCache)) {
        RegDeleteTreeW(HKEY_CURRENT_USER, kCopy);
    }
    if (!m_hadProduct) {
        RegDeleteKeyW(HKEY_CURRENT_USER, kProduct);
    }
    if (!m_hadMaker) {
        RegDeleteKeyW(HKEY_CURRENT_USER, kMaker);
    }
}
