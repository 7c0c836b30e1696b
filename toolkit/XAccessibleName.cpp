#include "toolkit/XAccessibleName.h"

#include <initguid.h> // defines the GUIDs of oleacc.h here
#include <oleacc.h>

#include <utility>

XAccessibleName::XAccessibleName() noexcept = default;
XAccessibleName::~XAccessibleName() = default;

void XAccessibleName::Set(HWND control, const wchar_t* name) noexcept {
    Clear();
    // Fails on a thread of the multi-threaded apartment, which can use the service as it is.
    m_isComEntered = SUCCEEDED(CoInitialize(nullptr));
    static_cast<void>(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_IAccPropServices, reinterpret_cast<void**>(m_service.Receive())));
    if (IAccPropServices* service = m_service.Get();
        service != nullptr && SUCCEEDED(service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT),
                                                                CHILDID_SELF, PROPID_ACC_NAME, name))) {
        m_control = control;
    }
}

void XAccessibleName::Clear() noexcept {
    if (const HWND control = std::exchange(m_control, nullptr); control != nullptr) {
        m_service.Get()->ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                        &PROPID_ACC_NAME, 1);
    }
    m_service = ComPtr<IAccPropServices>();
    if (std::exchange(m_isComEntered, false)) {
        CoUninitialize();
    }
}
