#pragma once

#include "tests/shared/Account.h"

#include <msxml2.h>

/// Puts stubs in the methods of the real XML parser that the plug-in, which must be loaded, calls. COM must
/// be entered. The parser's objects are not released, which keeps it loaded while COM is.
inline void WatchParser() {
    const auto make = [](auto*& object, const wchar_t* classText, const wchar_t* interfaceText) {
        GUID classId = {};
        GUID interfaceId = {};
        CLSIDFromString(classText, &classId);
        CLSIDFromString(interfaceText, &interfaceId);
        ASSERT_EQ(
            CoCreateInstance(classId, nullptr, CLSCTX_ALL, interfaceId, reinterpret_cast<void**>(&object)),
            S_OK);
    };
    IXMLDOMDocument* xml = nullptr;
    IXMLDOMDocument* freeThreaded = nullptr;
    IXSLTemplate* sheets = nullptr;
    IXSLProcessor* processor = nullptr;
    IXMLDOMParseError* parseError = nullptr;
    ISupportErrorInfo* support = nullptr;
    make(xml, L"{F6D90F11-9C73-11D3-B32E-00C04F990BB4}", L"{2933BF81-7B36-11D2-B20E-00C04F983E60}");
    make(freeThreaded, L"{F6D90F12-9C73-11D3-B32E-00C04F990BB4}", L"{2933BF81-7B36-11D2-B20E-00C04F983E60}");
    make(sheets, L"{2933BF94-7B36-11D2-B20E-00C04F983E60}", L"{2933BF93-7B36-11D2-B20E-00C04F983E60}");
    std::wstring text = L"<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'/>";
    VARIANT_BOOL loaded = VARIANT_FALSE;
    freeThreaded->loadXML(text.data(), &loaded);
    xml->get_parseError(&parseError);
    xml->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(&support));
    sheets->putref_stylesheet(freeThreaded);
    sheets->createProcessor(&processor);
    Account::Watch(xml, "document");
    Account::Watch(sheets, "template");
    const struct {
        const char* name;
        void* object;
        size_t method;
    } methods[] = {
        {"load", freeThreaded, 58},       {"parseError", xml, 60},        {"loadXML", xml, 65},
        {"putref_stylesheet", sheets, 7}, {"createProcessor", sheets, 9}, {"put_output", processor, 13},
        {"transform", processor, 15},     {"reason", parseError, 9},      {"suppliesErrorInfo", support, 3}};
    for (const auto& row : methods) {
        Account::WatchMethod(row.name, row.object, row.method);
    }
}
