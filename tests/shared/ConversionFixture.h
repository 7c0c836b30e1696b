#pragma once

#include "tests/shared/Decoders.h"
#include "tests/shared/PluginHarness.h"

#include <filesystem>

/// A conversion as the host reports it, with real files and one fixture decoder for both.
class ConversionTest : public testing::Test {
protected:
    ConversionTest() {
        WriteTestFile(source, "source");
        WriteTestFile(converted, "converted");
        SetTimes(source, {2024, 3, 4, 7, 12, 5, 8, 0});
        SetTimes(converted, {1999, 12, 5, 31, 21, 59, 58, 0});
        decoders.context = plugin.Instance();
        library.decodes = {L".tst", L".OUT", L".wav"};
        library.audioInfo.format.wFormatTag = 1;
        library.audioInfo.format.nChannels = 2;
        library.audioInfo.format.nSamplesPerSec = 44100;
        library.audioInfo.format.wBitsPerSample = 16;
        library.audioInfo.bitrate = 705;
        library.audioInfo.length = 1234;
        library.audioInfo.fileSize = 9;
        library.idTags = TagBlob().Add(L"Title", L"Caf\x00E9 & more").Add(L"Artist", L"A\rB").Bytes();
        library.properties = TagBlob().Add(L"Codec", L"Test").Bytes();
        sourceInfo.format.nChannels = 1;
        sourceInfo.format.nSamplesPerSec = 8000;
        sourceInfo.format.wBitsPerSample = 8;
        sourceInfo.bitrate = -7;
        sourceInfo.length = INT64_MIN;
        sourceInfo.fileSize = INT64_MAX;
    }

    /// Sets the time of creation, that of the last change an hour later, and that of the last access one more
    /// hour later. To even seconds, which exFAT keeps as well.
    static void SetTimes(const std::wstring& path, SYSTEMTIME created) {
        const OwnedFile file(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
        FILETIME times[3] = {};
        for (FILETIME& time : times) {
            SystemTimeToFileTime(&created, &time);
            ++created.wHour;
        }
        EXPECT_TRUE(SetFileTime(file.Get(), &times[0], &times[2], &times[1]));
    }

    AfterConversionInfo Info() {
        AfterConversionInfo info = {};
        info.sourceFileName = source.c_str();
        info.destFileName = converted.c_str();
        info.sourceAudioInfo = &sourceInfo;
        info.destIDTags = tags.data();
        info.destIDTagsSize = static_cast<uint32_t>(tags.size());
        info.sourceAudioProperties = properties.data();
        info.sourceAudioPropertiesSize = static_cast<uint32_t>(properties.size());
        return info;
    }

    std::wstring Convert(const std::wstring& settings = L"") {
        plugin.Convert(settings, Info());
        return plugin.Trace();
    }

    /// In UTF-8.
    static std::string Narrow(const std::wstring& text) {
        const std::u8string units = std::filesystem::path(text).u8string();
        return std::string(units.begin(), units.end());
    }

    Decoders decoders;
    FixtureBehaviour& library = decoders.Add(L"lib.dll");
    PluginInstance plugin;
    std::wstring folder = plugin.Folder().Path(L"");
    std::wstring source = folder + L"in & out.tst";
    std::wstring converted = folder + L"out.c.OUT";
    std::wstring document = folder + L"out.c.xml";
    AudioInfo sourceInfo = {};
    std::vector<uint8_t> tags = TagBlob().Add(L"Artist", L"C\rD").Add(L"Cover", L"", {1, 2}).Bytes();
    std::vector<uint8_t> properties = TagBlob().Add(L"Sample Rate", L"8000").Add(L"_x", L"hidden").Bytes();
};
