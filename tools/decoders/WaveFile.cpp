#include "tools/decoders/WaveFile.h"

#include <algorithm>

namespace {

constexpr uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr size_t kPlainFormatSize = offsetof(AudioFormat, cbSize);
constexpr size_t kFormatHeadSize = offsetof(AudioFormat, samples);

bool ReadFormatChunk(std::string_view chunk, AudioFormat& format) {
    const size_t size = std::min(chunk.size(), sizeof format);
    if (size < kPlainFormatSize) {
        return false;
    }
    std::memcpy(&format, chunk.data(), size);
    const size_t extensionSize = std::max(size, kFormatHeadSize) - kFormatHeadSize;
    format.cbSize = static_cast<uint16_t>(std::min<size_t>(format.cbSize, extensionSize));
    return true;
}

} // namespace

bool ReadWaveFile(std::string_view file, WaveFile& out) {
    Reader rest(file);
    std::string_view riff;
    std::string_view form;
    uint32_t riffSize = 0; // of what follows it
    if (!rest.Read(riff, 4) || riff != "RIFF" || !rest.Read(riffSize) || !rest.Read(form, 4) ||
        form != "WAVE") {
        return false;
    }
    const uint64_t riffEnd = sizeof "RIFF" - 1 + sizeof riffSize + uint64_t{riffSize};

    bool hasFormat = false;
    bool hasAudio = false;
    std::string_view id;
    uint32_t size = 0;
    while (rest.Read(id, 4) && rest.Read(size)) {
        if (id == "data" && !hasAudio) {
            const bool unfinished =
                size == kUnknownSize || (size == 0 && riffEnd <= file.size() - rest.Remaining());
            out.audio = rest.Take(unfinished ? rest.Remaining() : size);
            hasAudio = true;
        } else {
            const std::string_view chunk = rest.Take(size);
            Reader list(chunk);
            std::string_view listType;
            if (id == "fmt " && !hasFormat) {
                hasFormat = ReadFormatChunk(chunk, out.format);
            } else if (id == "LIST" && list.Read(listType, 4) && listType == "INFO") {
                out.infoLists.push_back(list);
            }
        }
        rest.Take(size & 1); // chunks begin at even offsets
    }
    return hasFormat;
}
