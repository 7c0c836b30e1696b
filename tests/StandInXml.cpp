#include "tests/StandInXml.h"

#include <ocidl.h>

#include <iterator>
#include <map>

namespace {

constexpr GUID kClasses[3] = {
    {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}},
    {0xF6D90F12, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}},
    {0x2933BF94, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}},
};

XmlFault fault;

// Places of the methods that are called in their interfaces' tables; the other methods answer E_NOTIMPL.
constexpr size_t kLoad = 58, kGetParseError = 60, kLoadXml = 65;  // IXMLDOMDocument
constexpr size_t kPutStylesheet = 7, kCreateProcessor = 9;        // IXSLTemplate
constexpr size_t kPutInput = 7, kPutOutput = 13, kTransform = 15; // IXSLProcessor
constexpr size_t kGetReason = 9;                                  // IXMLDOMParseError
constexpr size_t kCreateInstance = 3;                             // IClassFactory
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

/// The parser's error information: what a failed call leaves for its caller to read.
void SetDescription(std::wstring description) {
    ICreateErrorInfo* create = nullptr;
    CreateErrorInfo(&create);
    create->SetDescription(description.data());
    IErrorInfo* information = nullptr;
    create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&information));
    SetErrorInfo(0, information);
    information->Release();
    create->Release();
}

struct Answer {
    HRESULT result = S_OK;
    bool gives = true; // what the caller asked for
};

/// Records the call, and goes wrong when it is the one that does.
Answer Call(const std::wstring& step) {
    StandInXml::calls.push_back(step);
    if (fault.step == nullptr || !step.starts_with(fault.step)) {
        return {};
    }
    if (fault.description != nullptr) {
        SetDescription(fault.description);
    }
    return {fault.result, SUCCEEDED(fault.result) && !fault.givesNothing};
}

Object* Make(const std::wstring& name);

/// A call that gives a new object.
HRESULT CallForObject(const std::wstring& step, void** out, const std::wstring& name) {
    const Answer answer = Call(step);
    *out = answer.gives ? Make(name) : nullptr;
    return answer.result;
}

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
    if (id == IID_ISupportErrorInfo) {
        *out = Make(L"support");
        return S_OK;
    }
    if (id == IID_IRunnableObject) {
        StandInXml::calls.push_back(L"run " + self->name);
        return E_NOINTERFACE; // it runs already
    }
    const Answer answer = id == IID_IUnknown ? Answer() : Call(L"query " + self->name);
    if (answer.gives) {
        AddRef(self);
        *out = self;
    }
    return answer.result;
}

HRESULT WINAPI InterfaceSupportsErrorInfo(Object*, const IID&) {
    return fault.supportsErrorInfo ? S_OK : S_FALSE;
}

HRESULT WINAPI Load(Object* self, const VARIANT* source, VARIANT_BOOL* loaded) {
    const Answer answer = Call(self->name + L".load " + (source->vt == VT_BSTR ? source->bstrVal : L"?"));
    *loaded = answer.gives ? VARIANT_TRUE : VARIANT_FALSE;
    return answer.result;
}

HRESULT WINAPI LoadXml(Object* self, BSTR text, VARIANT_BOOL* loaded) {
    const Answer answer = Call(self->name + L".loadXML " + std::wstring(text).substr(0, 70));
    *loaded = answer.gives ? VARIANT_TRUE : VARIANT_FALSE;
    return answer.result;
}

HRESULT WINAPI GetParseError(Object* self, void** out) {
    return CallForObject(self->name + L".parseError", out, self->name + L"'s parse error");
}

HRESULT WINAPI GetReason(Object* self, BSTR* reason) {
    const Answer answer = Call(self->name + L".reason");
    *reason = answer.gives ? SysAllocString(self->name.c_str()) : nullptr;
    return answer.result;
}

HRESULT WINAPI PutStylesheet(Object* self, IUnknown* sheet) {
    return Call(self->name + L".putref_stylesheet " + NameOf(sheet)).result;
}

