#include "tools/decoders/Format.h"
#include "tools/decoders/Text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace {

enum BlockType : uint8_t { kStreamInfo = 0, kVorbisComment = 4, kPicture = 6 };

struct BlockHeader {
    uint8_t type = 0;
    bool isLast = false;
    uint32_t size = 0; // 24 bits in the file
};

bool ReadBlockHeader(Section& rest, BlockHeader& header) {
    uint32_t word = 0;
    if (!rest.ReadBig(word)) {
        return false;
    }
    header.type = static_cast<uint8_t>(word >> 24 & 0x7F);
    header.isLast = word >> 31 != 0;
    header.size = word & 0xFFFFFF;
    return true;
}

struct StreamInfo {
    uint32_t smallestBlock = 0; // samples
    uint32_t largestBlock = 0;
    uint32_t sampleRate = 0;
    uint16_t channels = 0;
    uint16_t bitsPerSample = 0;
    uint64_t sampleCount = 0; // of one channel; 0 when the encoder did not know
    uint8_t md5[16] = {};     // of the decoded audio; all zero when unknown
};

bool ReadStreamInfo(Section block, StreamInfo& stream) {
    uint32_t blockSizes = 0;
    uint8_t frameSizes[6];
    uint32_t high = 0; // 20 bits sample rate, 3 bits channels - 1, 5 bits bits - 1, 4 bits sample count
    uint32_t low = 0;  // 32 bits sample count
    if (!block.ReadBig(blockSizes) || !block.Read(frameSizes, sizeof frameSizes) || !block.ReadBig(high) ||
        !block.ReadBig(low) || !block.Read(stream.md5, sizeof stream.md5)) {
        return false;
    }
    stream.smallestBlock = blockSizes >> 16;
    stream.largestBlock = blockSizes & 0xFFFF;
    stream.sampleRate = high >> 12;
    stream.channels = static_cast<uint16_t>((high >> 9 & 7) + 1);
    stream.bitsPerSample = static_cast<uint16_t>((high >> 4 & 31) + 1);
    stream.sampleCount = uint64_t{high & 15} << 32 | low;
    return true;
}

/// The format of the decoded audio, as plain PCM.
AudioFormat PcmFormat(const StreamInfo& stream) noexcept {
    AudioFormat format = {};
    format.wFormatTag = 1;
    format.nChannels = stream.channels;
    format.nSamplesPerSec = stream.sampleRate;
    format.wBitsPerSample = stream.bitsPerSample;
    format.nBlockAlign = static_cast<uint16_t>(stream.channels * ((stream.bitsPerSample + 7) / 8));
    format.nAvgBytesPerSec = stream.sampleRate * format.nBlockAlign;
    return format;
}

AudioInfo MakeInfo(const StreamInfo& stream, uint64_t audioSize, uint64_t fileSize) noexcept {
    AudioInfo info = {};
    info.format = PcmFormat(stream);
    info.fileSize = static_cast<int64_t>(fileSize);
    if (stream.sampleRate != 0) {
        const uint64_t milliseconds = stream.sampleCount * 1000 / stream.sampleRate;
        info.length = static_cast<int64_t>(milliseconds);
        if (milliseconds != 0) {
            constexpr uint64_t kLargest = std::numeric_limits<int32_t>::max();
            info.bitrate = static_cast<int32_t>(std::min(audioSize * 8 / milliseconds, kLargest));
        }
    }
    return info;
}

/// What part of the size of the decoded audio the file's audio takes, in percent with one decimal.
std::wstring CompressionRatio(uint64_t audioSize, uint64_t decodedSize) {
    const uint64_t perMille = (audioSize * 1000 + decodedSize / 2) / decodedSize;
    return std::to_wstring(perMille / 10) + L'.' + std::to_wstring(perMille % 10) + L'%';
}

void AddProperties(const StreamInfo& stream, uint64_t audioSize, TagListBuilder& properties) {
    properties.Add(L"Encoding", L"FLAC");
    if (stream.sampleCount != 0) {
        const uint64_t bits = stream.sampleCount * stream.channels * stream.bitsPerSample;
        properties.Add(L"Sample Count", std::to_wstring(stream.sampleCount));
        properties.Add(L"Compression Ratio", CompressionRatio(audioSize, (bits + 7) / 8));
    }
    properties.Add(L"Minimum Block Size", std::to_wstring(stream.smallestBlock));
    properties.Add(L"Maximum Block Size", std::to_wstring(stream.largestBlock));
    if (std::any_of(std::begin(stream.md5), std::end(stream.md5), [](uint8_t byte) { return byte != 0; })) {
        properties.Add(L"MD5", HexText(stream.md5, sizeof stream.md5));
    }
}

/// Reads up to the first comment that does not fit. Names are given as stored.
void AddComments(Section block, AudioFacts& facts) {
    uint32_t size = 0;
    std::string text;
    if (!block.ReadLittle(size) || !block.ReadText(text, size)) {
        return;
    }
    facts.properties.Add(L"Encoder", FromUtf8(text));
    uint32_t count = 0;
    block.ReadLittle(count);
    for (; count != 0 && block.ReadLittle(size) && block.ReadText(text, size); --count) {
        const size_t equals = text.find('=');
        if (equals != std::string::npos && equals != 0) {
            const std::string_view comment = text;
            facts.tags.Add(FromUtf8(comment.substr(0, equals)), FromUtf8(comment.substr(equals + 1)));
        }
    }
}

/// The entry's value is the MIME type, followed by the picture's description where it has one. A picture that
/// is empty or cut is left out.
void AddPicture(Section block, TagListBuilder& tags) {
    uint32_t type = 0;
    uint32_t size = 0;
    std::string mimeType;
    std::string description;
    uint8_t dimensions[16]; // width, height, colour depth, colours
    std::vector<uint8_t> data;
    if (!block.ReadBig(type) || !block.ReadBig(size) || !block.ReadText(mimeType, size) ||
        !block.ReadBig(size) || !block.ReadText(description, size) ||
        !block.Read(dimensions, sizeof dimensions) || !block.ReadBig(size) || !block.ReadBytes(data, size) ||
        data.empty()) {
        return;
    }
    const std::string value = description.empty() ? mimeType : mimeType + ": " + description;
    tags.AddBinary(L"Picture", FromUtf8(value), std::move(data));
}

} // namespace

const wchar_t* FormatExtension(uint32_t index) noexcept {
    return index == 0 ? L".flac" : nullptr;
}

bool ReadFormat(BoundedFile& file, uint32_t openFlags, AudioFacts& facts) {
    constexpr uint32_t kMarker = 0x664C6143; // "fLaC"
    Section rest(file);
    uint32_t marker = 0;
    BlockHeader header;
    StreamInfo stream;
    if (!rest.ReadBig(marker) || marker != kMarker || !ReadBlockHeader(rest, header) ||
        header.type != kStreamInfo || !ReadStreamInfo(rest.Take(header.size), stream)) {
        return false;
    }
    bool hasComments = false;
    while (!header.isLast && ReadBlockHeader(rest, header)) {
        const Section block = rest.Take(header.size);
        if (header.type == kVorbisComment && !hasComments) {
            AddComments(block, facts);
            hasComments = true;
        } else if (header.type == kPicture && (openFlags & kOpenIDTags) != 0) {
            AddPicture(block, facts.tags);
        }
    }
    // What follows the last block is the audio.
    facts.info = MakeInfo(stream, rest.Left(), file.Size());
    AddProperties(stream, rest.Left(), facts.properties);
    return true;
}
