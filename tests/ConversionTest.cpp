#include "tests/shared/CallStubs.h"
#include "tests/shared/ConversionFixture.h"
#include "tests/shared/PlainDocument.h"

#include <functional>
#include <set>
#include <sstream>

namespace {

/// A conversion compared with texts in tests/data, which have "@…@" where a run has its own folder.
class Conversion : public ConversionTest {
protected:
    void SetUp() override {
        const SYSTEMTIME date = {2024, 3, 4, 7, 13, 5, 9, 0};
        wchar_t text[20] = {};
        GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, L"yyyy-MM-dd", text, 20);
        if (text != std::wstring(L"2024-03-07")) {
            GTEST_SKIP() << "the user's locale, which decides on the document's dates, has another calendar";
        }
        // Wine keeps no time of creation and reports that of the last change, which is an hour later.
        static CallStubs stubs; // outlives the library, which calls through them
        stubs.AddImports(GetModuleHandleW(L"WriteMetadataFile.dll"));
        const auto getTimes = [](HANDLE file, FILETIME* created, FILETIME* accessed, FILETIME* modified) {
            const BOOL areRead = GetFileTime(file, created, accessed, modified);
            if (created != nullptr && RunsUnderWine()) {
                SYSTEMTIME time = {};
                FileTimeToSystemTime(created, &time);
                --time.wHour;
                SystemTimeToFileTime(&time, created);
            }
            return areRead;
        };
        const auto setValue = [](HKEY key, LPCWSTR name, DWORD zero, DWORD type, const BYTE* data,
                                 DWORD size) {
            EXPECT_EQ(reinterpret_cast<const wchar_t*>(data)[size / sizeof(wchar_t) - 1], 0) << "terminated";
            return RegSetValueExW(key, name, zero, type, data, size);
        };
        stubs["GetFileTime"].target = reinterpret_cast<void*>(+getTimes);
        stubs["RegSetValueExW"].target = reinterpret_cast<void*>(+setValue);
    }

    std::string Expected(const wchar_t* file) const {
        const std::pair<std::string, std::string> replacements[] = {
            {"\n", "\r\n"},
            {"@FOLDER@", Narrow(folder)},
            {"@ESCAPED FOLDER@", Narrow(Escaped(folder))},
            {"@TAG BYTES@", std::to_string(library.idTags.size())}};
        std::string text = ReadBytes(std::wstring(L"data\\") + file);
        for (const auto& [what, with] : replacements) {
            for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
                text.replace(at, what.size(), with);
            }
        }
        return text;
    }
};

