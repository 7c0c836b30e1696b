// The parser of a sample decoder library on a file of any content: the lists that it makes must be well
// formed.

#include "tests/fuzz/Require.h"
#include "tests/shared/PlainDocument.h"
#include "tools/decoders/Format.h"

namespace {

void RequireWhole(const std::vector<uint8_t>& list) {
    int32_t count = 0;
    std::memcpy(&count, list.data(), sizeof count);
    const PlainList entries = ReadPlainly(list.data(), static_cast<int64_t>(list.size()));
    Require(static_cast<size_t>(count) == entries.size(), "fewer entries than counted");
    size_t whole = sizeof count;
    for (const PlainEntry& entry : entries) {
        const size_t units = entry.name.size() + 1 + entry.value.size() + 1;
        Require(entry.rawSize == 0 || entry.name == L"Picture", "a text that continues after its end");
        whole += sizeof(int32_t) + units * sizeof(wchar_t) + static_cast<size_t>(entry.rawSize);
    }
    Require(whole == list.size(), "a text without its end, or bytes after the last entry");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FileContent content;
    if (ReadFormat({reinterpret_cast<const char*>(data), size}, content)) {
        Require(static_cast<uint64_t>(content.info.fileSize) == size, "file size");
        RequireWhole(content.tags.Pack());
        RequireWhole(content.properties.Pack());
    }
    return 0;
}
