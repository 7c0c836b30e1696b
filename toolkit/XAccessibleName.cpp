#include "toolkit/XAccessibleName.h"

#include "support/Com.h"

#include <initguid.h> // defines the GUIDs of oleacc.h here
#include <oleacc.h>

#include <utility>

namespace {

/// Calls `use` with the system's service for accessible names, if there is one.
template<class Use>
void WithService(Use use) noexcept {
    // Fails on a thread of the multi-threaded apartment, which can use the service as it is.
    const bool isEntered = SUCCEEDED(CoInitialize(nullptr));
    {
        ComPtr<IAccPropServices> service;
        static_cast<void>(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                           IID_IAccPropServices,
                                           reinterpret_cast<void**>(service.Receive())));
        if (service.Get() != nullptr) {
            use(*service.Get());
        }
    }
    if (isEntered) {
        CoUninitialize();
    }
}

} // namespace

void XAccessibleName::Set(HWND control, const wchar_t* name) noexcept {
    Clear();
    WithService([&](IAccPropServices& service) {
        if (SUCCEEDED(service.SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                             PROPID_ACC_NAME, name))) {
            m_control = control;
        }
    });
}

void XAccessibleName::Clear() noexcept {
    if (const HWND control = std::exchange(m_control, nullptr); control != nullptr) {
        WithService([control](IAccPropServices& service) {
            service.ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, &PROPID_ACC_NAME,
                                   1);
        });
    }
}
