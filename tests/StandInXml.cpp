#include "tests/StandInXml.h"

#include <ocidl.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr GUID kClasses[3] = {
    {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}},
    {0xF6D90F12, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}},
    {0x2933BF94, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}},
};
constexpr const wchar_t* kNames[3] = {L"xml", L"sheet", L"template"};

XmlFault fault;

// Places of the methods that are called in their interfaces' tables; the other methods answer E_NOTIMPL.
constexpr size_t kLoad = 58, kGetParseError = 60, kLoadXml = 65;  // IXMLDOMDocument
constexpr size_t kPutStylesheet = 7, kCreateProcessor = 9;        // IXSLTemplate
constexpr size_t kPutInput = 7, kPutOutput = 13, kTransform = 15; // IXSLProcessor
constexpr size_t kGetReason = 9;                                  // IXMLDOMParseError
constexpr size_t kInterfaceSupportsErrorInfo = 3;                 // ISupportErrorInfo
constexpr size_t kTableSize = 80;

/// Any COM object, by hand: a table of functions that all take the object first.
struct Object {
    void* const* table;
    std::wstring name;
    ULONG references = 1;
    IStream* output = nullptr;
};

std::wstring NameOf(IUnknown* object) {
    return object != nullptr ? reinterpret_cast<Object*>(object)->name : L"null";
}

/// Records the call; true, with the result to answer, when it is the one that goes wrong.
bool Fails(const std::wstring& step, HRESULT& result) {
    StandInXml::calls.push_back(step);
    result = S_OK;
    if (fault.step == nullptr || !step.starts_with(fault.step)) {
        return false;
    }
    if (fault.description != nullptr) {
        ICreateErrorInfo* create = nullptr;
        CreateErrorInfo(&create);
        std::wstring description = fault.description;
        create->SetDescription(description.data());
        IErrorInfo* information = nullptr;
        create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&information));
        SetErrorInfo(0, information);
        information->Release();
        create->Release();
    }
    result = fault.result;
    return FAILED(fault.result) || fault.givesNothing;
}

Object* Make(const std::wstring& name);

HRESULT WINAPI NotImplemented(Object*) {
    return E_NOTIMPL;
}

ULONG WINAPI AddRef(Object* self) {
    return ++self->references;
}

ULONG WINAPI Release(Object* self) {
    const ULONG left = --self->references;
    if (left == 0) {
        StandInXml::calls.push_back(L"release " + self->name);
        if (self->output != nullptr) {
            self->output->Release();
        }
        delete self;
    }
    return left;
}

HRESULT WINAPI QueryInterface(Object* self, const IID& id, void** out) {
    *out = nullptr;
    if (id == IID_ISupportErrorInfo && fault.supportsErrorInfo) {
        *out = Make(L"support");
        return S_OK;
    }
    if (id == IID_ISupportErrorInfo || id == IID_IRunnableObject) {
        return E_NOINTERFACE;
    }
    HRESULT result = S_OK;
    if (id != IID_IUnknown && Fails(L"query " + self->name, result)) {
        return result;
    }
    AddRef(self);
    *out = self;
    return S_OK;
}

HRESULT WINAPI InterfaceSupportsErrorInfo(Object*, const IID&) {
    return S_OK;
}

HRESULT WINAPI Load(Object* self, const VARIANT* source, VARIANT_BOOL* loaded) {
    HRESULT result = S_OK;
    const std::wstring text = source->vt == VT_BSTR ? source->bstrVal : L"no text";
    *loaded = Fails(self->name + L".load " + text, result) ? VARIANT_FALSE : VARIANT_TRUE;
    return result;
}

HRESULT WINAPI LoadXml(Object* self, BSTR text, VARIANT_BOOL* loaded) {
    HRESULT result = S_OK;
    const std::wstring begin(text, std::min<size_t>(SysStringLen(text), 70));
    *loaded = Fails(self->name + L".loadXML " + begin, result) ? VARIANT_FALSE : VARIANT_TRUE;
    return result;
}

HRESULT WINAPI GetParseError(Object* self, Object** out) {
    HRESULT result = S_OK;
    *out = Fails(self->name + L".parseError", result) ? nullptr : Make(L"parseError");
    return result;
}

HRESULT WINAPI GetReason(Object* self, BSTR* reason) {
    HRESULT result = S_OK;
    *reason = Fails(self->name + L".reason", result) ? nullptr : SysAllocString(L"the reason");
    return result;
}

