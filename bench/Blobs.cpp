#include "bench/Blobs.h"

#include <cstring>
#include <string_view>

namespace {

std::wstring_view PatternOf(Text text) {
    switch (text) {
    case Text::Special:
        return L"nine of <en plain a\"d one is 'ot or so it>goes on & on f";
    case Text::Ampersands:
        return L"&";
    case Text::ManyValues:
        return L"ten of us.\r";
    case Text::Ordinary:
        break;
    }
    return L"Caf\u00E9 del Mar & more of the old town by night, part two. ";
}

void Append(Blob& blob, const void* data, size_t size) {
    const size_t at = blob.size();
    blob.resize(at + size);
    std::memcpy(blob.data() + at, data, size);
}

/// `texts` are name and value, each with its zero.
void AppendEntry(Blob& blob, const std::wstring& texts, size_t dataSize) {
    const auto size = static_cast<uint32_t>(sizeof(uint32_t) + texts.size() * sizeof(wchar_t) + dataSize);
    Append(blob, &size, sizeof size);
    Append(blob, texts.data(), texts.size() * sizeof(wchar_t));
    blob.resize(blob.size() + dataSize, uint8_t{1});
}

} // namespace

Blob PackTags(int32_t count, size_t valueSize, Text text) {
    const std::wstring_view pattern = PatternOf(text);
    const size_t mostPerEntry = 2 * sizeof(uint32_t) + (valueSize + 16) * sizeof(wchar_t);
    Blob blob;
    blob.reserve(static_cast<size_t>(count) * mostPerEntry);
    Append(blob, &count, sizeof count);
    for (int32_t i = 0; i < count; ++i) {
        std::wstring texts = L"Tag " + std::to_wstring(i) + L'\0';
        for (size_t at = 0; at < valueSize; ++at) {
            texts += pattern[(static_cast<size_t>(i) + at) % pattern.size()];
        }
        AppendEntry(blob, texts + L'\0', 0);
    }
    return blob;
}

Blob PackPicture(size_t dataSize) {
    const int32_t count = 1;
    Blob blob;
    Append(blob, &count, sizeof count);
    using namespace std::string_literals;
    AppendEntry(blob, L"Cover\0image/png\0"s, dataSize);
    return blob;
}
