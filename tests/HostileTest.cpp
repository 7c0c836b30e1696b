#include "tests/shared/ConversionFixture.h"

// Names, files and decoder folders that are not as the plug-in expects.

namespace {

class Hostile : public ConversionTest {
protected:
    /// Converts and returns the error lines; the trace must show a complete conversion.
    std::wstring Errors() {
        const std::wstring trace = Convert();
        EXPECT_NE(trace.find(L"<-<-  [clDSP_WriteMetadataFile::WriteXMLFile]\r\n"), std::wstring::npos);
        return plugin.Errors();
    }

    static bool Exists(const std::wstring& path) {
        return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    static bool IsWhole(const std::wstring& path) {
        const std::string bytes = Exists(path) ? ReadBytes(path) : "";
        return bytes.starts_with("<?xml") && bytes.find("<Title") != std::string::npos &&
               bytes.find("<FileBitrate>705<") != std::string::npos &&
               bytes.ends_with("</AudioMetadata>\r\n");
    }
};

TEST_F(Hostile, NamesAreTakenAsTheyAre) {
    std::wstring deep = L"\\\\?\\" + folder;
    for (int i = 0; i < 4; ++i) {
        deep += std::wstring(100, L'd') + L"\\";
        EXPECT_TRUE(CreateDirectoryW(deep.c_str(), nullptr));
    }
    const struct {
        std::wstring folder, name;
        std::string text;
    } rows[] = {
        {deep.substr(4), L"deep", "deep"},       {folder, L"\U0001F3B5 song", "\xF0\x9F\x8E\xB5 song"},
        {folder, L"a\xD800z", "a\xEF\xBF\xBDz"}, {folder, L"\xDC00", "\xEF\xBF\xBD"},
        {folder, L"dots.. .", "dots.. ."},       {folder, L" ", " "},
    };
    for (const auto& row : rows) {
        converted = row.folder + row.name + L".OUT";
        const std::wstring prefix = row.folder.size() > 260 ? L"\\\\?\\" : L"";
        const OwnedFile file(CreateFileW((prefix + converted).c_str(), GENERIC_WRITE, kShareAll, nullptr,
                                         CREATE_ALWAYS, 0, nullptr));
        const std::wstring errors = Errors();
        const std::wstring output = prefix + row.folder + row.name + L".xml";
        if (file.IsValid()) {
            EXPECT_EQ(errors, L"");
            EXPECT_TRUE(IsWhole(output)) << row.text;
            EXPECT_NE(ReadBytes(output).find("<FileNameNoExt>" + row.text + "</FileNameNoExt>"),
                      std::string::npos)
                << row.text;
        } else { // no name for this system
            EXPECT_NE(errors, L"") << row.text;
            EXPECT_FALSE(Exists(output)) << row.text;
        }
    }
}

TEST_F(Hostile, ASourceMayDisappearBetweenTwoReadings) {
    decoders.onCall = [this](const std::wstring& call) {
        if (call.ends_with(L" 8")) {
            EXPECT_TRUE(DeleteFileW(source.c_str()));
        }
    };
    const std::wstring noTime = L"Error reading file date time, file does not exist '" + source + L"'\r\n";
    EXPECT_EQ(Errors(), noTime + noTime + noTime);
    EXPECT_TRUE(IsWhole(document));
}

TEST_F(Hostile, TheDecoderFolderMayHoldAnything) {
    const std::string image = ReadBytes(Decoders::PathOf(L"lib.dll"));
    std::string unresolved = image;
    const size_t import = unresolved.find("KERNEL32.dll");
    ASSERT_NE(import, std::string::npos);
    unresolved.replace(import, 12, "NOTTHERE.dll");
    // All come before lib.dll.
    WriteTestFile(Decoders::PathOf(L"a.dll"), "text");
    WriteTestFile(Decoders::PathOf(L"b.dll"), "");
    WriteTestFile(Decoders::PathOf(L"c.dll"), image.substr(0, image.size() / 2));
    WriteTestFile(Decoders::PathOf(L"d.dll"), unresolved);
    decoders.Add(L"e.dll").loads = false;
    for (int i = 100; i < 300; ++i) {
        decoders.Add((L"f" + std::to_wstring(i) + L".dll").c_str()).decodes = {L".other"};
    }
    EXPECT_EQ(Errors(), L"");
    EXPECT_TRUE(IsWhole(document));
    EXPECT_EQ(Decoders::Cached(L".OUT"), Decoders::PathOf(L"lib.dll"));
}

} // namespace