HRESULT WINAPI PutStylesheet(Object* self, IUnknown* sheet) {
    HRESULT result = S_OK;
    Fails(self->name + L".putref_stylesheet " + NameOf(sheet), result);
    return result;
}

HRESULT WINAPI CreateProcessor(Object* self, Object** out) {
    HRESULT result = S_OK;
    *out = Fails(self->name + L".createProcessor", result) ? nullptr : Make(L"processor");
    return result;
}

HRESULT WINAPI PutOutput(Object* self, const VARIANT* output) {
    HRESULT result = S_OK;
    if (!Fails(self->name + L".put_output " + (output->vt == VT_UNKNOWN ? L"unknown" : L"?"), result)) {
        output->punkVal->QueryInterface(IID_IStream, reinterpret_cast<void**>(&self->output));
    }
    return result;
}

HRESULT WINAPI PutInput(Object* self, const VARIANT* input) {
    HRESULT result = S_OK;
    Fails(self->name + L".put_input " + (input->vt == VT_UNKNOWN ? NameOf(input->punkVal) : L"?"), result);
    return result;
}

HRESULT WINAPI Transform(Object* self, VARIANT_BOOL* done) {
    HRESULT result = S_OK;
    *done = VARIANT_FALSE; // nobody asks
    if (!Fails(self->name + L".transform", result) && self->output != nullptr) {
        const std::string bytes = StandInXml::kOutput;
        self->output->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    }
    return result;
}

template<class Function>
void* Entry(Function* function) {
    return reinterpret_cast<void*>(function);
}

std::vector<void*> Table(std::initializer_list<std::pair<size_t, void*>> methods) {
    std::vector<void*> table(kTableSize, Entry(NotImplemented));
    table[0] = Entry(QueryInterface);
    table[1] = Entry(AddRef);
    table[2] = Entry(Release);
    for (const auto& [slot, method] : methods) {
        table[slot] = method;
    }
    return table;
}

Object* Make(const std::wstring& name) {
    static const std::vector<void*> document =
        Table({{kLoad, Entry(Load)}, {kGetParseError, Entry(GetParseError)}, {kLoadXml, Entry(LoadXml)}});
    static const std::vector<void*> xslTemplate =
        Table({{kPutStylesheet, Entry(PutStylesheet)}, {kCreateProcessor, Entry(CreateProcessor)}});
    static const std::vector<void*> processor =
        Table({{kPutInput, Entry(PutInput)}, {kPutOutput, Entry(PutOutput)}, {kTransform, Entry(Transform)}});
    static const std::vector<void*> parseError = Table({{kGetReason, Entry(GetReason)}});
    static const std::vector<void*> support =
        Table({{kInterfaceSupportsErrorInfo, Entry(InterfaceSupportsErrorInfo)}});
    const std::vector<void*>& table = name == L"template"     ? xslTemplate
                                      : name == L"processor"  ? processor
                                      : name == L"parseError" ? parseError
                                      : name == L"support"    ? support
                                                              : document;
    return new Object{table.data(), name};
}

// A class factory is an object, too; it lives as long as the program.
HRESULT WINAPI QueryFactory(Object* self, const IID&, void** out) {
    AddRef(self);
    *out = self;
    return S_OK;
}

HRESULT WINAPI CreateInstance(Object* self, IUnknown*, const IID&, void** out) {
    HRESULT result = S_OK;
    *out = Fails(L"create " + self->name, result) ? nullptr : Make(self->name);
    return result;
}

IUnknown* MakeFactory(const wchar_t* name) {
    constexpr size_t kCreateInstance = 3;
    static std::vector<void*> table =
        Table({{0, Entry(QueryFactory)}, {kCreateInstance, Entry(CreateInstance)}});
    return reinterpret_cast<IUnknown*>(new Object{table.data(), name});
}

} // namespace

std::vector<std::wstring> StandInXml::calls;

StandInXml::StandInXml(XmlFault wanted) {
    fault = std::move(wanted);
    calls.clear();
    static IUnknown* const factories[3] = {MakeFactory(kNames[0]), MakeFactory(kNames[1]),
                                           MakeFactory(kNames[2])};
    for (size_t i = 0; i < std::size(kClasses); ++i) {
        CoRegisterClassObject(kClasses[i], factories[i], CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                              &m_registered[i]);
    }
}

StandInXml::~StandInXml() {
    for (const DWORD registered : m_registered) {
        CoRevokeClassObject(registered);
    }
    SetErrorInfo(0, nullptr);
}
