#include "decoders/clZentaroDecoder.h"
#include "metadata/TagList.h"
#include "support/ProgramFolder.h"
#include "support/XFile.h"
#include "tests/GuardedBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

// The sample decoder libraries, through their exports, on files made byte by byte.

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kEverything = kOpenAudioInfo | kOpenIDTags | kOpenAudioProperties;

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes Little(size_t value, int size = 4) {
    Bytes bytes;
    for (int i = 0; i < size; ++i) {
        bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
    }
    return bytes;
}

Bytes Big(size_t value, int size = 4) {
    const Bytes bytes = Little(value, size);
    return Bytes(bytes.rbegin(), bytes.rend());
}

/// One of the two libraries with an instance of its decoder.
class Library {
public:
    explicit Library(const wchar_t* fileName) {
        XString path = ModuleFolder(nullptr);
        path.Append(L"..\\..\\tools\\decoder\\");
        path.Append(fileName);
        EXPECT_TRUE(m_decoder.Load(path.Text()));
        EXPECT_TRUE(m_decoder.CreateInstance(nullptr));

        wchar_t folder[MAX_PATH + 1] = {};
        wchar_t file[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH + 1, folder);
        GetTempFileNameW(folder, L"dec", 0, file);
        m_file.Assign(file);
    }
    ~Library() { DeleteFileW(m_file.Text()); }

    const clZentaroDecoder& Decoder() const { return m_decoder; }

    bool Open(const Bytes& content, DecoderOpenRecord& record, uint32_t flags = kEverything) const {
        XFile file;
        EXPECT_TRUE(file.Open(m_file, GENERIC_WRITE, CREATE_ALWAYS) &&
                    file.Write(content.data(), content.size()));
        file.Close();
        record = {};
        record.fileName = m_file.Text();
        record.openFlags = flags;
        return m_decoder.Open(record);
    }

private:
    clZentaroDecoder m_decoder;
    XString m_file;
};

/// "Name=value" for each entry, with the bytes of binary data behind it and " | " between entries. The list
/// must be whole: as many entries as it counts, and not a byte more.
std::wstring Render(const void* list, int32_t size) {
    const uint8_t* const begin = static_cast<const uint8_t*>(list);
    const GuardedBytes guarded(Bytes(begin, begin + size));
    TagList entries;
    ParseTagBlob(entries, guarded.Data(), size);
    std::wstring text;
    size_t packedSize = sizeof(int32_t);
    for (const TagEntry& entry : entries) {
        packedSize += 4 + 2 * (entry.name.Length() + entry.value.Length()) + entry.rawData.Size();
        text += text.empty() ? L"" : L" | ";
        text += entry.name.Text();
        text += L'=';
        text += entry.value.Text();
        if (!entry.rawData.IsEmpty()) {
            text += L" #" + std::wstring(entry.rawData.Data(), entry.rawData.Data() + entry.rawData.Size());
        }
    }
    EXPECT_EQ(packedSize, guarded.Size());
    int32_t count = -1;
    std::memcpy(&count, guarded.Data(), sizeof count);
    EXPECT_EQ(static_cast<size_t>(count), entries.size());
    return text;
}

/// Format tag, extension size, channels, sample rate, bits, block size, byte rate; kbit/s, ms.
std::wstring Render(const AudioInfo& info) {
    const AudioFormat& format = info.format;
    std::wstring text;
    for (const int64_t number :
         {int64_t{format.wFormatTag}, int64_t{format.cbSize}, int64_t{format.nChannels},
          int64_t{format.nSamplesPerSec}, int64_t{format.wBitsPerSample}, int64_t{format.nBlockAlign},
          int64_t{format.nAvgBytesPerSec}, int64_t{info.bitrate}, int64_t{info.length}}) {
        text += (text.empty() ? L"" : L" ") + std::to_wstring(number);
    }
    return text;
}

