#include "toolkit/XAccessibleName.h"

#include "support/Owner.h"

#include <initguid.h> // defines the GUIDs of oleacc.h here
#include <oleacc.h>

#include <utility>

namespace {

void Release(IAccPropServices* services) noexcept {
    services->Release();
}

template<class Work>
void WithPropServices(Work work) noexcept {
    // Fails on a thread that has COM in the other way already, which serves as well.
    const bool started = SUCCEEDED(CoInitialize(nullptr));
    IAccPropServices* services = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                   reinterpret_cast<void**>(&services)))) {
        const Owner<IAccPropServices*, Release> owner(services);
        work(*services);
    }
    if (started) {
        CoUninitialize();
    }
}

} // namespace

void XAccessibleName::Set(HWND control, const wchar_t* name) noexcept {
    Clear();
    WithPropServices([&](IAccPropServices& services) {
        if (SUCCEEDED(services.SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                              PROPID_ACC_NAME, name))) {
            m_control = control;
        }
    });
}

void XAccessibleName::Clear() noexcept {
    if (const HWND control = std::exchange(m_control, nullptr); control != nullptr) {
        WithPropServices([control](IAccPropServices& services) {
            services.ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, &PROPID_ACC_NAME,
                                    1);
        });
    }
}
