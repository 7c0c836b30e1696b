#include "metadata/TransformDocument.h"

#include <msxml2.h>

#include <limits>

namespace {

constexpr GUID kDomDocument = {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr GUID kFreeThreadedDomDocument = {
    0xF6D90F12, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr GUID kXslTemplate = {0x2933BF94, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

/// Interface ids, spelt out so that no vendor's way to attach them to types is needed.
template<class Interface>
constexpr GUID kInterfaceId = {};
template<>
constexpr GUID kInterfaceId<IXMLDOMDocument> = {
    0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
template<>
constexpr GUID kInterfaceId<IXMLDOMParseError> = {
    0x3EFAA426, 0x272F, 0x11D2, {0x83, 0x6F, 0x00, 0x00, 0xF8, 0x7A, 0x77, 0x82}};
template<>
constexpr GUID kInterfaceId<IXSLTemplate> = {
    0x2933BF93, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
template<>
constexpr GUID kInterfaceId<IXSLProcessor> = {
    0x2933BF92, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

/// Throws ComError, with the object's description, when a call on it failed.
template<class Interface>
void Check(HRESULT result, const ComPtr<Interface>& object) {
    CheckCall(result, object.Get(), kInterfaceId<Interface>);
}

void ThrowUnless(bool done) {
    if (!done) {
        throw ComError{};
    }
}

template<class Interface>
ComPtr<Interface> Create(const GUID& classId) {
    ComPtr<Interface> object;
    CreateObject(classId, kInterfaceId<Interface>, reinterpret_cast<void**>(object.Receive()));
    return object;
}

/// One transformation: its objects, released in the reverse of this order, and where it reports.
class Transformation {
public:
    Transformation(const CreateRecord& log, const wchar_t* scope) noexcept : m_log(log), m_scope(scope) {}

    /// False after a reported failure; ComError where no guard of a single step reports it.
    bool Run(const Bstr& document, const XString& styleSheetPath, ByteBuffer& out) {
        m_document = Create<IXMLDOMDocument>(kDomDocument);
        m_styleSheet = Create<IXMLDOMDocument>(kFreeThreadedDomDocument);
        m_template = Create<IXSLTemplate>(kXslTemplate);
        if (!Guard(L"Error loading intermediate XML: ", [&] { return LoadDocument(document); }) ||
            !Guard(L"Error loading XSLT file: ", [&] { return LoadStyleSheet(styleSheetPath); }) ||
            !Guard(L"Error applying XSL style sheet: ", [&] { return CreateProcessor(); })) {
            return false;
        }
        TransformInto(out);
        return true;
    }

    void Report(const wchar_t* message, const ComError& error) const {
        XString text(message);
        text.Append(error.description);
        LogError(text.Text(), m_log, m_scope);
    }

private:
    template<class Step>
    bool Guard(const wchar_t* message, Step step) const {
        try {
            return step();
        } catch (const ComError& error) {
            Report(message, error);
            return false;
        }
    }

    bool LoadDocument(const Bstr& document) const {
        VARIANT_BOOL loaded = VARIANT_FALSE;
        Check(m_document->loadXML(document.Get(), &loaded), m_document);
        return ReportLoading(loaded, L"XML content loaded successfully", L"Loading intermediate XML failed");
    }

    bool LoadStyleSheet(const XString& path) const {
        VARIANT_BOOL loaded = VARIANT_FALSE;
        Check(m_styleSheet->load(Variant(path).Get(), &loaded), m_styleSheet);
        return ReportLoading(loaded, L"XSL file loaded successfully", L"Loading XSL failed");
    }

    /// The reason is always the document's: for a style sheet that fails it is empty as a rule.
    bool ReportLoading(VARIANT_BOOL loaded, const wchar_t* success, const wchar_t* failure) const {
        if (loaded != VARIANT_FALSE) {
            Log(success, m_log, m_scope);
            return true;
        }
        LogError(failure, m_log, m_scope);
        ComPtr<IXMLDOMParseError> parseError;
        Check(m_document->get_parseError(parseError.Receive()), m_document);
        Bstr reason;
        Check(parseError->get_reason(reason.Receive()), parseError);
        LogError(reason.Text(), m_log, m_scope);
        return false;
    }

    bool CreateProcessor() {
        // A style sheet that the template refuses shows in createProcessor.
        static_cast<void>(m_template->putref_stylesheet(m_styleSheet.Get()));
        Check(m_template->createProcessor(m_processor.Receive()), m_template);
        return true;
    }

    void TransformInto(ByteBuffer& out) const {
        ComPtr<IStream> stream;
        static_cast<void>(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()));
        // What the processor makes of its output and input shows in `transform`.
        static_cast<void>(m_processor->put_output(Variant(stream.Get()).Get()));
        static_cast<void>(m_processor->put_input(Variant(m_document.Get()).Get()));
        VARIANT_BOOL done = VARIANT_FALSE;
        Check(m_processor->transform(&done), m_processor);
        CopyMemoryBlock(stream.Get(), out);
    }

    /// The stream's whole memory block, which may end behind what was written.
    static void CopyMemoryBlock(IStream* stream, ByteBuffer& out) {
        HGLOBAL block = nullptr;
        static_cast<void>(GetHGlobalFromStream(stream, &block));
        // Without a block there is no result, not even an empty one to replace the output file with.
        ThrowUnless(block != nullptr);
        const SIZE_T size = GlobalSize(block);
        if (size > std::numeric_limits<uint32_t>::max()) {
            throw std::bad_alloc();
        }
        if (size != 0) {
            const void* bytes = GlobalLock(block);
            ThrowUnless(bytes != nullptr);
            out.Assign(bytes, static_cast<uint32_t>(size));
            GlobalUnlock(block);
        }
    }

    const CreateRecord& m_log;
    const wchar_t* m_scope;
    ComPtr<IXMLDOMDocument> m_document;
    ComPtr<IXMLDOMDocument> m_styleSheet;
    ComPtr<IXSLTemplate> m_template;
    ComPtr<IXSLProcessor> m_processor;
};

} // namespace

bool TransformDocument(const CreateRecord& log, const wchar_t* scope, const Bstr& document,
                       const XString& styleSheetPath, ByteBuffer& out) {
    const ComInitScope com;
    Transformation transformation(log, scope);
    try {
        return transformation.Run(document, styleSheetPath, out);
    } catch (const ComError& error) {
        transformation.Report(L"Unexpected MS XML error: ", error);
        return false;
    }
}
