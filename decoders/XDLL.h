#pragma once

#include "support/Owner.h"

/// Owns one loaded library and looks up its exports.
class XDLL {
public:
    /// Loads the library of that path (LoadLibraryW), freeing the one held before.
    bool Load(const wchar_t* path) noexcept {
        m_module.Reset(LoadLibraryW(path));
        return IsLoaded();
    }

    void Free() noexcept { m_module.Reset(); }

    bool IsLoaded() const noexcept { return m_module.IsValid(); }

    /// The export of that name as a pointer to the given function type, or null when the library lacks it or
    /// none is loaded.
    template<class Function>
    Function* Export(const char* name) const noexcept {
        if (!IsLoaded()) {
            return nullptr;
        }
        const FARPROC address = GetProcAddress(m_module.Get(), name);
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
    }

private:
    OwnedModule m_module;
};
