#include "metadata/TransformDocument.h"

#include "support/DebugLog.h"
#include "support/Owner.h"

#include <msxml2.h>

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

bool LoadDocument(const ComPtr<IXMLDOMDocument>& xml, const Bstr& document) {
    VARIANT_BOOL loaded = VARIANT_FALSE;
    Check(xml->loadXML(document.Get(), &loaded), xml);
    return loaded != VARIANT_FALSE;
}

bool LoadStyleSheet(const ComPtr<IXMLDOMDocument>& styleSheet, const XString& path) {
    VARIANT_BOOL loaded = VARIANT_FALSE;
    Check(styleSheet->load(Variant(path).Get(), &loaded), styleSheet);
    return loaded != VARIANT_FALSE;
}

Bstr ParseReason(const ComPtr<IXMLDOMDocument>& xml) {
    ComPtr<IXMLDOMParseError> parseError;
    Check(xml->get_parseError(parseError.Receive()), xml);
    Bstr reason;
    Check(parseError->get_reason(reason.Receive()), parseError);
    return reason;
}

/// The stream's whole memory block, which may end behind what was written.
void CopyMemoryBlock(IStream* stream, std::vector<uint8_t>& out) {
    HGLOBAL block = nullptr;
    static_cast<void>(GetHGlobalFromStream(stream, &block));
    // Without a block there is no result, not even an empty one to replace the output file with.
    ThrowUnless(block != nullptr);
    if (const SIZE_T size = GlobalSize(block); size != 0) {
        const auto* bytes = static_cast<const uint8_t*>(GlobalLock(block));
        ThrowUnless(bytes != nullptr);
        const Owner<HGLOBAL, GlobalUnlock> locked(block); // until the end, by an exception as well
        out.assign(bytes, bytes + size);
    }
}

} // namespace

bool TransformDocument(const CreateRecord& log, const wchar_t* scope, const Bstr& document,
                       const XString& styleSheetPath, std::vector<uint8_t>& out) {
    const ComInitScope com; // COM ends after the try block has released its objects
    const wchar_t* const anyStep = L"Unexpected MS XML error: ";
    const wchar_t* step = anyStep; // the beginning of the error line
    try {
        const auto xml = Create<IXMLDOMDocument>(kDomDocument);
        const auto styleSheet = Create<IXMLDOMDocument>(kFreeThreadedDomDocument);
        const auto sheetTemplate = Create<IXSLTemplate>(kXslTemplate);

        step = L"Error loading intermediate XML: ";
        if (!LoadDocument(xml, document)) {
            LogError(L"Loading intermediate XML failed", log, scope);
            LogError(ParseReason(xml).Text(), log, scope);
            return false;
        }
        Log(L"XML content loaded successfully", log, scope);

        step = L"Error loading XSLT file: ";
        if (!LoadStyleSheet(styleSheet, styleSheetPath)) {
            LogError(L"Loading XSL failed", log, scope);
            LogError(ParseReason(xml).Text(), log, scope); // the document's reason, as a rule empty
            return false;
        }
        Log(L"XSL file loaded successfully", log, scope);

        step = L"Error applying XSL style sheet: ";
        // The result is ignored: createProcessor fails when the template refused the style sheet.
        static_cast<void>(sheetTemplate->putref_stylesheet(styleSheet.Get()));
        ComPtr<IXSLProcessor> processor;
        Check(sheetTemplate->createProcessor(processor.Receive()), sheetTemplate);

        step = anyStep;
        ComPtr<IStream> stream;
        static_cast<void>(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()));
        // The results are ignored: `transform` fails when the output or the input was refused.
        static_cast<void>(processor->put_output(Variant(stream.Get()).Get()));
        static_cast<void>(processor->put_input(Variant(xml.Get()).Get()));
        VARIANT_BOOL done = VARIANT_FALSE;
        Check(processor->transform(&done), processor);
        CopyMemoryBlock(stream.Get(), out);
        return true;
    } catch (const ComError& error) {
        XString text(step);
        text.Append(error.description);
        LogError(text.Text(), log, scope);
        return false;
    }
}
