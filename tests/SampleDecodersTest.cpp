#include "decoders/clZentaroDecoder.h"
#include "metadata/TagList.h"
#include "support/ProgramFolder.h"
#include "tests/Files.h"
#include "tests/TagBlob.h"
#include "tests/Wide.h"

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

/// One of the two libraries with an instance of its decoder.
class Library {
public:
    explicit Library(const wchar_t* fileName) {
        const std::wstring path =
            std::wstring(ModuleFolder(nullptr).Text()) + L"..\\..\\tools\\decoder\\" + fileName;
        EXPECT_TRUE(m_decoder.Load(path.c_str()) && m_decoder.CreateInstance(nullptr));
    }

    const clZentaroDecoder& Decoder() const { return m_decoder; }

    bool Open(const std::string& content, DecoderOpenRecord& record, uint32_t flags) const {
        WriteTestFile(m_file, content);
        record = {};
        record.fileName = m_file.c_str();
        record.openFlags = flags;
        return m_decoder.Open(record);
    }

private:
    const TempFolder m_folder;
    const std::wstring m_file = m_folder.Path(L"file");
    clZentaroDecoder m_decoder;
};

/// "Name=value" for each entry, with the bytes of binary data behind it and " | " between entries. The list
/// must be whole: as many entries as it counts, and not a byte more.
std::wstring Render(const void* list, int32_t size) {
    TagBlob whole;
    std::wstring text;
    for (const TagEntry& entry : ParseTagBlob(list, size)) {
        const std::wstring name = Wide(entry.name), value = Wide(entry.value);
        const std::vector<uint8_t> raw(entry.rawData.begin(), entry.rawData.end());
        whole.Add(name, value, raw);
        text += (text.empty() ? L"" : L" | ") + name + L'=' + value;
        text += (raw.empty() ? L"" : L" #") + std::wstring(raw.begin(), raw.end());
    }
    const uint8_t* const begin = static_cast<const uint8_t*>(list);
    EXPECT_EQ(std::vector<uint8_t>(begin, begin + size), whole.Bytes());
    return text;
}

/// Format tag, extension size, channels, sample rate, bits, block size, byte rate; kbit/s, ms.
std::wstring Render(const AudioInfo& info) {
    const AudioFormat& f = info.format;
    wchar_t text[120];
    swprintf(text, std::size(text), L"%d %d %d %u %d %d %u %d %lld", f.wFormatTag, f.cbSize, f.nChannels,
             f.nSamplesPerSec, f.wBitsPerSample, f.nBlockAlign, f.nAvgBytesPerSec, info.bitrate, info.length);
    return text;
}

/// All that one opening of the file gives, in lines; "no" when it fails.
std::wstring Read(const Library& library, const std::string& content) {
    DecoderOpenRecord record;
    if (!library.Open(content, record, kOpenAudioInfo | kOpenIDTags | kOpenAudioProperties)) {
        return L"no";
    }
    EXPECT_EQ(int64_t{record.audioInfo.fileSize}, static_cast<int64_t>(content.size()));
    const std::wstring tags = Render(record.IDTagData, record.IDTagByteSize);
    return Render(record.audioInfo) + L"\n" + Render(record.propertyData, record.propertyByteSize) +
           (tags.empty() ? L"" : L"\n") + tags;
}

struct Case {
    const char* label;
    std::string content;
    std::wstring expected;
};

/// A cut file fails to open or gives whole lists; more of the file never gives less.
void CheckEveryCut(const Library& library, const std::string& content) {
    bool opened = false;
    for (size_t size = 0; size <= content.size(); ++size) {
        SCOPED_TRACE(size);
        const bool opens = Read(library, content.substr(0, size)) != L"no";
        EXPECT_TRUE(opens || !opened);
        opened = opens;
    }
    EXPECT_TRUE(opened);
}

// WAVE files

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

/// cbSize, valid bits, front left and right, and the sub-format of a plain tag.
std::string Extension(uint32_t subFormat, uint32_t cbSize = 22) {
    return Little(cbSize, 2) + Little(16, 2) + Little(3) + Little(subFormat) + Little(0x00100000) +
           Big(0x800000AA00389B71, 8);
}