/// All that one opening of the file gives, in lines; "no" when it fails.
std::wstring Read(const Library& library, const Bytes& content) {
    DecoderOpenRecord record;
    if (!library.Open(content, record)) {
        return L"no";
    }
    EXPECT_EQ(int64_t{record.audioInfo.fileSize}, static_cast<int64_t>(content.size()));
    return Render(record.audioInfo) + L"\n" + Render(record.propertyData, record.propertyByteSize) + L"\n" +
           Render(record.IDTagData, record.IDTagByteSize);
}

struct Case {
    const char* label;
    Bytes content;
    std::wstring expected;
};

void CheckCases(const Library& library, const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        EXPECT_EQ(Read(library, row.content), row.expected) << row.label;
    }
}

/// A cut file fails to open or gives whole lists; more of the file never gives less.
void CheckEveryCut(const Library& library, const Bytes& content) {
    bool opened = false;
    for (size_t size = 0; size <= content.size(); ++size) {
        SCOPED_TRACE(size);
        const bool opens =
            Read(library, Bytes(content.begin(), content.begin() + static_cast<int>(size))) != L"no";
        EXPECT_TRUE(opens || !opened);
        opened = opens;
    }
    EXPECT_TRUE(opened);
}

// WAVE files

Bytes Chunk(const std::string& id, const Bytes& content) {
    return Text(id) + Little(content.size()) + content + Bytes(content.size() % 2);
}

Bytes Wave(const Bytes& chunks) {
    return Text("RIFF") + Little(chunks.size() + 4) + Text("WAVE") + chunks;
}

Bytes Format(int tag, int channels, int rate, int bits, const Bytes& extension = {}) {
    const int block = channels * bits / 8;
    return Chunk("fmt ", Little(static_cast<size_t>(tag), 2) + Little(static_cast<size_t>(channels), 2) +
                             Little(static_cast<size_t>(rate)) + Little(static_cast<size_t>(rate * block)) +
                             Little(static_cast<size_t>(block), 2) + Little(static_cast<size_t>(bits), 2) +
                             extension);
}

