#include "decoders/clZentaroDecoder.h"
#include "metadata/TagList.h"
#include "tests/shared/Files.h"
#include "tests/shared/Wide.h"

// The sample decoder libraries, through their exports, on files made byte by byte.

namespace {

std::string Zeros(size_t count) {
    return std::string(count, '\0');
}

std::string Little(uint64_t value, size_t size = 4) {
    return std::string(reinterpret_cast<const char*>(&value), size);
}

std::string Big(uint64_t value, size_t size = 4) {
    const std::string bytes = Little(value, size);
    return std::string(bytes.rbegin(), bytes.rend());
}

constexpr auto kWav = L"..\\..\\tools\\decoder\\wav.dll";
constexpr auto kFlac = L"..\\..\\tools\\decoder\\flac.dll";

/// "Name=value" for each entry, followed by the bytes of binary data, and " | " between entries.
std::wstring Render(std::span<const uint8_t> list) {
    std::wstring text;
    int32_t count = 0;
    for (const TagEntry& entry : ParseTagBlob(list.data(), static_cast<int32_t>(list.size()))) {
        ++count;
        const std::wstring raw(entry.rawData.begin(), entry.rawData.end());
        text += (text.empty() ? L"" : L" | ") + Wide(entry.name) + L'=' + Wide(entry.value);
        text += (raw.empty() ? L"" : L" #") + raw;
    }
    EXPECT_EQ(*reinterpret_cast<const int32_t*>(list.data()), count);
    return text;
}

/// All that one Open returns, in lines; "no" when it fails. The first line has format tag,
/// extension size, channels, sample rate, bits, block size, byte rate; kbit/s, ms.
std::wstring Read(const wchar_t* library, const std::string& content) {
    const TempFolder folder;
    const std::wstring file = folder.Path(L"file");
    WriteTestFile(file, content);
    clZentaroDecoder decoder;
    EXPECT_TRUE(decoder.Load(library) && decoder.CreateInstance(nullptr));
    const auto report = decoder.Open(file.c_str(), kOpenAudioInfo | kOpenIDTags | kOpenAudioProperties);
    if (!report) {
        return L"no";
    }
    const AudioInfo& info = report->audioInfo;
    const AudioFormat& f = info.format;
    EXPECT_EQ(int64_t{info.fileSize}, static_cast<int64_t>(content.size()));
    wchar_t text[120];
    swprintf(text, std::size(text), L"%d %d %d %u %d %d %u %d %lld\n", f.wFormatTag, f.cbSize, f.nChannels,
             f.nSamplesPerSec, f.wBitsPerSample, f.nBlockAlign, f.nAvgBytesPerSec, info.bitrate, info.length);
    const std::wstring tags = Render(report->idTags);
    return text + Render(report->properties) + (tags.empty() ? L"" : L"\n") + tags;
}

std::string Chunk(const std::string& id, const std::string& content) {
    return id + Little(content.size()) + content + Zeros(content.size() % 2);
}

std::string Wave(const std::string& chunks) {
    return "RIFF" + Little(chunks.size() + 4) + "WAVE" + chunks;
}

std::string Format(uint32_t tag, uint32_t channels, uint32_t rate, uint32_t bits,
                   const std::string& more = {}) {
    const uint32_t block = channels * bits / 8;
    return Chunk("fmt ", Little(tag, 2) + Little(channels, 2) + Little(rate) + Little(rate * block) +
                             Little(block, 2) + Little(bits, 2) + more);
}

/// Valid bits, front left and right, and the sub-format of PCM.
std::string Extension(uint32_t cbSize) {
    return Little(cbSize, 2) + Little(16, 2) + Little(3) + Little(1) + Little(0x00100000) +
           Big(0x800000AA00389B71, 8);
}

std::string Block(uint32_t type, const std::string& content) {
    return Big(type, 1) + Big(content.size(), 3) + content;
}

std::string StreamInfo(uint64_t rate, uint64_t channels, uint64_t bits, uint64_t samples, uint8_t md5 = 0) {
    return Block(0, Big(4096, 2) + Big(4608, 2) + Zeros(6) +
                        Big(rate << 44 | (channels - 1) << 41 | (bits - 1) << 36 | samples, 8) + Zeros(15) +
                        Big(md5, 1));
}

std::string Comments(const std::vector<std::string>& comments) {
    std::string content = Little(7) + "maker 1" + Little(comments.size());
    for (const std::string& comment : comments) {
        content += Little(comment.size()) + comment;
    }
    return Block(4, content);
}

std::string Picture(const std::string& mimeType, const std::string& description, size_t size,
                    const std::string& data) {
    return Block(6, Big(3) + Big(mimeType.size()) + mimeType + Big(description.size()) + description +
                        Zeros(16) + Big(size) + data);
}

/// A tenth of a second of audio that takes 501 bytes, after an empty last block.
std::string Flac(const std::string& blocks) {
    return "fLaC" + StreamInfo(8000, 2, 12, 800) + blocks + Block(0x81, {}) + Zeros(501);
}

TEST(SampleDecoders, ReportWhatTheFileHolds) {
    wchar_t ansi = 0;
    MultiByteToWideChar(CP_ACP, 0, "\xE9", 1, &ansi, 1);
    const std::string mono = Format(1, 1, 8000, 16); // 24 bytes
    const std::string data = Chunk("data", Zeros(160));
    const std::wstring waveFacts = L"1 0 1 8000 16 2 16000 128 10\nEncoding=PCM | Sample Count=80";
    const std::string infoTags = Chunk("INAM", "ab" + Zeros(3)) + Chunk("IGNR", "Gr\xC3\xBC\xC3\x9F") +
                                 Chunk("IART", "A") + Chunk("ICMT", {}) + Chunk("IART", "B") +
                                 Chunk("I\x01\x02\x03", "x") + Chunk("IXYZ", "\xE9") + "IENG" + Little(999) +
                                 "cut!";
    const std::wstring sizes = L"Minimum Block Size=4096 | Maximum Block Size=4608";
    const std::wstring flacInfo = L"1 0 2 8000 12 4 32000 40 100\n";
    const std::wstring audio = L"Encoding=FLAC | Sample Count=800 | Compression Ratio=20.9% | " + sizes;
    const std::wstring flacFacts = flacInfo + L"Encoder=maker 1 | " + audio + L"\n";
    const std::string large(70000, 'x');
    const struct {
        const wchar_t* library;
        const char* label;
        std::string content;
        std::wstring expected;
    } rows[] = {
        {kWav, "float", Wave(Format(3, 1, 22050, 32, Little(0, 2)) + Chunk("data", Zeros(192))),
         L"3 0 1 22050 32 4 88200 706 2\nEncoding=IEEE Float | Sample Count=48"},
        {kWav, "extensible", Wave(Format(0xFFFE, 2, 48000, 24, Extension(22)) + Chunk("data", Zeros(288))),
         L"65534 22 2 48000 24 6 288000 2304 1\nEncoding=PCM | Sample Count=48 | Channels Mask=0x00000003"},
        {kWav, "odd chunk, second format and data",
         Wave(Chunk("odd ", "odd") + mono + data + Format(1, 2, 1, 8) + Chunk("data", "x")), waveFacts},
        {kWav, "sizes not filled in", "RIFF" + Little(36) + "WAVE" + mono + Chunk("data", {}) + Zeros(160),
         waveFacts},
        {kWav, "no audio, which tags follow",
         Wave(mono + Chunk("data", {}) + Chunk("LIST", "INFO" + Chunk("INAM", "t"))),
         L"1 0 1 8000 16 2 16000 128 0\nEncoding=PCM | Sample Count=0\nTitle=t"},
        {kWav, "short format of hostile size", Wave("fmt " + Little(0xFFFFFFF0) + Zeros(12)), L"no"},
        {kWav, "tags", Wave(mono + Chunk("LIST", "INFO" + infoTags) + data),
         waveFacts + L"\nTitle=ab | Genre=Grüß | Artist=A\rB | Comment= | IXYZ=" + ansi +
             L" | Engineer=cut!"},
        {kFlac, "length unknown, largest rate", "fLaC" + StreamInfo(655350, 8, 32, 0, 0xAB),
         L"1 0 8 655350 32 32 20971200 0 0\nEncoding=FLAC | " + sizes + L" | MD5=" + std::wstring(30, L'0') +
             L"ab"},
        {kFlac, "info too short", "fLaC" + Block(0, Zeros(33)) + Zeros(100), L"no"},
        {kFlac, "the first comments alone",
         Flac(Comments({"Artist=A", "TITLE=Gr\xC3\xBC\xC3\x9F", "ARTIST=B=C", "artist=", "nothing", "=value",
                        "a=b" + Zeros(1) + "c", ""}) +
              Comments({"a=2"})),
         flacFacts + L"Artist=A\rB=C\r | TITLE=Grüß | a=b"},
        {kFlac, "comment past its block",
         Flac(Block(4, Little(7) + "maker 1" + Little(9) + Little(3) + "a=1" + Little(0x7FFFFFFF) + "b=2")),
         flacFacts + L"a=1"},
        {kFlac, "pictures, also empty, past the block, far apart",
         Flac(Comments({}) + Picture("image/png", "Front", 3, "xyz") + Picture("m", "", 0, "") +
              Picture("m", "", 999, "w") + Block(1, large) + Picture("m", "", large.size(), large)),
         flacFacts + L"Picture=image/png: Front #xyz | Picture=m #" +
             std::wstring(large.begin(), large.end())},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Read(row.library, row.content), row.expected) << row.label;
    }
}

} // namespace