TEST_F(Conversion, WritesTheWholeDocumentAndTrace) {
    constexpr DWORD kMode = SEM_NOGPFAULTERRORBOX;
    const DWORD before = GetThreadErrorMode();
    SetThreadErrorMode(kMode, nullptr);
    decoders.onCall = [this](const std::wstring& call) {
        EXPECT_EQ(GetThreadErrorMode(), kMode | SEM_FAILCRITICALERRORS) << "without the system's error boxes";
        const std::wstring line = call + L"\r\n";
        DWORD written = 0;
        WriteFile(plugin.TraceHandle(), line.data(), static_cast<DWORD>(line.size() * 2), &written, nullptr);
    };
    const std::wstring trace = Convert();
    EXPECT_EQ(GetThreadErrorMode(), kMode);
    SetThreadErrorMode(before, nullptr);
    EXPECT_EQ(ReadBytes(document), Expected(L"document.xml"));
    EXPECT_EQ(Narrow(trace), Expected(L"trace.txt"));
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST_F(Conversion, CallsTheDecoderLibrariesInOrder) {
    if (!Decoders::AreListedByName()) {
        GTEST_SKIP() << Decoders::kUnsorted;
    }
    decoders.Add(L"a.dll").decodes = {L".OUTer", L".ts"};
    for (const std::string missing :
         {"Close", "Create", "DecodeBlock", "DeleteATag", "Destroy", "Get", "Open", "Set", "SetPosition"}) {
        const std::wstring name = L"b" + std::wstring(missing.begin(), missing.end()) + L".dll";
        decoders.Add(name.c_str(), missing).decodes = {L".OUT"};
    }
    decoders.Add(L"c.dll").failingCreate = 1;
    // The first reading scans the folder, the second has its library from the cache, the third scans anew for
    // the source's extension.
    Convert();
    std::wstring calls;
    for (const std::wstring& call : decoders.Calls()) {
        calls += call + L"\r\n";
    }
    EXPECT_EQ(Narrow(calls), Expected(L"calls.txt"));
}

/// The lines of a text that the other does not have, with the sign ahead of each and without indentation.
std::string Alone(char sign, const std::string& text, const std::string& other) {
    std::istringstream lines(text);
    std::istringstream otherLines(other);
    std::multiset<std::string> others;
    std::string line;
    std::string alone;
    while (std::getline(otherLines >> std::ws, line)) {
        others.insert(line);
    }
    while (std::getline(lines >> std::ws, line)) {
        if (const auto same = others.find(line); same != others.end()) {
            others.erase(same);
        } else {
            alone += sign + line + '\n';
        }
    }
    return alone;
}

std::string Changes(const std::string& before, const std::string& after) {
    return Alone('-', before, after) + Alone('+', after, before);
}

TEST_F(Conversion, OtherConversionsDifferAsExpected) {
    OwnedFile open;
    const auto openWith = [&](DWORD access, DWORD share) {
        open.Reset(CreateFileW(converted.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(open.IsValid());
    };
    const auto convertTo = [&](AfterConversionInfo& info, const wchar_t* name) {
        converted = folder + name;
        WriteTestFile(converted, "");
        SetTimes(converted, {1999, 12, 5, 31, 21, 59, 58, 0});
        info.destFileName = converted.c_str();
    };
    constexpr DWORD kReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const std::wstring named = L"-FILENAME=\"" + folder + L"named file.html\"";
    const struct {
        const char* label;
        std::function<void(AfterConversionInfo& info)> arrange;
        std::wstring settings = L"";
        const wchar_t* output = L"out.c.xml";
    } rows[] = {
        {"null lists with sizes",
         [&](auto&) { library.idTags = library.properties = {}, library.sizeInstead = 100; }},
        {"list sizes below 0", [&](auto&) { library.sizeInstead = -5; }},
        {"second instance of the decoder fails", [&](auto&) { library.failingCreate = 2; }},
        {"decoder opens nothing", [&](auto&) { library.opens = false; }},
        {"extension without text", [&](auto&) { library.decodes = {}, library.textMissing = true; }},
        {"no info", [](auto& info) { info.sourceAudioInfo = nullptr; }},
        {"no tags", [](auto& info) { info.destIDTags = nullptr; }},
        {"2 GiB of tags", [](auto& info) { info.destIDTagsSize |= 0x80000000; }},
        {"no properties", [](auto& info) { info.sourceAudioProperties = nullptr; }},
        {"2 GiB of properties", [](auto& info) { info.sourceAudioPropertiesSize |= 0x80000000; }},
        {"no source file", [](auto& info) { info.sourceFileName = L"-"; }},
        {"no source name", [](auto& info) { info.sourceFileName = nullptr; }},
        {"no converted name", [](auto& info) { info.destFileName = nullptr; },
         L"-filename=\"" + document + L"\""},
        {"converted file kept from all others", [&](auto&) { openWith(GENERIC_READ, 0); }},
        {"converted file being written", [&](auto&) { openWith(GENERIC_WRITE, kReadWrite); }},
        {"converted file being played", [&](auto&) { openWith(GENERIC_READ, FILE_SHARE_READ); }},
        {"empty extension", [](auto&) {}, L"-ext=\"\""},
        {"extension without dot", [](auto&) {}, L"-ext=txt", L"out.ctxt"},
        {"earlier extension", [](auto&) {}, L"", L"out.ctxt"},
        {"first of two extensions", [](auto&) {}, L"-ext=\".xml\" -ext=.second"},
        {"name", [](auto&) {}, named, L"named file.html"},
        {"no earlier name", [](auto&) {}},
        {"extension ._", [&](auto& info) { convertTo(info, L"out.c._"); }},
        {"extension ._x", [&](auto& info) { convertTo(info, L"out.c._x"); }},
        {"extension .IgNoRe", [&](auto& info) { convertTo(info, L"out.c.IgNoRe"); }},
        {"extension .ignored", [&](auto& info) { convertTo(info, L"out.c.ignored"); }},
        {"extension of the converted file", [&](auto& info) { convertTo(info, L"out.c.ignored"); },
         L"-ext=.ignored", L"out.c.ignored"},
        {"no files", [&](auto&) { DeleteFileW(source.c_str()), DeleteFileW(converted.c_str()); },
         L"-ext=.xml"},
    };
    library.decodes = {L".tst", L".OUT", L"._x", L".ignored"};
    const FixtureBehaviour good = library;
    const std::string wholeTrace = Narrow(Convert());
    const std::string whole = ReadBytes(document);
    const std::string old(100'000, '?'); // longer than the document
    std::string outcome;
    for (const auto& row : rows) {
        library = good;
        WriteTestFile(folder + row.output, old);
        AfterConversionInfo info = Info();
        row.arrange(info);
        plugin.Convert(row.settings, info);
        open.Reset();
        const std::string trace = Narrow(plugin.Trace());
        const std::string bytes = ReadBytes(folder + row.output);
        outcome += "\r\n== " + std::string(row.label) + "\r\n" + Narrow(plugin.Errors()) +
                   Changes(wholeTrace, trace) + trace.substr(trace.rfind('\n', trace.size() - 2) + 1) +
                   (bytes == old ? "file kept\r\n" : Changes(whole, bytes));
    }
    EXPECT_EQ(outcome, Expected(L"conversions.txt"));
}

TEST_F(ConversionTest, TheStyleSheetStaysForLaterConversions) {
    const std::wstring sheet = folder + L"style sheet.xsl";
    const std::wstring scope = L"  [clDSP_WriteMetadataFile::WriteXMLFile]\r\n";
    const std::wstring end = L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n";
    WriteTestFile(sheet, "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                         "<xsl:output method='xml' encoding='UTF-16' omit-xml-declaration='yes'/>"
                         "<xsl:template match='/'><t><xsl:value-of select='//Title'/></t></xsl:template>"
                         "</xsl:stylesheet>");
    const std::wstring expected = L"\xFEFF<t>Caf\x00E9 &amp; more</t>"; // the parser's own bytes
    for (const std::wstring& settings : {L"-xsltfile=\"" + sheet + L"\"", std::wstring()}) {
        WriteTestFile(document, std::string(100'000, '?'));
        const std::wstring trace = Convert(settings);
        EXPECT_TRUE(trace.ends_with(L"    XML content loaded successfully" + scope +
                                    L"    XSL file loaded successfully" + scope + L"  <-<-" + scope + end))
            << trace;
        const std::wstring units = ReadUtf16(document);
        EXPECT_EQ(units.substr(0, expected.size()), expected);
        EXPECT_LT(units.size(), 50'000u) << "nothing is left of the old file";
    }
    WriteTestFile(sheet, "<");
    EXPECT_TRUE(
        Convert().ends_with(L"*** Error: Loading XSL failed" + scope + L"*** Error: " + scope + L"  " + end))
        << "without a leaving line";
    tags = TagBlob().Add(L"1st", L"x").Bytes();
    const std::wstring trace = Convert();
    const std::wstring failed = L"*** Error: Loading intermediate XML failed" + scope + L"*** Error: ";
    EXPECT_NE(trace.find(failed), std::wstring::npos) << trace;
    EXPECT_EQ(trace.find(failed + scope), std::wstring::npos) << "without the parser's reason";
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
        {"expandable text, without terminator", L"lib.dllx", REG_EXPAND_SZ, lib, 2}, // no zero follows
        {"without half of its last unit", L"X:\\" + std::wstring(60, L'x') + L"\\lib.dll", REG_SZ, lib, 1},
        {"one byte", L"l", REG_SZ, a, 1},
        {"no text", L"lib.dll", REG_BINARY, a},
        {"number", L"12", REG_DWORD, a},
        {"folder only", L"\\", REG_SZ, a},
        {"far too long", std::wstring(400'000, L'x'), REG_SZ, a},
        {"library of other files", L"z.dll", REG_SZ, a},
    };
    Convert(); // makes the key
    for (const auto& row : rows) {
        const size_t size = row.stored.size() * sizeof(wchar_t) - row.bytesLess;
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, Decoders::kCacheKey, L".OUT", row.type,
                                  row.stored.data(), static_cast<DWORD>(size)),
                  ERROR_SUCCESS);
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
    converted = folder + L"bare"; // looked up as "."
    WriteTestFile(converted, "");
    decoders.Add(L"dot.dll").decodes = {L"."};
    Convert();
    EXPECT_EQ(Decoders::Cached(L"."), Decoders::PathOf(L"dot.dll"));
}

} // namespace
