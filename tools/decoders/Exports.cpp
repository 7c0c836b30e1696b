#include "decoders/DecoderRecords.h"
#include "support/XString.h"
#include "tools/decoders/Format.h"
#include "tools/decoders/MappedFile.h"

#include <exception>
#include <new>
#include <vector>

// The nine exports of a sample decoder library (Decoder.def). No exception leaves the library: failures are
// reported by a null instance or the result 0.

namespace {

/// An instance: every list that a caller was given. They stay valid until Destroy.
using Lists = std::vector<std::vector<uint8_t>>;

} // namespace

extern "C" {

/// The context identifies the instance of the plug-in that calls; these libraries do not use it.
void* Create(void* /*context*/) {
    return new (std::nothrow) Lists;
}

void Destroy(void* instance) {
    delete static_cast<Lists*>(instance);
}

int32_t Get(void* /*instance*/, const wchar_t* key, DecoderGetRecord* record) {
    if (key == nullptr || record == nullptr || Compare(key, L"Decodes") != 0) {
        return 0;
    }
    record->text = FormatExtension(record->index);
    return record->text != nullptr;
}

int32_t Open(void* instance, DecoderOpenRecord* record) try {
    MappedFile file;
    FileContent content;
    if (instance == nullptr || record == nullptr || record->fileName == nullptr ||
        !file.Open(record->fileName) || !ReadFormat(file.Bytes(), content)) {
        return 0;
    }
    Lists& lists = *static_cast<Lists*>(instance);
    if ((record->openFlags & kOpenAudioInfo) != 0) {
        record->audioInfo = content.info;
    }
    if ((record->openFlags & kOpenIDTags) != 0) {
        lists.push_back(content.tags.Pack());
        record->IDTagData = lists.back().data();
        record->IDTagByteSize = static_cast<int32_t>(lists.back().size());
    }
    if ((record->openFlags & kOpenAudioProperties) != 0) {
        lists.push_back(content.properties.Pack());
        record->propertyData = lists.back().data();
        record->propertyByteSize = static_cast<int32_t>(lists.back().size());
    }
    return 1;
} catch (const std::exception&) {
    return 0; // out of memory
}

/// A file is closed again by Open.
int32_t Close(void* /*instance*/) {
    return 1;
}

/// Set, DecodeBlock, SetPosition and DeleteATag: no audio is decoded and nothing is changed.
int32_t Refuse(void* /*instance*/) {
    return 0;
}
}
