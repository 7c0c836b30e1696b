#include "decoders/clZentaroDecoder.h"

#include <utility>

namespace {

std::span<const uint8_t> ListAt(const void* data, int32_t size) noexcept {
    return data != nullptr && size > 0
               ? std::span(static_cast<const uint8_t*>(data), static_cast<size_t>(size))
               : std::span<const uint8_t>();
}

} // namespace

bool clZentaroDecoder::Load(const wchar_t* libraryPath) {
    Unload();
    m_libraryPath.Assign(libraryPath);
    if (m_library.Load(libraryPath) && Bind()) {
        return true;
    }
    Unload();
    return false;
}

bool clZentaroDecoder::Bind() noexcept {
    m_create = m_library.Export<DecoderCreateFunction>("Create");
    m_destroy = m_library.Export<DecoderDestroyFunction>("Destroy");
    m_get = m_library.Export<DecoderGetFunction>("Get");
    m_open = m_library.Export<DecoderOpenFunction>("Open");
    bool complete = m_create != nullptr && m_destroy != nullptr && m_get != nullptr && m_open != nullptr;
    // Never called, but only a library that has them is a decoder.
    for (const char* name : {"Set", "Close", "DecodeBlock", "SetPosition", "DeleteATag"}) {
        complete = complete && m_library.Export<void()>(name) != nullptr;
    }
    return complete;
}

void clZentaroDecoder::Unload() noexcept {
    DestroyInstance();
    m_create = nullptr;
    m_destroy = nullptr;
    m_get = nullptr;
    m_open = nullptr;
    m_library.Free();
    m_libraryPath = XString();
}

bool clZentaroDecoder::CreateInstance(void* context) noexcept {
    DestroyInstance();
    m_instance = m_create != nullptr ? m_create(context) : nullptr;
    return m_instance != nullptr;
}

void clZentaroDecoder::DestroyInstance() noexcept {
    if (void* const instance = std::exchange(m_instance, nullptr); instance != nullptr) {
        m_destroy(instance);
    }
}

bool clZentaroDecoder::Decodes(const wchar_t* extension) const noexcept {
    for (uint32_t index = 0; m_instance != nullptr; ++index) {
        DecoderGetRecord record = {};
        record.index = index;
        if (m_get(m_instance, L"Decodes", &record) == 0 || record.text == nullptr) {
            break;
        }
        if (Compare(record.text, extension, 0, true) == 0) {
            return true;
        }
    }
    return false;
}

std::optional<DecoderReport> clZentaroDecoder::Open(const wchar_t* fileName,
                                                    uint32_t openFlags) const noexcept {
    DecoderOpenRecord record = {};
    record.fileName = fileName;
    record.openFlags = openFlags;
    if (m_instance == nullptr || m_open(m_instance, &record) == 0) {
        return {};
    }
    return DecoderReport{record.audioInfo, ListAt(record.IDTagData, record.IDTagByteSize),
                         record.IDTagByteSize, ListAt(record.propertyData, record.propertyByteSize)};
}
