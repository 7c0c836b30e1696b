#include "decoders/clZentaroDecoder.h"
#include "metadata/TagList.h"
#include "tests/shared/Files.h"
#include "tests/shared/PlainDocument.h"
#include "tests/shared/Wide.h"

#include <filesystem>
#include <set>

// The sample decoder libraries, through their exports, on the files that the fuzzing begins with.

namespace {

/// "Name=value" for each entry, followed by the bytes of binary data, in lines.
std::wstring Render(std::span<const uint8_t> list) {
    std::wstring text;
    for (const TagEntry& entry : ParseTagBlob(list.data(), static_cast<int32_t>(list.size()))) {
        const std::wstring raw(entry.rawData.begin(), entry.rawData.end());
        text += Wide(entry.name) + L'=' + Wide(entry.value) + (raw.empty() ? L"\n" : L" #" + raw + L'\n');
    }
    std::replace(text.begin(), text.end(), L'\r', L'|');
    return text;
}

/// All that one Open returns. The first line has format tag, extension size, channels, sample rate, bits,
/// block size, byte rate; kbit/s, ms, bytes.
std::wstring Render(const DecoderReport& report) {
    const AudioInfo& info = report.audioInfo;
    const AudioFormat& f = info.format;
    wchar_t line[120];
    swprintf(line, std::size(line), L"%d %d %d %u %d %d %u; %d %lld %lld\n", f.wFormatTag, f.cbSize,
             f.nChannels, f.nSamplesPerSec, f.wBitsPerSample, f.nBlockAlign, f.nAvgBytesPerSec, info.bitrate,
             info.length, info.fileSize);
    return line + Render(report.properties) + Render(report.idTags);
}

TEST(SampleDecoders, ReportWhatTheFileHolds) {
    std::wstring reports;
    for (const std::wstring format : {L"wav", L"flac"}) {
        const std::set<std::filesystem::path> files(std::filesystem::directory_iterator(L"data\\" + format),
                                                    {});
        for (const std::filesystem::path& file : files) {
            clZentaroDecoder decoder;
            ASSERT_TRUE(decoder.Load((L"..\\..\\tools\\decoder\\" + format + L".dll").c_str()));
            ASSERT_TRUE(decoder.CreateInstance(nullptr));
            const auto report =
                decoder.Open(file.c_str(), kOpenAudioInfo | kOpenIDTags | kOpenAudioProperties);
            reports += L"\n== " + format + L": " + file.filename().wstring() + L"\n" +
                       (report ? Render(*report) : L"not read\n");
        }
    }
    wchar_t ansi[3] = {}; // the text of one chunk is not UTF-8
    MultiByteToWideChar(CP_ACP, 0, "\xFF\xFE", 2, ansi, 2);
    std::string expected = ReadBytes(L"data\\decoders.txt");
    expected.replace(expected.find("@ANSI@"), 6, PlainUtf8(ansi));
    EXPECT_EQ(PlainUtf8(reports), expected);
}

} // namespace
