#include "tools/decoders/WaveFile.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr size_t kPlainFormatSize = offsetof(AudioFormat, cbSize);
constexpr size_t kFormatHeadSize = offsetof(AudioFormat, samples);

bool ReadFormatChunk(Section chunk, AudioFormat& format) {
    uint8_t bytes[sizeof format] = {};
    const size_t size = static_cast<size_t>(std::min<uint64_t>(chunk.Left(), sizeof bytes));
    if (size < kPlainFormatSize || !chunk.Read(bytes, size)) {
        return false;
    }
    std::memcpy(&format, bytes, sizeof format);
    const size_t extensionSize = size > kFormatHeadSize ? size - kFormatHeadSize : 0;
    format.cbSize = static_cast<uint16_t>(std::min<size_t>(format.cbSize, extensionSize));
    return true;
}

} // namespace

bool ReadWaveFile(BoundedFile& file, WaveFile& out) {
    Section rest(file);
    uint32_t riff = 0;
    uint32_t riffSize = 0;
    uint32_t form = 0;
    if (!rest.ReadLittle(riff) || riff != RiffId("RIFF") || !rest.ReadLittle(riffSize) ||
        !rest.ReadLittle(form) || form != RiffId("WAVE")) {
        return false;
    }
    const uint64_t riffEnd = rest.Offset() - sizeof form + riffSize;

    bool hasFormat = false;
    bool hasAudio = false;
    uint32_t id = 0;
    uint32_t size = 0;
    while (rest.ReadLittle(id) && rest.ReadLittle(size)) {
        if (id == RiffId("data") && !hasAudio) {
            const bool unfinished = size == kUnknownSize || (size == 0 && riffEnd <= rest.Offset());
            Section audio = rest.Take(unfinished ? rest.Left() : size);
            out.audioOffset = audio.Offset();
            out.audioSize = audio.Left();
            hasAudio = true;
        } else {
            Section chunk = rest.Take(size);
            uint32_t listType = 0;
            if (id == RiffId("fmt ") && !hasFormat) {
                hasFormat = ReadFormatChunk(chunk, out.format);
            } else if (id == RiffId("LIST") && chunk.ReadLittle(listType) && listType == RiffId("INFO")) {
                out.infoLists.push_back(chunk);
            }
        }
        rest.Skip(size & 1); // chunks begin at even offsets
    }
    return hasFormat;
}
