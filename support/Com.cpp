#include "support/Com.h"

#include <ole2.h>

namespace {

void CheckCreation(HRESULT result) {
    if (FAILED(result) && result != E_NOINTERFACE) {
        throw ComError{};
    }
}

XString DescribeError(IUnknown* object, const GUID& interfaceId) {
    ComPtr<ISupportErrorInfo> support;
    ComPtr<IErrorInfo> information;
    Bstr description;
    if (SUCCEEDED(
            object->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(support.Receive()))) &&
        support.Get() != nullptr && support->InterfaceSupportsErrorInfo(interfaceId) == S_OK &&
        GetErrorInfo(0, information.Receive()) == S_OK && information.Get() != nullptr) {
        static_cast<void>(information->GetDescription(description.Receive()));
    }
    return XString(description.Text());
}

} // namespace

void CheckCall(HRESULT result, IUnknown* object, const GUID& interfaceId) {
    if (FAILED(result)) {
        throw ComError{DescribeError(object, interfaceId)};
    }
}

void CreateObject(const GUID& classId, const GUID& interfaceId, void** object) {
    ComPtr<IUnknown> unknown;
    HRESULT result = CoCreateInstance(classId, nullptr, CLSCTX_ALL, IID_IUnknown,
                                      reinterpret_cast<void**>(unknown.Receive()));
    if (SUCCEEDED(result)) {
        result = OleRun(unknown.Get());
    }
    if (SUCCEEDED(result)) {
        result = unknown->QueryInterface(interfaceId, object);
    }
    CheckCreation(result);
}
