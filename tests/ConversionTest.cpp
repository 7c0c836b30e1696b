#include "tests/ConversionFixture.h"

#include <functional>

namespace {

// Expected texts lie in tests/data, with "@…@" where a run has its own folder and times.
std::string Expected(const wchar_t* file, const std::map<std::string, std::string>& run) {
    const std::string pattern = ReadBytes(std::wstring(L"data\\") + file);
    std::string text;
    for (size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] == '\n') {
            text += "\r\n";
        } else if (pattern[at] == '@') {
            const size_t end = pattern.find('@', at + 1);
            text += run.at(pattern.substr(at + 1, end - at - 1));
            at = end;
        } else {
            text += pattern[at];
        }
    }
    return text;
}

TEST_F(ConversionTest, WritesTheWholeDocumentAndTrace) {
    const std::map<std::string, std::string> run = {{"FOLDER", Narrow(folder)},
                                                    {"SOURCE CREATED", Created(source)},
                                                    {"CONVERTED CREATED", Created(converted)},
                                                    {"TAG BYTES", std::to_string(library.idTags.size())}};
    const std::wstring trace = Convert();
    EXPECT_EQ(ReadBytes(document), Expected(L"document.xml", run));
    EXPECT_EQ(Narrow(trace), Expected(L"trace.txt", run));
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST_F(ConversionTest, CallsTheDecoderLibrariesInOrder) {
    decoders.Add(L"a.dll").decodes = {L".other"};
    decoders.Add(L"b.dll", L"incomplete").decodes = {L".OUT"};
    decoders.Add(L"c.dll").failingCreate = 1;
    // The first reading scans the folder, the second has its library from the cache, the third scans anew for
    // the source's extension.
    Convert();
    std::wstring calls;
    for (const std::wstring& call : decoders.Calls()) {
        calls += call + L"\r\n";
    }
    EXPECT_EQ(Narrow(calls), Expected(L"calls.txt", {}));
}

TEST_F(ConversionTest, ReaderFailuresLeaveTheRestOfTheDocument) {
    const std::wstring lib = Decoders::PathOf(L"lib.dll");
    const struct {
        const char* label;
        std::function<void()> arrange;
        std::wstring errors;
        bool readsInfo, readsTags;
    } rows[] = {
        {"all is well", [] {}, L"", true, true},
        {"Open fails", [this] { library.opens = false; },
         L"Failed to read audio info from file '" + converted +
             L"'\r\nFailed to read audio properties from file '" + converted +
             L"'\r\nFailed to read ID tags from file '" + source + L"'\r\n",
         false, false},
        {"no list at all", [this] { library.listsAreNull = true; }, L"", true, false},
        {"negative list sizes", [this] { library.sizeInstead = -5; }, L"", true, false},
        {"second instance fails", [this] { library.failingCreate = 2; }, L"", false, true},
        {"extension list without text", [this] { library.decodes = {}, library.textMissing = true; },
         L"Failed to find decoder to read audio properties from file '" + converted +
             L"'\r\nFailed to find decoder to read audio properties from file '" + converted +
             L"'\r\nFailed to find decoder to read ID tags from file '" + source + L"'\r\n",
         false, false},
    };
    const FixtureBehaviour good = library;
    for (const auto& row : rows) {
        library = good;
        row.arrange();
        Convert();
        const std::string written = ReadBytes(document);
        EXPECT_EQ(plugin.Errors(), row.errors) << row.label;
        EXPECT_EQ(written.find("<FileBitrate>705<") != std::string::npos, row.readsInfo) << row.label;
        EXPECT_EQ(written.find("<FileBitrate>0<") == std::string::npos, row.readsInfo) << row.label;
        EXPECT_EQ(written.find("<Title ") != std::string::npos, row.readsTags) << row.label;
        DeleteFileW(document.c_str());
        decoders.Calls();
    }
}

TEST_F(ConversionTest, EarlyEndsLeaveTheTraceOneLevelDeeper) {
    DeleteFileW(source.c_str());
    DeleteFileW(Decoders::PathOf(L"lib.dll").c_str());
    const std::wstring trace = Convert();
    const std::wstring missing = L"'" + source + L"'";
    const std::wstring noDecoder =
        L"Failed to find decoder to read audio properties from file '" + converted + L"'\r\n";
    std::wstring errors =
        noDecoder + noDecoder + L"Error reading ID tags, file does not exist " + missing + L"\r\n";
    for (int i = 0; i < 3; ++i) {
        errors += L"Error reading file date time, file does not exist " + missing + L"\r\n";
    }
    EXPECT_EQ(plugin.Errors(), errors);
    const std::vector<std::wstring> lines = Lines(trace);
    ASSERT_EQ(lines.size(), 29u);
    // Six early ends: the leave lines of the whole are six levels in, where they were entered at 1 and at 0.
    EXPECT_EQ(lines[27], std::wstring(14, L' ') + L"<-<-  [clDSP_WriteMetadataFile::WriteXMLFile]");
    EXPECT_EQ(lines[28], std::wstring(12, L' ') + L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]");
    EXPECT_NE(ReadBytes(document).find("\t\t<FileCreated></FileCreated>\r\n"), std::string::npos);
}

TEST_F(ConversionTest, ADiscHasNoSourceFile) {
    source = L"-";
    Convert();
    const std::string written = ReadBytes(document);
    for (const char* line : {"\t\t<FileName></FileName>\r\n", "\t\t<FileNameNoExt></FileNameNoExt>\r\n",
                             "\t\t<FileNameExt></FileNameExt>\r\n", "\t\t<FileNamePath></FileNamePath>\r\n",
                             "\t\t<FileBitrate>-7</FileBitrate>\r\n", "\t\t<FileCreated></FileCreated>\r\n",
                             "\t\t<FileModified></FileModified>\r\n", "\t\t<FileAccessed></FileAccessed>\r\n",
                             "\t\t<IDTags>\r\n\t\t</IDTags>\r\n"}) {
        EXPECT_NE(written.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST_F(ConversionTest, SettingsDecideTheOutputPath) {
    const struct {
        const wchar_t* settings;
        std::wstring output;
    } rows[] = {
        {L"", L"out.c.xml"},
        {L"-ext=\"\"", L"out.c.xml"},
        {L"-ext=txt", L"out.ctxt"},
        {L"", L"out.ctxt"}, // the extension of before stays
        {L"-ext=\".nfo\" -ext=.second", L"out.c.nfo"},
        {L"-filename=\"NAMED\"", L"named file.html"},
        {L"", L"out.c.nfo"}, // the name does not
    };
    for (const auto& row : rows) {
        std::wstring settings = row.settings;
        if (const size_t at = settings.find(L"NAMED"); at != std::wstring::npos) {
            settings.replace(at, 5, folder + L"named file.html");
        }
        WriteTestFile(folder + row.output, std::string(100000, '?')); // longer than the document
        const std::wstring trace = Convert(settings);
        EXPECT_NE(trace.find(L"    " + folder + row.output + L"  [clDSP"), std::wstring::npos)
            << row.settings;
        const std::string written = ReadBytes(folder + row.output);
        EXPECT_TRUE(written.starts_with("<?xml")) << row.settings;
        EXPECT_TRUE(written.ends_with("</AudioMetadata>\r\n")) << row.settings;
        DeleteFileW((folder + row.output).c_str());
    }
    // The converted file's own extension makes the document replace it.
    Convert(L"-ext=.OUT");
    EXPECT_TRUE(ReadBytes(converted).starts_with("<?xml"));
}

TEST_F(ConversionTest, RefusesTwoKindsOfConvertedFiles) {
    const std::wstring ripper =
        L"Write XML incompatible with option in Platterhawk 'Rip to ._ Files, rename Album at end'\r\n";
    const std::wstring encoder = L"Write XML is incompatible with this encoder.\r\n";
    const struct {
        const wchar_t* name;
        std::wstring error;
    } rows[] = {{L"track._", ripper},
                {L"track.ignore", encoder},
                {L"track.IgNoRe", encoder},
                {L"track.ignored", L""}};
    size_t depth = 0;
    for (const auto& row : rows) {
        converted = folder + row.name;
        WriteTestFile(converted, "");
        WriteTestFile(folder + L"track.xml", "kept");
        library.decodes.push_back(L".ignored");
        const std::vector<std::wstring> lines = Lines(Convert());
        EXPECT_EQ(plugin.Errors(), row.error);
        EXPECT_EQ(ReadBytes(folder + L"track.xml") == "kept", !row.error.empty()) << row.name;
        if (!row.error.empty()) {
            ASSERT_EQ(lines.size(), 8u);
            EXPECT_EQ(lines[6] + L"\r\n", L"*** Error: " + row.error);
            depth += 2;
            EXPECT_EQ(lines[7],
                      std::wstring(depth, L' ') + L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]");
        }
    }
}

TEST_F(ConversionTest, OutputThatCannotBeOpenedIsPassedOverInSilence) {
    CreateDirectoryW(document.c_str(), nullptr);
    const std::wstring trace = Convert();
    EXPECT_EQ(plugin.Errors(), L"");
    EXPECT_TRUE(trace.ends_with(L"  <-<-  [clDSP_WriteMetadataFile::WriteXMLFile]\r\n"
                                L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"));
}

TEST_F(ConversionTest, HostListsMayBeMissingOrBroken) {
    AfterConversionInfo info = Info();
    info.sourceAudioInfo = nullptr;
    info.destIDTags = nullptr;
    info.sourceAudioPropertiesSize = 0x80000000u; // read as a negative size
    plugin.Convert(L"", info);
    const std::string written = ReadBytes(document);
    EXPECT_EQ(written.find("name=\"Sample Rate\""), std::string::npos);
    EXPECT_NE(written.find("\t\t<FileSize>0</FileSize>\r\n"), std::string::npos);
    EXPECT_NE(written.find("\t\t<IDTags>\r\n\t\t</IDTags>\r\n\t</ConvertedFile>"), std::string::npos);
}

TEST_F(ConversionTest, FilesThatCannotBeOpenedHaveTheZeroTime) {
    const OwnedFile locked(CreateFileW(source.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(locked.IsValid());
    Convert();
    EXPECT_NE(ReadBytes(document).find("\t\t<FileModified>1601-01-01T00:00:00</FileModified>\r\n"),
              std::string::npos);
}

TEST_F(ConversionTest, TheCacheDecidesBeforeTheFolder) {
    // a.dll comes first in the folder and decodes the same as lib.dll.
    decoders.Add(L"a.dll").decodes = {L".out", L".TST", L"."};
    const std::wstring a = Decoders::PathOf(L"a.dll"), lib = Decoders::PathOf(L"lib.dll");
    const struct {
        const char* label;
        std::function<void()> arrange;
        std::wstring expected;
    } rows[] = {
        {"first in the folder", [] {}, a},
        {"only the name of a cached path counts", [] { Decoders::Store(L".OUT", L"X:\\old\\lib.dll"); }, lib},
        {"expandable text", [] { Decoders::Store(L".OUT", L"lib.dll", REG_EXPAND_SZ); }, lib},
        {"without terminator, odd", [] { Decoders::Store(L".OUT", std::wstring(L"lib.dll", 7)); }, lib},
        {"no text", [] { Decoders::Store(L".OUT", L"lib.dll", REG_BINARY); }, a},
        {"empty", [] { Decoders::Store(L".OUT", L""); }, a},
        {"missing library", [] { Decoders::Store(L".OUT", L"X:\\old\\gone.dll"); }, a},
        {"library of other files",
         [this] {
             decoders.Add(L"z.dll").decodes = {L".zzz"};
             Decoders::Store(L".OUT", L"z.dll");
         },
         a},
    };
    for (const auto& row : rows) {
        row.arrange();
        Convert();
        EXPECT_EQ(Decoders::Cached(L".OUT"), row.expected) << row.label;
        EXPECT_EQ(plugin.Errors(), L"") << row.label;
    }
    EXPECT_EQ(Decoders::Cached(L".tst"), a) << "value names keep the case of the file name";

    // Without any library a stale entry stays as it was.
    DeleteFileW(a.c_str());
    DeleteFileW(lib.c_str());
    Convert();
    EXPECT_EQ(Decoders::Cached(L".OUT"), a);
    // Nor is a sub-folder ever a library, whatever its name; a file without extension is looked up as ".".
    CreateDirectoryW(a.c_str(), nullptr);
    converted = folder + L"bare";
    WriteTestFile(converted, "");
    decoders.Add(L"dot.dll").decodes = {L"."};
    plugin.Errors();
    Convert();
    EXPECT_EQ(Decoders::Cached(L"."), Decoders::PathOf(L"dot.dll"));
}

TEST_F(ConversionTest, CostGrowsWithTheWorkAlone) {
    // A large value and many tags; anything quadratic would run into the test's time limit.
    TagBlob blob;
    blob.Add(L"Large", std::wstring(10'000'000, L'&'));
    for (int i = 0; i < 100'000; ++i) {
        blob.Add(L"tag " + std::to_wstring(i), L"value");
    }
    tags = blob.Bytes();
    Convert();
    const std::string written = ReadBytes(document);
    EXPECT_NE(written.find("<tag99999 name=\"tag 99999\">value</tag99999>"), std::string::npos);
    EXPECT_GT(written.size(), 50'000'000u);
}

} // namespace