/// cbSize, valid bits, front left and right, and the sub-format of a plain tag.
Bytes Extension(uint8_t subFormat, size_t cbSize = 22) {
    return Little(cbSize, 2) + Little(16, 2) + Little(3) + Bytes{subFormat} +
           Bytes{0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
}

const Bytes kMono = Format(1, 1, 8000, 16); // 24 bytes
const std::wstring kMonoFormat = L"1 0 1 8000 16 2 16000 128 ";

Bytes Info(const Bytes& entries) {
    return Wave(kMono + Chunk("LIST", Text("INFO") + entries) + Chunk("data", Bytes(160)));
}

std::wstring MonoWithTags(const std::wstring& tags) {
    return kMonoFormat + L"10\nEncoding=PCM | Sample Count=80\n" + tags;
}

TEST(SampleDecoders, WaveFormatsAndLengths) {
    const Bytes afterData = Chunk("junk", Bytes(5)); // odd, so with a byte of padding
    CheckCases(
        Library(L"wav.dll"),
        {{"PCM", Wave(Format(1, 2, 44100, 16) + Chunk("data", Bytes(17640))),
          L"1 0 2 44100 16 4 176400 1411 100\nEncoding=PCM | Sample Count=4410\n"},
         {"float", Wave(Format(3, 1, 48000, 32, Little(0, 2)) + Chunk("data", Bytes(192))),
          L"3 0 1 48000 32 4 192000 1536 1\nEncoding=IEEE Float | Sample Count=48\n"},
         {"extensible", Wave(Format(0xFFFE, 2, 48000, 24, Extension(1)) + Chunk("data", Bytes(288))),
          L"65534 22 2 48000 24 6 288000 2304 1\n"
          L"Encoding=PCM | Sample Count=48 | Channels Mask=0x00000003\n"},
         {"unknown sub-format", Wave(Format(0xFFFE, 1, 8000, 8, Extension(0x99)) + Chunk("data", Bytes(8))),
          L"65534 22 1 8000 8 1 8000 64 1\nEncoding=0x0099 | Channels Mask=0x00000003\n"},
         {"extension shorter than it says",
          Wave(Format(0xFFFE, 1, 8000, 8, Little(22, 2) + Bytes(3)) + Bytes(1)),
          L"65534 3 1 8000 8 1 8000 64 0\nEncoding=0xfffe\n"},
         {"extension that the format does not count", Wave(Format(0xFFFE, 1, 8000, 8, Extension(1, 0))),
          L"65534 0 1 8000 8 1 8000 64 0\nEncoding=0xfffe\n"},
         {"no byte rate", Wave(Format(0x55, 0, 0, 0) + Chunk("data", Bytes(8))),
          L"85 0 0 0 0 0 0 0 0\nEncoding=MPEG Layer 3\n"},
         {"odd chunk first, second format and data",
          Wave(Chunk("odd ", Bytes(3)) + kMono + Chunk("data", Bytes(160)) + Format(1, 2, 1, 8) +
               Chunk("data", Bytes(2))),
          kMonoFormat + L"10\nEncoding=PCM | Sample Count=80\n"},
         {"data size past the end", Wave(kMono + Text("data") + Little(1000) + Bytes(160)),
          kMonoFormat + L"10\nEncoding=PCM | Sample Count=80\n"},
         {"data size unknown", Wave(kMono + Text("data") + Little(0xFFFFFFFF) + Bytes(160)),
          kMonoFormat + L"10\nEncoding=PCM | Sample Count=80\n"},
         {"data size never filled in",
          Text("RIFF") + Little(36) + Text("WAVE") + kMono + Text("data") + Little(0) + Bytes(160),
          kMonoFormat + L"10\nEncoding=PCM | Sample Count=80\n"},
         {"no data indeed", Wave(kMono + Chunk("data", {}) + afterData),
          kMonoFormat + L"0\nEncoding=PCM | Sample Count=0\n"},
         {"no chunk but the format", Wave(kMono), kMonoFormat + L"0\nEncoding=PCM | Sample Count=0\n"},
         {"chunk of hostile size", Wave(Text("fmt ") + Little(0xFFFFFFF0) + Bytes(12)), L"no"},
         {"format too short", Wave(Chunk("fmt ", Bytes(14)) + Chunk("data", Bytes(4))), L"no"},
         {"no format", Wave(Chunk("data", Bytes(16))), L"no"},
         {"other RIFF", Text("RIFF") + Little(28) + Text("AVI ") + kMono, L"no"},
         {"empty", {}, L"no"}});
}

TEST(SampleDecoders, WaveTags) {
    wchar_t ansi = 0;
    MultiByteToWideChar(CP_ACP, 0, "\xE9", 1, &ansi, 1);
    CheckCases(
        Library(L"wav.dll"),
        {{"names", Info(Chunk("INAM", Text("A song")) + Chunk("IXYZ", Text("1\n"))),
          MonoWithTags(L"Title=A song | IXYZ=1\n")},
         {"terminators, padding and odd sizes",
          Info(Chunk("INAM", Text("ab") + Bytes(3)) + Chunk("IGNR", Text("x"))),
          MonoWithTags(L"Title=ab | Genre=x")},
         {"several artists", Info(Chunk("IART", Text("A")) + Chunk("ICMT", {}) + Chunk("IART", Text("B"))),
          MonoWithTags(L"Artist=A\rB | Comment=")},
         {"UTF-8", Info(Chunk("INAM", Text("Gr\xC3\xBC\xC3\x9F"))), MonoWithTags(L"Title=Grüß")},
         {"ANSI", Info(Chunk("INAM", Text("\xE9"))), MonoWithTags(std::wstring(L"Title=") + ansi)},
         {"entry past its list", Info(Text("INAM") + Little(1000) + Text("cut!") + Bytes(0)),
          MonoWithTags(L"Title=cut!")},
         {"name that cannot be shown", Info(Chunk(std::string("I\0\x01\x02", 4), Text("x"))),
          MonoWithTags(L"")}});
}

// FLAC files

Bytes Block(int type, const Bytes& content, bool last = false) {
    return Bytes{static_cast<uint8_t>(type | (last ? 0x80 : 0))} + Big(content.size(), 3) + content;
}

Bytes StreamInfo(size_t rate, size_t channels, size_t bits, uint64_t samples, const Bytes& md5) {
    return Block(0, Big(4096, 2) + Big(4608, 2) + Bytes(6) +
                        Big(rate << 44 | (channels - 1) << 41 | (bits - 1) << 36 | samples, 8) + md5);
}

Bytes Counted(const std::string& text) {
    return Little(text.size()) + Text(text);
}

Bytes Comments(const std::vector<std::string>& comments) {
    Bytes content = Counted("maker 1") + Little(comments.size());
    for (const std::string& comment : comments) {
        content = content + Counted(comment);
    }
    return Block(4, content);
}

Bytes Picture(const std::string& mimeType, const std::string& description, size_t dataSize,
              const std::string& data) {
    return Block(6, Big(3) + Big(mimeType.size()) + Text(mimeType) + Big(description.size()) +
                        Text(description) + Bytes(16) + Big(dataSize) + Text(data));
}

/// A tenth of a second of audio that takes 500 bytes.
Bytes Flac(const Bytes& blocks) {
    return Text("fLaC") + StreamInfo(8000, 2, 12, 800, Bytes(16)) + blocks + Block(1, {}, true) + Bytes(500);
}

const std::wstring kFlacProperties = L"Encoding=FLAC | Sample Count=800 | Compression Ratio=20.8% | "
                                     L"Minimum Block Size=4096 | Maximum Block Size=4608\n";

std::wstring FlacWithTags(const std::wstring& tags) {
    return L"1 0 2 8000 12 4 32000 40 100\nEncoder=maker 1 | " + kFlacProperties + tags;
}

TEST(SampleDecoders, FlacFormatsAndTags) {
    const Bytes md5 = Bytes(15) + Bytes{0xAB};
    const std::string large(70000, 'x');
    const Bytes unknown = StreamInfo(655350, 8, 32, 0, md5); // length not known, largest rate and channels
    CheckCases(
        Library(L"flac.dll"),
        {{"no tags", Flac({}), L"1 0 2 8000 12 4 32000 40 100\n" + kFlacProperties},
         {"length unknown", Text("fLaC") + unknown + Block(1, {}, true) + Bytes(9),
          L"1 0 8 655350 32 32 20971200 0 0\nEncoding=FLAC | Minimum Block Size=4096 | "
          L"Maximum Block Size=4608 | MD5=000000000000000000000000000000ab\n"},
         {"36 bits of samples", Text("fLaC") + StreamInfo(1, 1, 8, 0xFFFFFFFFFull, Bytes(16)),
          L"1 0 1 1 8 1 1 0 68719476735000\nEncoding=FLAC | Sample Count=68719476735 | Compression "
          L"Ratio=0.0% | "
          L"Minimum Block Size=4096 | Maximum Block Size=4608\n"},
         {"no sample rate", Text("fLaC") + StreamInfo(0, 1, 8, 5, Bytes(16)),
          L"1 0 1 0 8 1 0 0 0\nEncoding=FLAC | Sample Count=5 | Compression Ratio=0.0% | "
          L"Minimum Block Size=4096 | Maximum Block Size=4608\n"},
         {"values that belong together",
          Flac(Comments({"Artist=A", "TITLE=Gr\xC3\xBC\xC3\x9F", "ARTIST=B=C", "artist="})),
          FlacWithTags(L"Artist=A\rB=C\r | TITLE=Grüß")},
         {"no field", Flac(Comments({"nothing", "=value", std::string("a=b\0c", 5), ""})),
          FlacWithTags(L"a=b")},
         {"second comments", Flac(Comments({"a=1"}) + Comments({"a=2"})), FlacWithTags(L"a=1")},
         {"pictures",
          Flac(Comments({"a=1"}) + Picture("image/png", "Front", 3, "xyz") + Picture("m", "", 1, "w")),
          FlacWithTags(L"a=1 | Picture=image/png: Front #xyz | Picture=m #w")},
         {"picture empty, larger than its block",
          Flac(Comments({}) + Picture("m", "", 0, "") + Picture("m", "", 999, "w")), FlacWithTags(L"")},
         {"comment larger than its block",
          Flac(Block(4, Counted("maker 1") + Little(0xFFFFFFFF) + Counted("a=1") + Little(0x7FFFFFFF) +
                            Text("b=2"))),
          FlacWithTags(L"a=1")},
         {"comment that is not counted",
          Flac(Block(4, Counted("maker 1") + Little(1) + Counted("a=1") + Counted("b=2"))),
          FlacWithTags(L"a=1")},
         {"blocks far apart and large",
          Flac(Block(1, Bytes(70000)) + Comments({"a=1"}) + Picture("m", "", large.size(), large)),
          FlacWithTags(L"a=1 | Picture=m #" + std::wstring(large.begin(), large.end()))},
         {"vendor larger than its block", Flac(Block(4, Little(0xFFFFFFFF) + Text("maker"))),
          L"1 0 2 8000 12 4 32000 40 100\n" + kFlacProperties},
         {"stream info not first",
          Text("fLaC") + Comments({"a=a comment of some length"}) + StreamInfo(8000, 1, 8, 1, md5), L"no"},
         {"stream info too short", Text("fLaC") + Block(0, Bytes(33), true) + Bytes(100), L"no"},
         {"other file", Text("OggS") + StreamInfo(8000, 1, 8, 1, md5), L"no"}});
}

TEST(SampleDecoders, CutFilesGiveWhatCouldBeRead) {
    CheckEveryCut(Library(L"wav.dll"), Wave(Format(0xFFFE, 2, 48000, 16, Extension(1)) +
                                            Chunk("LIST", Text("INFO") + Chunk("IART", Text("A")) +
                                                              Chunk("IART", Text("B\xC3\xBC"))) +
                                            Chunk("data", Bytes(16))));
    CheckEveryCut(Library(L"flac.dll"),
                  Flac(Comments({"A=1", "a=2", "B=\xC3\xBC"}) + Picture("image/png", "x", 4, "data")));
}

TEST(SampleDecoders, ListsTheirExtensions) {
    const Library wav(L"wav.dll");
    const Library flac(L"flac.dll");
    for (const wchar_t* extension : {L".wav", L".WAVE"}) {
        EXPECT_TRUE(wav.Decoder().Decodes(extension)) << extension;
        EXPECT_FALSE(flac.Decoder().Decodes(extension)) << extension;
    }
    EXPECT_TRUE(flac.Decoder().Decodes(L".flac"));
    EXPECT_FALSE(flac.Decoder().Decodes(L"."));
}

TEST(SampleDecoders, OneFlagFillsItsFieldsAloneAndListsLiveOn) {
    const Library library(L"flac.dll");
    const Bytes content = Flac(Comments({"a=1"}));
    DecoderOpenRecord tags;
    DecoderOpenRecord properties;
    DecoderOpenRecord info;
    ASSERT_TRUE(library.Open(content, tags, kOpenIDTags));
    ASSERT_TRUE(library.Open(content, properties, kOpenAudioProperties));
    ASSERT_TRUE(library.Open(content, info, kOpenAudioInfo));
    EXPECT_EQ(Render(tags.audioInfo), L"0 0 0 0 0 0 0 0 0");
    EXPECT_TRUE(tags.propertyData == nullptr && properties.IDTagData == nullptr);
    EXPECT_TRUE(info.IDTagData == nullptr && info.propertyData == nullptr);
    EXPECT_EQ(Render(info.audioInfo), L"1 0 2 8000 12 4 32000 40 100");
    EXPECT_EQ(Render(tags.IDTagData, tags.IDTagByteSize), L"a=1"); // after two more calls
}

} // namespace
