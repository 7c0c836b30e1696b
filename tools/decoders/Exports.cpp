#include "decoders/DecoderRecords.h"
#include "support/XString.h"
#include "tools/decoders/Format.h"

#include <exception>
#include <new>
#include <utility>
#include <vector>

// The nine exports of a sample decoder library (Decoder.def). No exception leaves the library: failures are
// reported by a null instance or the result 0.

namespace {

class Decoder {
public:
    bool Open(DecoderOpenRecord& record) {
        BoundedFile file;
        AudioFacts facts;
        if (!file.Open(record.fileName) || !ReadFormat(file, record.openFlags, facts)) {
            return false;
        }
        if ((record.openFlags & kOpenAudioInfo) != 0) {
            record.audioInfo = facts.info;
        }
        if ((record.openFlags & kOpenIDTags) != 0) {
            const std::vector<uint8_t>& list = Keep(facts.tags);
            record.IDTagData = list.data();
            record.IDTagByteSize = static_cast<int32_t>(list.size());
        }
        if ((record.openFlags & kOpenAudioProperties) != 0) {
            const std::vector<uint8_t>& list = Keep(facts.properties);
            record.propertyData = list.data();
            record.propertyByteSize = static_cast<int32_t>(list.size());
        }
        return true;
    }

private:
    const std::vector<uint8_t>& Keep(const TagListBuilder& builder) {
        m_handedOut.push_back(builder.Pack());
        return m_handedOut.back();
    }

    // Every list that a caller was given: they stay valid until Destroy.
    std::vector<std::vector<uint8_t>> m_handedOut;
};

} // namespace

extern "C" {

/// The context identifies the instance of the plug-in that calls; these libraries do not use it.
void* Create(void* /*context*/) {
    return new (std::nothrow) Decoder;
}

void Destroy(void* instance) {
    delete static_cast<Decoder*>(instance);
}

int32_t Get(void* /*instance*/, const wchar_t* key, DecoderGetRecord* record) {
    if (key == nullptr || record == nullptr || Compare(key, L"Decodes") != 0) {
        return 0;
    }
    record->text = FormatExtension(record->index);
    return record->text != nullptr;
}

int32_t Open(void* instance, DecoderOpenRecord* record) {
    if (instance == nullptr || record == nullptr || record->fileName == nullptr) {
        return 0;
    }
    try {
        return static_cast<Decoder*>(instance)->Open(*record);
    } catch (const std::exception&) {
        return 0; // out of memory
    }
}

// A file is read whole by Open and closed again, and no audio is decoded or changed.

int32_t Close(void* /*instance*/) {
    return 1;
}

int32_t Set(void* /*instance*/) {
    return 0;
}

int32_t DecodeBlock(void* /*instance*/) {
    return 0;
}

int32_t SetPosition(void* /*instance*/) {
    return 0;
}

int32_t DeleteATag(void* /*instance*/) {
    return 0;
}
}
