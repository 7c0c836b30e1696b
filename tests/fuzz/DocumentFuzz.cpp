// The document of a packed list of any content, in both encodings, against the one that the plainest code
// makes.

#include "metadata/Document.h"
#include "support/Utf16Writer.h"
#include "support/Utf8Writer.h"
#include "tests/FileInMemory.h"
#include "tests/fuzz/PlainDocument.h"
#include "tests/fuzz/Require.h"

/// The input: two bytes that tell how much the writer holds beforehand, and the list, whose last bytes serve
/// as an AudioInfo as well.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint16_t ahead = 0;
    if (size < sizeof ahead) {
        return 0;
    }
    std::memcpy(&ahead, data, sizeof ahead);
    data += sizeof ahead;
    size -= sizeof ahead;

    PlainFile plain;
    plain.idTags = plain.properties = ReadPlainly(data, static_cast<int64_t>(size));
    plain.name = plain.idTags.empty() ? L"" : plain.idTags[0].name;
    const size_t infoSize = std::min(size, sizeof plain.info);
    std::memcpy(&plain.info, data + size - infoSize, infoSize);

    FileFacts facts;
    facts.texts.name = XString(plain.name.c_str());
    facts.info = plain.info;
    facts.idTags = facts.properties = ParseTagBlob(data, static_cast<int32_t>(size));

    static const std::string xs(Utf8Writer<FileInMemory>::kPieceSize - 1, 'x');
    const std::string_view held =
        std::string_view(xs).substr(ahead % 4096); // a piece ends within the document
    FileInMemory file;
    Utf8Writer out(file);
    out.Append(held);
    Document(out).Write(facts, facts);
    out.Flush();
    Require(file.bytes.starts_with(held), "what was held");
    file.bytes.erase(0, held.size());
    Require(file.bytes == PlainUtf8(PlainDocument(plain, plain, L"\r\n")), "document in UTF-8");

    Utf16Writer measure(nullptr);
    Document(measure).Write(facts, facts);
    std::wstring stored(measure.Position(), L'?');
    Utf16Writer store(stored.data());
    Document(store).Write(facts, facts);
    Require(stored == PlainDocument(plain, plain, L""), "document in UTF-16");
    return 0;
}
