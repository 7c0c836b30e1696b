#include "bench/DocumentParts.h"
#include "bench/WriteStream.h"
#include "metadata/Com.h"

#include <msxml2.h>

namespace {

constexpr GUID kDomDocument = {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr GUID kDomDocumentInterface = {
    0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

Bstr Copy(std::wstring_view text) {
    Bstr copy(text.size());
    text.copy(copy.Get(), text.size());
    return copy;
}

class Tree {
public:
    explicit Tree(const DocumentParts& document) {
        CoCreateInstance(kDomDocument, nullptr, CLSCTX_INPROC_SERVER, kDomDocumentInterface,
                         reinterpret_cast<void**>(m_tree.Receive()));
        Build(*this, document);
    }

    void Begin(std::wstring_view name) { m_open.push_back(Add(name)); }
    void End() { m_open.pop_back(); }
    void Leaf(std::wstring_view name, std::wstring_view text) { Add(name)->put_text(Copy(text).Get()); }

    void Entry(std::wstring_view element, std::wstring_view name, std::wstring_view value) {
        const ComPtr<IXMLDOMElement> node = Add(element);
        const Bstr text = Copy(name);
        VARIANT variant = {};
        variant.vt = VT_BSTR;
        variant.bstrVal = text.Get();
        node->setAttribute(m_name.Get(), variant);
        node->put_text(Copy(value).Get());
    }

    void Write(HANDLE file) const {
        ComPtr<IStream> stream;
        CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive());
        VARIANT variant = {};
        variant.vt = VT_UNKNOWN;
        variant.punkVal = stream.Get();
        m_tree->save(variant);
        WriteStream(file, stream.Get());
    }

private:
    ComPtr<IXMLDOMElement> Add(std::wstring_view name) {
        ComPtr<IXMLDOMElement> node;
        m_tree->createElement(Copy(name).Get(), node.Receive());
        ComPtr<IXMLDOMNode> added;
        if (m_open.empty()) {
            m_tree->appendChild(node.Get(), added.Receive());
        } else {
            m_open.back()->appendChild(node.Get(), added.Receive());
        }
        return node;
    }

    ComPtr<IXMLDOMDocument> m_tree;
    std::vector<ComPtr<IXMLDOMElement>> m_open;
    Bstr m_name = Copy(L"name");
};

} // namespace

void WriteWithMsxml(HANDLE file, const DocumentParts& document) {
    Tree(document).Write(file);
}