HRESULT WINAPI CreateProcessor(Object* self, void** out) {
    return CallForObject(self->name + L".createProcessor", out, L"processor");
}

HRESULT WINAPI PutOutput(Object* self, const VARIANT* output) {
    const Answer answer = Call(self->name + L".put_output " + (output->vt == VT_UNKNOWN ? L"unknown" : L"?"));
    if (answer.gives) {
        output->punkVal->QueryInterface(IID_IStream, reinterpret_cast<void**>(&self->output));
    }
    return answer.result;
}

HRESULT WINAPI PutInput(Object* self, const VARIANT* input) {
    const std::wstring name = input->vt == VT_UNKNOWN ? NameOf(input->punkVal) : L"?";
    return Call(self->name + L".put_input " + name).result;
}

HRESULT WINAPI Transform(Object* self, VARIANT_BOOL* done) {
    const Answer answer = Call(self->name + L".transform");
    *done = VARIANT_FALSE; // nobody asks
    if (answer.gives && self->output != nullptr) {
        const std::string bytes = StandInXml::kOutput;
        self->output->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    }
    return answer.result;
}

using Table = std::vector<void*>;

struct Method {
    template<class Function>
    Method(size_t place, Function* function) : slot(place), code(reinterpret_cast<void*>(function)) {}
    size_t slot;
    void* code;
};

/// The three methods of every object, unless `methods` has others, and `methods` in their places.
Table MakeTable(std::initializer_list<Method> methods) {
    Table table(kTableSize, Method(0, NotImplemented).code);
    for (const auto& list :
         {std::initializer_list<Method>{{0, QueryInterface}, {1, AddRef}, {2, Release}}, methods}) {
        for (const Method& method : list) {
            table[method.slot] = method.code;
        }
    }
    return table;
}

Object* Make(const std::wstring& name) {
    static const Table document =
        MakeTable({{kLoad, Load}, {kGetParseError, GetParseError}, {kLoadXml, LoadXml}});
    static const Table parseError = MakeTable({{kGetReason, GetReason}});
    static const std::map<std::wstring, Table> tables = {
        {L"xml", document},
        {L"sheet", document},
        {L"template", MakeTable({{kPutStylesheet, PutStylesheet}, {kCreateProcessor, CreateProcessor}})},
        {L"processor", MakeTable({{kPutInput, PutInput}, {kPutOutput, PutOutput}, {kTransform, Transform}})},
        {L"xml's parse error", parseError},
        {L"sheet's parse error", parseError},
        {L"support", MakeTable({{kInterfaceSupportsErrorInfo, InterfaceSupportsErrorInfo}})},
    };
    return new Object{tables.at(name).data(), name};
}

// A class factory is an object, too; it lives as long as the program.
HRESULT WINAPI QueryFactory(Object* self, const IID&, void** out) {
    AddRef(self);
    *out = self;
    return S_OK;
}

HRESULT WINAPI CreateInstance(Object* self, IUnknown*, const IID&, void** out) {
    return CallForObject(L"create " + self->name, out, self->name);
}

} // namespace

std::vector<std::wstring> StandInXml::calls;

StandInXml::StandInXml(XmlFault wanted) {
    fault = std::move(wanted);
    calls.clear();
    static const Table table = MakeTable({{0, QueryFactory}, {kCreateInstance, CreateInstance}});
    static Object factories[] = {
        {table.data(), L"xml"}, {table.data(), L"sheet"}, {table.data(), L"template"}};
    for (size_t i = 0; i < std::size(kClasses); ++i) {
        CoRegisterClassObject(kClasses[i], reinterpret_cast<IUnknown*>(&factories[i]), CLSCTX_INPROC_SERVER,
                              REGCLS_MULTIPLEUSE, &m_registered[i]);
    }
}

StandInXml::~StandInXml() {
    for (const DWORD registered : m_registered) {
        CoRevokeClassObject(registered);
    }
    SetErrorInfo(0, nullptr);
}
