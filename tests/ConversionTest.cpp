#include "tests/shared/ConversionFixture.h"
#include "tests/shared/PlainDocument.h"

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
    std::string text = ReadBytes(std::wstring(L"data\\") + file);
    const auto replace = [&text](const std::string& what, const std::string& with) {
        for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
            text.replace(at, what.size(), with);
        }
    };
    replace("\n", "\r\n");
    for (const auto& [name, value] : run) {
        replace("@" + name + "@", value);
    }
    return text;
}

/// Whether the user's locale, which decides on the document's dates, counts the years as the tests do.
bool HasOurCalendar() {
    const SYSTEMTIME date = {2024, 3, 4, 7, 13, 5, 9, 0};
    wchar_t text[20] = {};
    GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, L"yyyy-MM-dd", text, 20);
    return std::wcscmp(text, L"2024-03-07") == 0;
}

TEST_F(ConversionTest, WritesTheWholeDocumentAndTrace) {
    if (!HasOurCalendar()) {
        GTEST_SKIP() << "the user's locale has another calendar";
    }
    // Wine keeps no time of creation and reports that of the last change.
    const bool hasCreation = !RunsUnderWine();
    std::map<std::string, std::string> run = {
        {"FOLDER", PlainUtf8(Escaped(folder))},
        {"SOURCE CREATED", hasCreation ? "2024-03-07T12:05:08" : "2024-03-07T13:05:08"},
        {"CONVERTED CREATED", hasCreation ? "1999-12-31T22:59:58" : "1999-12-31T23:59:58"},
        {"TAG BYTES", std::to_string(library.idTags.size())}};
    decoders.onCall = [this](const std::wstring& call) {
        const std::wstring line = call + L"\r\n";
        DWORD written = 0;
        WriteFile(plugin.TraceHandle(), line.data(), static_cast<DWORD>(line.size() * 2), &written, nullptr);
    };
    const std::wstring trace = Convert();
    EXPECT_EQ(ReadBytes(document), Expected(L"document.xml", run));
    run["FOLDER"] = PlainUtf8(folder);
    EXPECT_EQ(PlainUtf8(trace), Expected(L"trace.txt", run));
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST_F(ConversionTest, CallsTheDecoderLibrariesInOrder) {
    if (!Decoders::AreListedByName()) {
        GTEST_SKIP() << Decoders::kUnsorted;
    }
    decoders.Add(L"a.dll").decodes = {L".OUTer", L".ts"};
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

TEST_F(ConversionTest, RunsWithoutTheSystemsErrorBoxes) {
    const DWORD before = GetThreadErrorMode();
    DWORD during = 0;
    decoders.onCall = [&during](const std::wstring&) { during = GetThreadErrorMode(); };
    for (const DWORD mode : {DWORD{0}, DWORD{SEM_NOGPFAULTERRORBOX}, DWORD{SEM_FAILCRITICALERRORS}}) {
        SetThreadErrorMode(mode, nullptr);
        Convert();
        EXPECT_EQ(during, mode | SEM_FAILCRITICALERRORS);
        EXPECT_EQ(GetThreadErrorMode(), mode);
    }
    SetThreadErrorMode(before, nullptr);
}

TEST_F(ConversionTest, ReaderFailuresLeaveTheRestOfTheDocument) {
    const std::wstring of = L" from file '" + converted + L"'\r\n";
    const std::wstring ofSource = L" from file '" + source + L"'\r\n";
    const std::wstring gone = L", file does not exist '" + converted + L"'\r\n";
    const std::wstring goneSource = L", file does not exist '" + source + L"'\r\n";
    const std::wstring noTime = L"Error reading file date time" + gone;
    const std::wstring noSourceTime = L"Error reading file date time" + goneSource;
    const struct {
        const char* label;
        std::function<void()> arrange;
        std::wstring errors;
        bool readsInfo, readsTags;
        size_t earlyEnds = 0; // each leaves the trace one level deeper
        const char* traced = "";
    } rows[] = {
        {"no list at all", [this] { library.listsAreNull = true, library.idTags = {}; }, L"", true, false, 0,
         "Pass.IDTagByteSize: 0 "},
        {"negative list sizes", [this] { library.sizeInstead = -5; }, L"", true, false, 0,
         "Pass.IDTagByteSize: -5 "},
        {"second instance fails", [this] { library.failingCreate = 2; }, L"", false, true},
        {"Open fails", [this] { library.opens = false; },
         L"Failed to read audio info" + of + L"Failed to read audio properties" + of +
             L"Failed to read ID tags" + ofSource,
         false, false},
        {"extension list without text", [this] { library.decodes = {}, library.textMissing = true; },
         L"Failed to find decoder to read audio properties" + of +
             L"Failed to find decoder to read audio properties" + of +
             L"Failed to find decoder to read ID tags" + ofSource,
         false, false, 3},
        {"no files", [this] { DeleteFileW(source.c_str()), DeleteFileW(converted.c_str()); },
         L"Error reading audio info" + gone + L"Error reading audio properties" + gone +
             L"Error reading ID tags" + goneSource + noSourceTime + noSourceTime + noSourceTime + noTime +
             noTime + noTime,
         false, false, 9},
    };
    const FixtureBehaviour good = library;
    std::wstring indent;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        library = good;
        row.arrange();
        const std::wstring trace = Convert();
        const std::string written = ReadBytes(document);
        EXPECT_EQ(plugin.Errors(), row.errors);
        EXPECT_EQ(Count(written, row.readsInfo ? "<FileBitrate>705<" : "<FileBitrate>0<"), 1u);
        EXPECT_EQ(Count(written, "<Title "), row.readsTags ? 1u : 0u);
        EXPECT_EQ(Count(written, "></FileCreated>"), row.earlyEnds == 9 ? 2u : 0u);
        EXPECT_EQ(Count(Narrow(trace), "Finished reading "), row.earlyEnds == 0 ? 3u : 0u);
        EXPECT_NE(Narrow(trace).find(row.traced), std::string::npos);
        indent.append(2 * row.earlyEnds, L' ');
        EXPECT_TRUE(
            trace.ends_with(L"\r\n" + indent + L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"));
    }
}

TEST_F(ConversionTest, WhatTheHostDoesNotGiveIsLeftOut) {
    constexpr const char* kNoName = "<FileName></FileName>";
    constexpr const char* kNoTags = "<IDTags>\r\n\t\t</IDTags>";
    constexpr const char* kNoProperties = "<AudioProperties>\r\n\t\t</AudioProperties>";
    const struct {
        const char* label;
        std::function<void(AfterConversionInfo&)> arrange;
        const char *lost, *instead;
    } rows[] = {
        {"info", [](auto& info) { info.sourceAudioInfo = nullptr; }, "<FileBitrate>-7<", "<FileBitrate>0<"},
        {"tags", [](auto& info) { info.destIDTags = nullptr; }, ">C</Artist>", kNoTags},
        {"2 GiB of tags", [](auto& info) { info.destIDTagsSize |= 0x80000000; }, ">C</Artist>", kNoTags},
        {"properties", [](auto& info) { info.sourceAudioProperties = nullptr; }, "8000</SampleRate>",
         kNoProperties},
        {"2 GiB of properties", [](auto& info) { info.sourceAudioPropertiesSize |= 0x80000000; },
         "8000</SampleRate>", kNoProperties},
        {"a file", [](auto& info) { info.sourceFileName = L"-"; }, "<Title ", kNoName},
        {"source name", [](auto& info) { info.sourceFileName = nullptr; }, "in &amp; out.tst<", kNoName},
        {"converted name", [](auto& info) { info.destFileName = nullptr; }, "<FileName>out.c.OUT<", kNoName},
    };
    const std::wstring settings = L"-filename=\"" + document + L"\"";
    Convert(settings);
    const std::string whole = ReadBytes(document);
    for (const auto& row : rows) {
        AfterConversionInfo info = Info();
        row.arrange(info);
        plugin.Convert(settings, info);
        const std::string written = ReadBytes(document);
        EXPECT_TRUE(Count(whole, row.lost) == 1 && Count(whole, row.instead) == 0) << row.label;
        EXPECT_TRUE(Count(written, row.lost) == 0 && Count(written, row.instead) == 1) << row.label;
        EXPECT_TRUE(written.ends_with("</AudioMetadata>\r\n")) << row.label;
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

TEST_F(ConversionTest, SettingsDecideTheOutputPath) {
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"", L"out.c.xml"},
        {L"-ext=\"\"", L"out.c.xml"},
        {L"-ext=txt", L"out.ctxt"},
        {L"", L"out.ctxt"}, // the earlier extension stays
        {L"-ext=\".nfo\" -ext=.second", L"out.c.nfo"},
        {L"-filename=\"" + folder + L"named file.html\"", L"named file.html"},
        {L"", L"out.c.nfo"}, // the name does not
    };
    for (const auto& [settings, name] : rows) {
        const std::wstring output = folder + name;
        WriteTestFile(output, std::string(100000, '?')); // longer than the document
        EXPECT_NE(Convert(settings).find(L"    " + output + L"  [clDSP"), std::wstring::npos) << settings;
        const std::string written = ReadBytes(output);
        EXPECT_TRUE(written.starts_with("<?xml") && written.ends_with("</AudioMetadata>\r\n")) << settings;
        DeleteFileW(output.c_str());
    }
    // The converted file's own extension makes the document replace it.
    Convert(L"-ext=.OUT");
    EXPECT_TRUE(ReadBytes(converted).starts_with("<?xml"));
}

TEST_F(ConversionTest, RefusesTwoKindsOfConvertedFiles) {
    const std::wstring ripper =
        L"Write XML incompatible with option in Platterhawk 'Rip to ._ Files, rename Album at end'\r\n";
    const std::wstring encoder = L"Write XML is incompatible with this encoder.\r\n";
    const std::pair<const wchar_t*, std::wstring> rows[] = {{L"track._", ripper},
                                                            {L"track._x", L""},
                                                            {L"track.ignore", encoder},
                                                            {L"track.IgNoRe", encoder},
                                                            {L"track.ignored", L""}};
    std::wstring indent;
    for (const auto& [name, error] : rows) {
        SCOPED_TRACE(testing::Message() << name);
        converted = folder + name;
        WriteTestFile(converted, "");
        WriteTestFile(folder + L"track.xml", "kept");
        library.decodes = {L".tst", L"._x", L".ignored"};
        const std::wstring trace = Convert();
        EXPECT_EQ(plugin.Errors(), error);
        EXPECT_EQ(ReadBytes(folder + L"track.xml") == "kept", !error.empty());
        if (!error.empty()) {
            indent += L"  ";
            EXPECT_TRUE(trace.ends_with(L"WriteXMLFile]\r\n*** Error: " + error + indent +
                                        L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"));
        }
    }
}

TEST_F(ConversionTest, FilesThatCannotBeOpenedHaveTheZeroTime) {
    if (!HasOurCalendar()) {
        GTEST_SKIP() << "the user's locale has another calendar";
    }
    constexpr DWORD kReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const struct {
        const char* label;
        DWORD access, share;
        const char* time;
    } rows[] = {
        {"kept from all others", GENERIC_READ, 0, "1601-01-01T00:00:00"},
        {"being written", GENERIC_WRITE, kReadWrite, "1999-12-31T23:59:58"},
        {"being played", GENERIC_READ, FILE_SHARE_READ, "1999-12-31T23:59:58"},
    };
    for (const auto& row : rows) {
        const OwnedFile open(
            CreateFileW(converted.c_str(), row.access, row.share, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(open.IsValid());
        Convert();
        EXPECT_EQ(Count(ReadBytes(document), std::string("<FileModified>") + row.time), 1u) << row.label;
    }
}

TEST_F(ConversionTest, TheCacheDecidesBeforeTheFolder) {
    if (!Decoders::AreListedByName()) {
        GTEST_SKIP() << Decoders::kUnsorted;
    }
    // a.dll comes first in the folder and decodes the same as lib.dll.
    decoders.Add(L"a.dll").decodes = {L".out", L".TST", L"."};
    decoders.Add(L"z.dll").decodes = {L".zzz"};
    const std::wstring a = Decoders::PathOf(L"a.dll");
    const std::wstring lib = Decoders::PathOf(L"lib.dll");
    const struct {
        const char* label;
        std::wstring stored;
        DWORD type;
        std::wstring expected;
        DWORD bytesLess = 0;
    } rows[] = {
        {"missing library", L"X:\\old\\gone.dll", REG_SZ, a},
        {"only the name of a cached path counts", L"X:\\old\\lib.dll", REG_SZ, lib},
        {"expandable text, without terminator", L"lib.dll", REG_EXPAND_SZ, lib},
        {"without half of its last unit", L"X:\\" + std::wstring(60, L'x') + L"\\lib.dll", REG_SZ, lib, 1},
        {"one byte", L"l", REG_SZ, a, 1},
        {"no text", L"lib.dll", REG_BINARY, a},
        {"number", L"12", REG_DWORD, a},
        {"folder only", L"\\", REG_SZ, a},
        {"far too long", std::wstring(400'000, L'x'), REG_SZ, a},
        {"library of other files", L"z.dll", REG_SZ, a},
    };
    Convert(); // makes the key
    const std::wstring below = std::wstring(Decoders::kCacheKey) + L"\\below";
    EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, below.c_str(), nullptr, REG_SZ, L"", 2), ERROR_SUCCESS)
        << "a volatile key can have only volatile keys below it";
    RegDeleteKeyW(HKEY_CURRENT_USER, below.c_str());
    for (const auto& row : rows) {
        Decoders::Store(L".OUT", row.stored, row.type, row.bytesLess);
        // What is read behind the data is no zero then: the path's bytes take a block that was filled.
        std::vector<std::string>(5000, std::string(151, '\xAA')).clear();
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
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, Decoders::kCacheKey), ERROR_SUCCESS) << "reading creates it";
    converted = folder + L"bare"; // looked up as "."
    WriteTestFile(converted, "");
    decoders.Add(L"dot.dll").decodes = {L"."};
    Convert();
    EXPECT_EQ(Decoders::Cached(L"."), Decoders::PathOf(L"dot.dll"));
}

} // namespace