const std::string kMono = Format(1, 1, 8000, 16); // 24 bytes
const std::string kMonoData = Chunk("data", Zeros(160));
const std::wstring kMonoFacts = L"1 0 1 8000 16 2 16000 128 10\nEncoding=PCM | Sample Count=80";

TEST(SampleDecoders, WaveFormatsAndLengths) {
    const Library library(L"wav.dll");
    const Case rows[] = {
        {"PCM", Wave(Format(1, 2, 44100, 16) + Chunk("data", Zeros(17640))),
         L"1 0 2 44100 16 4 176400 1411 100\nEncoding=PCM | Sample Count=4410"},
        {"float", Wave(Format(3, 1, 48000, 32, Little(0, 2)) + Chunk("data", Zeros(192))),
         L"3 0 1 48000 32 4 192000 1536 1\nEncoding=IEEE Float | Sample Count=48"},
        {"extensible", Wave(Format(0xFFFE, 2, 48000, 24, Extension(1)) + Chunk("data", Zeros(288))),
         L"65534 22 2 48000 24 6 288000 2304 1\nEncoding=PCM | Sample Count=48 | Channels Mask=0x00000003"},
        {"unknown sub-format", Wave(Format(0xFFFE, 1, 8000, 8, Extension(0x99))),
         L"65534 22 1 8000 8 1 8000 64 0\nEncoding=0x0099 | Channels Mask=0x00000003"},
        {"extension shorter than it says", Wave(Format(0xFFFE, 1, 8000, 8, Little(22, 5)) + Zeros(1)),
         L"65534 3 1 8000 8 1 8000 64 0\nEncoding=0xfffe"},
        {"extension that the format does not count", Wave(Format(0xFFFE, 1, 8000, 8, Extension(1, 0))),
         L"65534 0 1 8000 8 1 8000 64 0\nEncoding=0xfffe"},
        {"no byte rate", Wave(Format(0x55, 0, 0, 0) + Chunk("data", Zeros(8))),
         L"85 0 0 0 0 0 0 0 0\nEncoding=MPEG Layer 3"},
        {"odd chunk first, second format and data",
         Wave(Chunk("odd ", "odd") + kMono + kMonoData + Format(1, 2, 1, 8) + Chunk("data", Zeros(2))),
         kMonoFacts},
        {"data size past the end", Wave(kMono + "data" + Little(1000) + Zeros(160)), kMonoFacts},
        {"data size unknown", Wave(kMono + "data" + Little(0xFFFFFFFF) + Zeros(160)), kMonoFacts},
        {"data size never filled in", "RIFF" + Little(36) + "WAVE" + kMono + Chunk("data", {}) + Zeros(160),
         kMonoFacts},
        {"no data indeed", Wave(kMono + Chunk("data", {}) + Chunk("junk", "chunk")),
         L"1 0 1 8000 16 2 16000 128 0\nEncoding=PCM | Sample Count=0"},
        {"format of hostile size", Wave("fmt " + Little(0xFFFFFFF0) + Zeros(12)), L"no"},
        {"other RIFF", "RIFF" + Little(28) + "AVI " + kMono, L"no"},
    };
    for (const Case& row : rows) {
        EXPECT_EQ(Read(library, row.content), row.expected) << row.label;
    }
}

