#include "tests/ConversionFixture.h"

#include <functional>

namespace {

size_t Count(const std::string& text, const std::string& what) {
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

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
    decoders.WriteCallsTo(plugin.TraceHandle());
    const std::wstring trace = Convert();
    EXPECT_EQ(ReadBytes(document), Expected(L"document.xml", run));
    EXPECT_EQ(Narrow(trace), Expected(L"trace.txt", run));
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST_F(ConversionTest, CallsTheDecoderLibrariesInOrder) {
    decoders.Add(L"a.dll").decodes = {L".other"};
    decoders.Add(L"b.dll", "DeleteATag").decodes = {L".OUT"};
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
    const std::wstring ofConverted = L" from file '" + converted + L"'\r\n";
    const std::wstring ofSource = L" from file '" + source + L"'\r\n";
    const struct {
        const char* label;
        std::function<void()> arrange;
        std::wstring errors;
        bool readsInfo, readsTags;
        size_t finished = 3;
        std::wstring tagSize = {};
    } rows[] = {
        {"all is well", [] {}, L"", true, true, 3, std::to_wstring(library.idTags.size())},
        {"no list at all", [this] { library.listsAreNull = true, library.idTags = {}; }, L"", true, false, 3,
         L"0"},
        {"negative list sizes", [this] { library.sizeInstead = -5; }, L"", true, false, 3, L"-5"},
        {"second instance fails", [this] { library.failingCreate = 2; }, L"", false, true},
        {"Open fails", [this] { library.opens = false; },
         L"Failed to read audio info" + ofConverted + L"Failed to read audio properties" + ofConverted +
             L"Failed to read ID tags" + ofSource,
         false, false},
        {"extension list without text", [this] { library.decodes = {}, library.textMissing = true; },
         L"Failed to find decoder to read audio properties" + ofConverted +
             L"Failed to find decoder to read audio properties" + ofConverted +
             L"Failed to find decoder to read ID tags" + ofSource,
         false, false, 0},
    };
    const FixtureBehaviour good = library;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        library = good;
        row.arrange();
        const std::wstring trace = Convert();
        const std::string written = ReadBytes(document);
        EXPECT_EQ(plugin.Errors(), row.errors);
        EXPECT_EQ(Count(written, "<FileBitrate>705<"), row.readsInfo ? 1u : 0u);
        EXPECT_EQ(Count(written, "<FileBitrate>0<"), row.readsInfo ? 0u : 1u);
        EXPECT_EQ(Count(written, "<Title "), row.readsTags ? 1u : 0u);
        EXPECT_EQ(Count(Narrow(trace), "Finished reading "), row.finished);
        if (!row.tagSize.empty()) {
            EXPECT_EQ(Count(Narrow(trace), "Pass.IDTagByteSize: " + Narrow(row.tagSize) + " "), 1u);
        }
    }
}

TEST_F(ConversionTest, ALibraryNeedsAllNineExports) {
    DeleteFileW(Decoders::PathOf(L"lib.dll").c_str());
    for (const char* name :
         {"Create", "Destroy", "Get", "Set", "Open", "Close", "DecodeBlock", "SetPosition", "DeleteATag"}) {
        decoders.Add(L"a.dll", name).decodes = {L".OUT"};
        Convert();
        EXPECT_EQ(decoders.Calls().size(), 6u) << name << ": loaded and freed, three times";
    }
}

TEST_F(ConversionTest, EarlyEndsLeaveTheTraceOneLevelDeeper) {
    DeleteFileW(source.c_str());
    DeleteFileW(converted.c_str());
    const std::vector<std::wstring> lines = Lines(Convert());
    const std::wstring missing = L", file does not exist '";
    std::wstring errors = L"Error reading audio info" + missing + converted + L"'\r\n" +
                          L"Error reading audio properties" + missing + converted + L"'\r\n" +
                          L"Error reading ID tags" + missing + source + L"'\r\n";
    for (const std::wstring& file : {source, source, source, converted, converted, converted}) {
        errors += L"Error reading file date time" + missing + file + L"'\r\n";
    }
    EXPECT_EQ(plugin.Errors(), errors);
    ASSERT_EQ(lines.size(), 27u);
    // Nine early ends: the last leave lines are nine levels further in than their enter lines at 1 and at 0.
    EXPECT_EQ(lines[25], std::wstring(20, L' ') + L"<-<-  [clDSP_WriteMetadataFile::WriteXMLFile]");
    EXPECT_EQ(lines[26], std::wstring(18, L' ') + L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]");
    EXPECT_EQ(Count(ReadBytes(document), "\t\t<FileCreated></FileCreated>\r\n"), 2u);
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
        EXPECT_EQ(Count(written, line), 1u) << line;
    }
    EXPECT_EQ(plugin.Errors(), L"");
    source = L"-x.tst"; // any other name is a file's
    Convert();
    EXPECT_EQ(Count(ReadBytes(document), "<FileName>-x.tst</FileName>"), 1u);
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
    EXPECT_EQ(Count(ReadBytes(document), "\t\t<FileModified>1601-01-01T00:00:00</FileModified>\r\n"), 1u);
    // A file that others write to is open to the plug-in as well.
    const OwnedFile shared(CreateFileW(converted.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(shared.IsValid());
    Convert();
    EXPECT_EQ(Count(ReadBytes(document), "\t\t<FileModified>1999-12-31T23:59:59</FileModified>\r\n"), 1u);
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
    RegDeleteKeyW(HKEY_CURRENT_USER, Decoders::kCacheKey);
    Convert();
    EXPECT_EQ(Decoders::Cached(L".OUT"), L"none") << "reading creates the key";
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
