// The document of a TagBlob of any content, in both encodings, compared with that of the reference code.

#include "metadata/Document.h"
#include "support/Utf8.h"
#include "tests/fuzz/Require.h"
#include "tests/shared/PlainDocument.h"

#include <cstdio>

/// The input: two bytes for how much the writer holds beforehand, then the list, whose last bytes serve as an
/// AudioInfo as well.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint16_t ahead = 0;
    if (size < sizeof ahead) {
        return 0;
    }
    std::memcpy(&ahead, data, sizeof ahead);
    data += sizeof ahead;
    size -= sizeof ahead;

    PlainFile plain;
    plain.entries = ReadPlainly(data, static_cast<int64_t>(size));
    plain.name = plain.entries.empty() ? L"" : plain.entries[0].name;
    const size_t infoSize = std::min(size, sizeof plain.info);
    std::memcpy(&plain.info, data + size - infoSize, infoSize);

    FileFacts facts;
    facts.texts.name = XString(plain.name.c_str());
    facts.info = plain.info;
    facts.idTags = facts.properties = ParseTagBlob(data, static_cast<int32_t>(size));

    // A chunk ends within the document.
    static const std::string xs(XmlWriter::kChunkSize - 1, 'x');
    const std::string_view held = std::string_view(xs).substr(ahead % 4096);
    static std::vector<char> encoded(XmlWriter::kChunkSize * kMaxUtf8Bytes);
    for (const bool hasLines : {true, false}) {
        std::wstring text;
        std::string bytes;
        XmlWriter out(hasLines ? "\r\n" : "", [&](std::wstring_view chunk) {
            text += chunk;
            bytes.append(encoded.data(), EncodeUtf8(chunk, encoded));
        });
        out.Append(held);
        WriteDocument(out, facts, facts);
        Require(bytes.starts_with(held), "what was held");
        const std::wstring expected = PlainDocument(plain, hasLines ? L"\r\n" : L"");
        const std::string expectedBytes = PlainUtf8(expected);
        if (bytes.compare(held.size(), bytes.npos, expectedBytes) != 0) {
            std::fprintf(stderr, "%s\ninstead of\n%s\n", bytes.c_str() + held.size(), expectedBytes.c_str());
            Require(false, "the document");
        }
        Require(text.compare(held.size(), text.npos, expected) == 0,
                "the UTF-16 document, though not in UTF-8");
    }
    return 0;
}
