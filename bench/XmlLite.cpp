#include "bench/DocumentParts.h"
#include "bench/WriteStream.h"
#include "metadata/Com.h"
#include "support/Owner.h"

#include <xmllite.h>

namespace {

constexpr GUID kXmlWriter = {0x7279FC88, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};

class Sink {
public:
    explicit Sink(IStream* stream) {
        // The compiler comes without an import library for it.
        static const OwnedModule library(LoadLibraryW(L"xmllite.dll"));
        static auto* const create = reinterpret_cast<decltype(&CreateXmlWriter)>(
            reinterpret_cast<void*>(GetProcAddress(library.Get(), "CreateXmlWriter")));
        create(kXmlWriter, reinterpret_cast<void**>(m_writer.Receive()), nullptr);
        m_writer->SetOutput(stream);
        m_writer->WriteStartDocument(XmlStandalone_Omit);
    }
    ~Sink() { m_writer->WriteEndDocument(); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    void Begin(const std::wstring& name) { m_writer->WriteStartElement(nullptr, name.c_str(), nullptr); }
    void End() { m_writer->WriteEndElement(); }

    void Leaf(const std::wstring& name, std::wstring_view text) {
        Begin(name);
        Text(text);
        End();
    }

    void Entry(const std::wstring& element, const wchar_t* name, std::wstring_view value) {
        Begin(element);
        m_writer->WriteAttributeString(nullptr, L"name", nullptr, name);
        Text(value);
        End();
    }

private:
    void Text(std::wstring_view text) { m_writer->WriteChars(text.data(), static_cast<UINT>(text.size())); }

    ComPtr<IXmlWriter> m_writer;
};

} // namespace

void WriteWithXmlLite(HANDLE file, const DocumentParts& document) {
    ComPtr<IStream> stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive());
    {
        Sink sink(stream.Get());
        Build(sink, document);
    }
    WriteStream(file, stream.Get());
}
