// The document of a TagBlob of any content, in both encodings, compared with that of the reference code.

#include "metadata/Document.h"
#include "support/Utf8.h"
#include "tests/fuzz/Require.h"
#include "tests/shared/PlainDocument.h"

#include <cstdio>
#include <cstdlib>

namespace {

/// The line of `text` at index `at`.
std::string LineAt(const std::string& text, size_t at) {
    const size_t begin = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
    return text.substr(begin, text.find('\n', begin) - begin);
}

/// Ends the program, so that the fuzzer keeps the input, unless the documents are the same.
void RequireSame(const std::string& actual, const std::string& expected, size_t ahead, size_t listSize) {
    if (actual == expected) {
        return;
    }
    size_t at = 0;
    size_t line = 1;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) {
        line += actual[at++] == '\n' ? 1 : 0;
    }
    std::fprintf(stderr,
                 "wrong: line %zu of the document of a list of %zu bytes, after %zu units\n"
                 "  is         %s\n  instead of %s\n",
                 line, listSize, ahead, LineAt(actual, at).c_str(), LineAt(expected, at).c_str());
    std::abort();
}

} // namespace

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
    plain.idTags = plain.properties = ReadPlainly(data, static_cast<int64_t>(size));
    plain.name = plain.idTags.empty() ? L"" : plain.idTags[0].name;
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
        const std::wstring expected = PlainDocument(plain, plain, hasLines ? L"\r\n" : L"");
        RequireSame(bytes.substr(held.size()), PlainUtf8(expected), held.size(), size);
        Require(text.compare(held.size(), text.npos, expected) == 0,
                "the UTF-16 document, though not in UTF-8");
    }
    return 0;
}
