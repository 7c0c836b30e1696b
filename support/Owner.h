#pragma once

#include <windows.h>

#include <cstdint>
#include <utility>

/// Owns one system resource and releases it on destruction by calling `release`. Owners move and never copy.
/// `none` is the value that stands for no resource, as a number because a pointer such as
/// INVALID_HANDLE_VALUE cannot be a template argument.
template<class Type, auto release, intptr_t none = 0>
class Owner {
public:
    Owner() noexcept = default;
    explicit Owner(Type resource) noexcept : m_resource(resource) {}
    Owner(Owner&& other) noexcept : m_resource(std::exchange(other.m_resource, None())) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Reset(std::exchange(other.m_resource, None()));
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { Reset(); }

    /// The resource, still owned here.
    Type Get() const noexcept { return m_resource; }

    bool IsValid() const noexcept { return m_resource != None(); }

    /// Releases what is owned and takes over `resource`.
    void Reset(Type resource = None()) noexcept {
        const Type old = std::exchange(m_resource, resource);
        if (old != None()) {
            release(old);
        }
    }

private:
    static Type None() noexcept { return reinterpret_cast<Type>(none); }

    Type m_resource = None();
};

/// A file handle from CreateFileW.
using OwnedFile = Owner<HANDLE, CloseHandle, -1>;

/// A search handle from FindFirstFileW.
using OwnedFind = Owner<HANDLE, FindClose, -1>;

/// A kernel object whose creation answers null on failure, such as a mutex.
using OwnedHandle = Owner<HANDLE, CloseHandle>;

/// A registry key from RegCreateKeyExW.
using OwnedKey = Owner<HKEY, RegCloseKey>;

/// A module from LoadLibraryW.
using OwnedModule = Owner<HMODULE, FreeLibrary>;