TEST(SampleDecoders, WaveTags) {
    wchar_t ansi = 0;
    MultiByteToWideChar(CP_ACP, 0, "\xE9", 1, &ansi, 1);
    const Library library(L"wav.dll");
    const Case rows[] = {
        {"names", Chunk("INAM", "A song") + Chunk("IXYZ", "1\n"), L"Title=A song | IXYZ=1\n"},
        {"terminators, odd sizes", Chunk("INAM", "ab" + Zeros(3)) + Chunk("IGNR", "x"),
         L"Title=ab | Genre=x"},
        {"artists", Chunk("IART", "A") + Chunk("ICMT", {}) + Chunk("IART", "B"), L"Artist=A\rB | Comment="},
        {"UTF-8", Chunk("INAM", "Gr\xC3\xBC\xC3\x9F"), L"Title=Grüß"},
        {"ANSI", Chunk("INAM", "\xE9"), std::wstring(L"Title=") + ansi},
        {"entry past its list", "INAM" + Little(1000) + "cut!", L"Title=cut!"},
        {"name that cannot be shown", Chunk("I\x01\x02\x03", "x") + Chunk("INAM", "y"), L"Title=y"},
    };
    for (const Case& row : rows) {
        EXPECT_EQ(Read(library, Wave(kMono + Chunk("LIST", "INFO" + row.content) + kMonoData)),
                  kMonoFacts + L"\n" + row.expected)
            << row.label;
    }
}

// FLAC files

std::string Block(uint32_t type, const std::string& content) {
    return Big(type, 1) + Big(content.size(), 3) + content;
}

std::string StreamInfo(uint64_t rate, uint64_t channels, uint64_t bits, uint64_t samples, uint8_t md5 = 0) {
    return Block(0, Big(4096, 2) + Big(4608, 2) + Zeros(6) +
                        Big(rate << 44 | (channels - 1) << 41 | (bits - 1) << 36 | samples, 8) + Zeros(15) +
                        Big(md5, 1));
}

std::string Counted(const std::string& text) {
    return Little(text.size()) + text;
}

std::string Comments(const std::vector<std::string>& comments) {
    std::string content = Counted("maker 1") + Little(comments.size());
    for (const std::string& comment : comments) {
        content += Counted(comment);
    }
    return Block(4, content);
}

std::string Picture(const std::string& mimeType, const std::string& description, size_t size,
                    const std::string& data) {
    return Block(6, Big(3) + Big(mimeType.size()) + mimeType + Big(description.size()) + description +
                        Zeros(16) + Big(size) + data);
}

/// A tenth of a second of audio that takes 500 bytes, behind an empty last block.
std::string Flac(const std::string& blocks) {
    return "fLaC" + StreamInfo(8000, 2, 12, 800) + blocks + Block(0x81, {}) + Zeros(500);
}

const std::wstring kFlacInfo = L"1 0 2 8000 12 4 32000 40 100";
const std::wstring kBlockSizes = L"Minimum Block Size=4096 | Maximum Block Size=4608";
const std::wstring kFlacSizes =
    L"Encoding=FLAC | Sample Count=800 | Compression Ratio=20.8% | " + kBlockSizes;

TEST(SampleDecoders, FlacFormats) {
    const std::wstring noAudio = L" | Compression Ratio=0.0% | " + kBlockSizes;
    const Library library(L"flac.dll");
    const Case rows[] = {
        {"vendor larger than its block", Flac(Block(4, Little(0xFFFFFFFF) + "maker")),
         kFlacInfo + L"\n" + kFlacSizes},
        {"length unknown, largest rate and channels", "fLaC" + StreamInfo(655350, 8, 32, 0, 0xAB),
         L"1 0 8 655350 32 32 20971200 0 0\nEncoding=FLAC | " + kBlockSizes +
             L" | MD5=000000000000000000000000000000ab"},
        {"36 bits of samples", "fLaC" + StreamInfo(1, 1, 8, 0xFFFFFFFFF),
         L"1 0 1 1 8 1 1 0 68719476735000\nEncoding=FLAC | Sample Count=68719476735" + noAudio},
        {"no sample rate", "fLaC" + StreamInfo(0, 1, 8, 5),
         L"1 0 1 0 8 1 0 0 0\nEncoding=FLAC | Sample Count=5" + noAudio},
        {"stream info not first", "fLaC" + Block(4, Zeros(34)) + StreamInfo(8000, 1, 8, 1), L"no"},
        {"stream info too short", "fLaC" + Block(0, Zeros(33)) + Zeros(100), L"no"},
        {"other file", "OggS" + StreamInfo(8000, 1, 8, 1), L"no"},
    };
    for (const Case& row : rows) {
        EXPECT_EQ(Read(library, row.content), row.expected) << row.label;
    }
}

