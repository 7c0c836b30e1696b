// A sample decoder library, through its exports, on a file of any content that may be cut while it is read: a
// list that it hands out must be whole.

#include "decoders/DecoderRecords.h"
#include "tests/fuzz/Require.h"
#include "tests/native/TheFile.h"

#include <cstring>

extern "C" {
DecoderCreateFunction Create;
DecoderDestroyFunction Destroy;
DecoderOpenFunction Open;
}

namespace {

/// Where a text's terminator ends.
const uint8_t* AfterText(const uint8_t* bytes, const uint8_t* end) {
    while (end - bytes >= 2 && (bytes[0] | bytes[1]) != 0) {
        bytes += 2;
    }
    Require(end - bytes >= 2, "a text without its end");
    return bytes + 2;
}

void RequireWhole(const void* list, int32_t size) {
    const uint8_t* bytes = static_cast<const uint8_t*>(list);
    const uint8_t* const end = bytes + size;
    int32_t count = 0;
    std::memcpy(&count, bytes, sizeof count);
    for (bytes += sizeof count; count != 0; --count) {
        int32_t entrySize = 0;
        Require(end - bytes >= 8, "fewer entries than counted");
        std::memcpy(&entrySize, bytes, sizeof entrySize);
        Require(entrySize >= 8 && entrySize <= end - bytes, "an entry that leaves its list");
        AfterText(AfterText(bytes + 4, bytes + entrySize), bytes + entrySize);
        bytes += entrySize;
    }
    Require(bytes == end, "bytes behind the last entry");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const size_t missing = size != 0 ? data[size - 1] % 4 : 0;
    SetTheFile(data, size, size + missing);
    void* const decoder = Create(nullptr);
    DecoderOpenRecord all = {};
    all.fileName = L"file";
    all.openFlags = kOpenAudioInfo | kOpenIDTags | kOpenAudioProperties;
    if (Open(decoder, &all) != 0) {
        Require(static_cast<uint64_t>(all.audioInfo.fileSize) == size + missing, "file size");
        RequireWhole(all.IDTagData, all.IDTagByteSize);
        RequireWhole(all.propertyData, all.propertyByteSize);
    }
    Destroy(decoder);
    return 0;
}
