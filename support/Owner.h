#pragma once

#include <windows.h>

#include <utility>

/// Owns one system resource and releases it on destruction. `Traits` names the type, the value that means
/// "none" and the call that releases. Owners move and never copy.
template<class Traits>
class Owner {
public:
    using Type = typename Traits::Type;

    Owner() noexcept = default;
    explicit Owner(Type resource) noexcept : m_resource(resource) {}
    Owner(Owner&& other) noexcept : m_resource(std::exchange(other.m_resource, Traits::None())) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Reset(std::exchange(other.m_resource, Traits::None()));
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { Reset(); }

    /// The resource, still owned here.
    Type Get() const noexcept { return m_resource; }

    bool IsValid() const noexcept { return m_resource != Traits::None(); }

    /// Releases what is owned and takes over `resource`.
    void Reset(Type resource = Traits::None()) noexcept {
        const Type old = std::exchange(m_resource, resource);
        if (old != Traits::None()) {
            Traits::Release(old);
        }
    }

private:
    Type m_resource = Traits::None();
};

/// A file handle from CreateFileW.
struct FileTraits {
    using Type = HANDLE;
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Release(Type handle) noexcept { CloseHandle(handle); }
};
using OwnedFile = Owner<FileTraits>;

/// A search handle from FindFirstFileW.
struct FindTraits {
    using Type = HANDLE;
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Release(Type handle) noexcept { FindClose(handle); }
};
using OwnedFind = Owner<FindTraits>;

/// A kernel object whose creation answers null on failure, such as a mutex.
struct KernelTraits {
    using Type = HANDLE;
    static Type None() noexcept { return nullptr; }
    static void Release(Type handle) noexcept { CloseHandle(handle); }
};
using OwnedHandle = Owner<KernelTraits>;

/// A registry key from RegCreateKeyExW.
struct KeyTraits {
    using Type = HKEY;
    static Type None() noexcept { return nullptr; }
    static void Release(Type key) noexcept { RegCloseKey(key); }
};
using OwnedKey = Owner<KeyTraits>;

/// A module from LoadLibraryW.
struct ModuleTraits {
    using Type = HMODULE;
    static Type None() noexcept { return nullptr; }
    static void Release(Type module) noexcept { FreeLibrary(module); }
};
using OwnedModule = Owner<ModuleTraits>;
