// A sample decoder library, through its exports, on a file of any content that may be cut while it is read:
// the lists that it returns must be well formed.

#include "decoders/DecoderRecords.h"
#include "tests/fuzz/Require.h"
#include "tests/native/TheFile.h"
#include "tests/shared/PlainDocument.h"

extern "C" {
DecoderCreateFunction Create;
DecoderDestroyFunction Destroy;
DecoderOpenFunction Open;
}

namespace {

void RequireWhole(const void* list, int32_t size) {
    int32_t count = 0;
    std::memcpy(&count, list, sizeof count);
    const PlainList entries = ReadPlainly(static_cast<const uint8_t*>(list), size);
    Require(static_cast<size_t>(count) == entries.size(), "fewer entries than counted");
    int64_t whole = sizeof count;
    for (const PlainEntry& entry : entries) {
        const size_t units = entry.name.size() + 1 + entry.value.size() + 1;
        Require(entry.rawSize == 0 || entry.name == L"Picture", "a text that continues after its end");
        whole += static_cast<int64_t>(sizeof(int32_t) + units * sizeof(wchar_t)) + entry.rawSize;
    }
    Require(whole == size, "a text without its end, or bytes after the last entry");
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