TEST(SampleDecoders, FlacTags) {
    const std::string large(70000, 'x');
    const Library library(L"flac.dll");
    const Case rows[] = {
        {"fields, the first comments alone",
         Comments({"Artist=A", "TITLE=Gr\xC3\xBC\xC3\x9F", "ARTIST=B=C", "artist="}) + Comments({"a=2"}),
         L"Artist=A\rB=C\r | TITLE=Grüß"},
        {"no fields", Comments({"nothing", "=value", "a=b" + Zeros(1) + "c", ""}), L"a=b"},
        {"comment larger than its block",
         Block(4, Counted("maker 1") + Little(0xFFFFFFFF) + Counted("a=1") + Little(0x7FFFFFFF) + "b=2"),
         L"a=1"},
        {"comment that is not counted",
         Block(4, Counted("maker 1") + Little(1) + Counted("a=1") + Counted("b=2")), L"a=1"},
        {"pictures, also empty and larger than the block",
         Comments({}) + Picture("image/png", "Front", 3, "xyz") + Picture("m", "", 0, "") +
             Picture("m", "", 999, "w") + Picture("m", "", 1, "z"),
         L"Picture=image/png: Front #xyz | Picture=m #z"},
        {"blocks far apart and large",
         Block(1, Zeros(70000)) + Comments({"a=1"}) + Picture("m", "", large.size(), large),
         L"a=1 | Picture=m #" + std::wstring(large.begin(), large.end())},
    };
    for (const Case& row : rows) {
        EXPECT_EQ(Read(library, Flac(row.content)),
                  kFlacInfo + L"\nEncoder=maker 1 | " + kFlacSizes + L"\n" + row.expected)
            << row.label;
    }
}

TEST(SampleDecoders, CutFilesGiveWhatCouldBeRead) {
    const std::string tags = "INFO" + Chunk("IART", "A") + Chunk("IART", "B\xC3\xBC");
    CheckEveryCut(Library(L"wav.dll"), Wave(Format(0xFFFE, 2, 48000, 16, Extension(1)) + Chunk("LIST", tags) +
                                            Chunk("data", Zeros(16))));
    CheckEveryCut(Library(L"flac.dll"),
                  Flac(Comments({"A=1", "a=2", "B=\xC3\xBC"}) + Picture("image/png", "x", 4, "data")));
}

TEST(SampleDecoders, ListsTheirExtensions) {
    const Library wav(L"wav.dll");
    const Library flac(L"flac.dll");
    for (const wchar_t* extension : {L".wav", L".WAVE", L".flac", L"."}) {
        const std::wstring text = extension;
        EXPECT_EQ(wav.Decoder().Decodes(extension), text == L".wav" || text == L".WAVE") << text;
        EXPECT_EQ(flac.Decoder().Decodes(extension), text == L".flac") << text;
    }
}

TEST(SampleDecoders, OneFlagFillsItsFieldsAloneAndListsLiveOn) {
    const Library library(L"flac.dll");
    DecoderOpenRecord tags;
    DecoderOpenRecord properties;
    DecoderOpenRecord info;
    for (const auto& [record, flag] :
         {std::pair(&tags, kOpenIDTags), std::pair(&properties, kOpenAudioProperties),
          std::pair(&info, kOpenAudioInfo)}) {
        ASSERT_TRUE(library.Open(Flac(Comments({"a=1"})), *record, flag));
    }
    EXPECT_EQ(Render(tags.audioInfo), L"0 0 0 0 0 0 0 0 0");
    EXPECT_TRUE(tags.propertyData == nullptr && properties.IDTagData == nullptr);
    EXPECT_TRUE(info.IDTagData == nullptr && info.propertyData == nullptr);
    EXPECT_EQ(Render(info.audioInfo), kFlacInfo);
    EXPECT_EQ(Render(tags.IDTagData, tags.IDTagByteSize), L"a=1"); // after two more calls
}

} // namespace
