#include "tools/decoders/Format.h"
#include "tools/decoders/Reader.h"
#include "tools/decoders/Text.h"

#include <algorithm>
#include <string>

namespace {

enum BlockType : uint32_t { kStreamInfo = 0, kVorbisComment = 4, kPicture = 6 };

// The word ahead of each block: one bit for the last, 7 bits type, 24 bits size.
constexpr uint32_t kLastBlock = 0x80000000;
constexpr uint32_t kSizeBits = 0xFFFFFF;

BlockType TypeOf(uint32_t header) noexcept {
    return static_cast<BlockType>(header >> 24 & 0x7F);
}

struct StreamInfo {
    uint32_t blockSizes = 0;  // 16 bits each for the smallest and the largest, in samples
    AudioFormat format = {};  // of the decoded audio, as plain PCM
    uint64_t sampleCount = 0; // of one channel; 0 when the encoder did not know
    uint8_t md5[16] = {};     // of the decoded audio; all zero when unknown
};

bool ReadStreamInfo(Reader block, StreamInfo& stream) {
    uint8_t frameSizes[6];
    uint32_t high = 0; // 20 bits sample rate, 3 bits channels - 1, 5 bits bits - 1, 4 bits sample count
    uint32_t low = 0;  // 32 bits sample count
    if (!block.ReadBig(stream.blockSizes) || !block.Read(frameSizes) || !block.ReadBig(high) ||
        !block.ReadBig(low) || !block.Read(stream.md5)) {
        return false;
    }
    AudioFormat& format = stream.format;
    format.wFormatTag = 1;
    format.nChannels = static_cast<uint16_t>((high >> 9 & 7) + 1);
    format.nSamplesPerSec = high >> 12;
    format.wBitsPerSample = static_cast<uint16_t>((high >> 4 & 31) + 1);
    format.nBlockAlign = static_cast<uint16_t>(format.nChannels * ((format.wBitsPerSample + 7) / 8));
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    stream.sampleCount = uint64_t{high & 15} << 32 | low;
    return true;
}

/// What part of the size of the decoded audio the file's audio takes, in percent with one decimal.
std::wstring CompressionRatio(uint64_t audioSize, uint64_t decodedSize) {
    const uint64_t perMille = (audioSize * 1000 + decodedSize / 2) / decodedSize;
    return std::to_wstring(perMille / 10) + L'.' + std::to_wstring(perMille % 10) + L'%';
}

void AddProperties(const StreamInfo& stream, uint64_t audioSize, TagListBuilder& properties) {
    properties.Add(L"Encoding", L"FLAC");
    if (stream.sampleCount != 0) {
        const uint64_t bits = stream.sampleCount * stream.format.nChannels * stream.format.wBitsPerSample;
        properties.Add(L"Sample Count", std::to_wstring(stream.sampleCount));
        properties.Add(L"Compression Ratio", CompressionRatio(audioSize, (bits + 7) / 8));
    }
    properties.Add(L"Minimum Block Size", std::to_wstring(stream.blockSizes >> 16));
    properties.Add(L"Maximum Block Size", std::to_wstring(stream.blockSizes & 0xFFFF));
    std::wstring md5;
    for (const uint8_t byte : stream.md5) {
        md5 += Hex(byte, 2);
    }
    if (md5.find_first_not_of(L'0') != md5.npos) {
        properties.Add(L"MD5", md5);
    }
}

/// Reads up to the first comment that does not fit. Names are given as stored.
void AddComments(Reader block, FileContent& out) {
    uint32_t size = 0;
    std::string_view text;
    if (!block.Read(size) || !block.Read(text, size)) {
        return;
    }
    out.properties.Add(L"Encoder", FromUtf8(text));
    uint32_t count = 0;
    block.Read(count);
    for (; count != 0 && block.Read(size) && block.Read(text, size); --count) {
        const size_t equals = text.find('=');
        if (equals != text.npos && equals != 0) {
            out.tags.Add(FromUtf8(text.substr(0, equals)), FromUtf8(text.substr(equals + 1)));
        }
    }
}

/// The entry's value is the MIME type, followed by the picture's description where it has one. A picture that
/// is empty or cut is left out.
void AddPicture(Reader block, TagListBuilder& tags) {
    uint32_t type = 0;
    uint32_t size = 0;
    std::string_view mimeType;
    std::string_view description;
    uint8_t dimensions[16]; // width, height, colour depth, colours
    std::string_view data;
    if (!block.ReadBig(type) || !block.ReadBig(size) || !block.Read(mimeType, size) || !block.ReadBig(size) ||
        !block.Read(description, size) || !block.Read(dimensions) || !block.ReadBig(size) ||
        !block.Read(data, size) || data.empty()) {
        return;
    }
    std::wstring value = FromUtf8(mimeType);
    if (!description.empty()) {
        value += L": " + FromUtf8(description);
    }
    tags.Add(L"Picture", value, data);
}

} // namespace

const wchar_t* FormatExtension(uint32_t index) noexcept {
    return index == 0 ? L".flac" : nullptr;
}

bool ReadFormat(std::string_view file, FileContent& out) {
    constexpr uint32_t kMarker = 0x664C6143; // "fLaC"
    Reader rest(file);
    uint32_t marker = 0;
    uint32_t header = 0;
    StreamInfo stream;
    if (!rest.ReadBig(marker) || marker != kMarker || !rest.ReadBig(header) ||
        TypeOf(header) != kStreamInfo || !ReadStreamInfo(Reader(rest.Take(header & kSizeBits)), stream)) {
        return false;
    }
    bool hasComments = false;
    while ((header & kLastBlock) == 0 && rest.ReadBig(header)) {
        const Reader block(rest.Take(header & kSizeBits));
        if (TypeOf(header) == kVorbisComment && !hasComments) {
            AddComments(block, out);
            hasComments = true;
        } else if (TypeOf(header) == kPicture) {
            AddPicture(block, out.tags);
        }
    }
    const uint64_t audioSize = rest.Remaining(); // what follows the last block
    out.info.format = stream.format;
    out.info.fileSize = static_cast<int64_t>(file.size());
    if (stream.format.nSamplesPerSec != 0) {
        out.info.length = static_cast<int64_t>(stream.sampleCount * 1000 / stream.format.nSamplesPerSec);
    }
    if (out.info.length != 0) {
        const uint64_t bitrate = audioSize * 8 / static_cast<uint64_t>(out.info.length);
        out.info.bitrate = static_cast<int32_t>(std::min<uint64_t>(bitrate, INT32_MAX));
    }
    AddProperties(stream, audioSize, out.properties);
    return true;
}
