// A decoder library that reads no file: whatever it opens has thirty tags and fifteen properties.
#include "bench/Blobs.h"
#include "decoders/DecoderRecords.h"

#include <windows.h>

#include <cwchar>
#include <iterator>

namespace {

int* calls = nullptr; // of the benchmark, null in other programs

void CountCall() noexcept {
    if (calls != nullptr) {
        ++*calls;
    }
}

} // namespace

extern "C" {

void* BenchCreate(void* /*context*/) {
    CountCall();
    return new Blob; // what the instance hands out
}

void BenchDestroy(void* instance) {
    CountCall();
    delete static_cast<Blob*>(instance);
}

int32_t BenchGet(void* /*instance*/, const wchar_t* /*key*/, DecoderGetRecord* record) {
    CountCall();
    static constexpr const wchar_t* kDecodes[] = {L".one", L".two", L".bench"};
    if (record->index >= std::size(kDecodes)) {
        return 0;
    }
    record->text = kDecodes[record->index];
    return 1;
}

int32_t BenchOpen(void* instance, DecoderOpenRecord* record) {
    CountCall();
    Blob& list = *static_cast<Blob*>(instance);
    if (record->openFlags == kOpenAudioInfo) {
        record->audioInfo.format = {1, 2, 44100, 176400, 4, 16, 0, 0, 0, {}};
        record->audioInfo.bitrate = 705;
        record->audioInfo.length = 123456;
        record->audioInfo.fileSize = 1234567;
        return 1;
    }
    list = PackTags(record->openFlags == kOpenIDTags ? 30 : 15);
    record->IDTagData = list.data();
    record->IDTagByteSize = static_cast<int32_t>(list.size());
    record->propertyData = list.data();
    record->propertyByteSize = static_cast<int32_t>(list.size());
    return 1;
}

/// Stands for the exports that are never called, and is what an empty function costs.
int32_t BenchNothing(void* /*instance*/, void* /*audio*/, uint32_t /*size*/) {
    return 1;
}

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD /*reason*/, LPVOID /*reserved*/) {
    calls = reinterpret_cast<int*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "decoderCalls")));
    return TRUE;
}
}
