#pragma once

#include "support/XString.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <new>
#include <utility>

// Owners for what COM calls return, and an exception for their failures.

/// A failed COM call, with the description from the object's error information; empty when there is none.
struct ComError {
    XString description;
};

/// COM on this thread for the life of the scope (CoInitialize). CoUninitialize is called even when
/// CoInitialize failed, as it does on a thread that already belongs to another kind of apartment.
class ComInitScope {
public:
    ComInitScope() noexcept {
        // The result is ignored: CoUninitialize follows in any case.
        static_cast<void>(CoInitialize(nullptr));
    }
    ~ComInitScope() { CoUninitialize(); }
    ComInitScope(const ComInitScope&) = delete;
    ComInitScope& operator=(const ComInitScope&) = delete;
};

/// Owns one reference to a COM object, or none.
template<class Interface>
class ComPtr {
public:
    ComPtr() noexcept = default;
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComPtr& operator=(ComPtr&&) = delete;
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    ~ComPtr() {
        if (m_object != nullptr) {
            m_object->Release();
        }
    }

    /// The object, still owned here, or null.
    Interface* Get() const noexcept { return m_object; }

    /// The address for a call that returns a reference; only for a pointer that holds none.
    Interface** Receive() noexcept { return &m_object; }

    /// Throws ComError, without a description, when there is no object.
    Interface* operator->() const {
        if (m_object == nullptr) {
            throw ComError{};
        }
        return m_object;
    }

private:
    Interface* m_object = nullptr;
};

/// Owns one BSTR, or none.
class Bstr {
public:
    Bstr() noexcept = default;

    /// `size` code units whose content the caller fills in. Throws std::bad_alloc.
    explicit Bstr(size_t size)
        : m_text(size > UINT_MAX ? nullptr : SysAllocStringLen(nullptr, static_cast<UINT>(size))) {
        if (m_text == nullptr) {
            throw std::bad_alloc();
        }
    }
    Bstr(Bstr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    Bstr& operator=(Bstr&&) = delete;
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(m_text); }

    BSTR Get() const noexcept { return m_text; }

    /// The address for a call that returns a string; only for an owner that holds none.
    BSTR* Receive() noexcept { return &m_text; }

    /// Zero-terminated, never null.
    const wchar_t* Text() const noexcept { return m_text != nullptr ? m_text : L""; }

private:
    BSTR m_text = nullptr;
};

/// Owns the content of one VARIANT.
class Variant {
public:
    /// VT_BSTR with a copy of the text. Throws std::bad_alloc.
    explicit Variant(const XString& text) {
        m_value.vt = VT_BSTR;
        m_value.bstrVal = SysAllocStringLen(text.Text(), static_cast<UINT>(text.Size()));
        if (m_value.bstrVal == nullptr) {
            throw std::bad_alloc();
        }
    }

    /// VT_UNKNOWN with a reference of its own to the object, which may be null.
    explicit Variant(IUnknown* object) noexcept {
        m_value.vt = VT_UNKNOWN;
        m_value.punkVal = object;
        if (object != nullptr) {
            object->AddRef();
        }
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&m_value); }

    const VARIANT& Get() const noexcept { return m_value; }

private:
    VARIANT m_value = {};
};

/// Throws ComError when `result` is a failure of a call on `object`. The description is the thread's error
/// information if the object says that it supplies one for that interface.
void CheckCall(HRESULT result, IUnknown* object, const GUID& interfaceId);

/// Makes an object of the class (CoCreateInstance, OleRun) and stores its interface, which has to fit the
/// pointer's type. `E_NOINTERFACE` on the way leaves the pointer null; any other failure throws ComError.
void CreateObject(const GUID& classId, const GUID& interfaceId, void** object);
