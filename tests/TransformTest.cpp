#include "tests/ConversionFixture.h"
#include "tests/StandInXml.h"

#include <psapi.h>

#include <algorithm>
#include <array>

namespace {

constexpr const wchar_t* kScope = L"  [clDSP_WriteMetadataFile::WriteXMLFile]\r\n";
constexpr const wchar_t* kLoadedXml = L"XML content loaded successfully";
constexpr const wchar_t* kLoadedSheet = L"XSL file loaded successfully";

std::string Sheet(const std::string& output, const std::string& body) {
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
           "<xsl:output " +
           output + "/><xsl:template match='/'>" + body + "</xsl:template></xsl:stylesheet>";
}

class TransformTest : public ConversionTest {
protected:
    TransformTest() {
        WriteTestFile(document, "kept");
        WriteTestFile(sheet, Sheet("method='text' encoding='UTF-8'", "<xsl:value-of select='//Title'/>"));
    }

    /// Runs a conversion with the style sheet and gives the error lines, the scope cut off each.
    std::vector<std::wstring> Transform() {
        const std::wstring trace = Convert(L"-xsltfile=\"" + sheet + L"\"");
        std::vector<std::wstring> errors;
        const std::wstring all = plugin.Errors();
        size_t begin = 0;
        for (size_t end = all.find(kScope); end != std::wstring::npos; end = all.find(kScope, begin)) {
            errors.push_back(all.substr(begin, end - begin));
            begin = end + std::wstring(kScope).size();
        }
        EXPECT_EQ(begin, all.size()) << all;
        EXPECT_EQ(trace.find(std::wstring(L"<-<-") + kScope) == std::wstring::npos, !errors.empty())
            << "a transformation that failed is not left";
        return errors;
    }

    std::wstring sheet = folder + L"style sheet.xsl";
};

using Texts = std::vector<std::wstring>;

TEST_F(TransformTest, WritesWhatTheParserMadeOfTheDocument) {
    EXPECT_EQ(Transform(), Texts());
    EXPECT_TRUE(ReadBytes(document).starts_with("Caf\xC3\xA9 & more"));

    // In another encoding the bytes are the parser's own: byte-order mark, then UTF-16.
    WriteTestFile(sheet, Sheet("method='xml' encoding='UTF-16' omit-xml-declaration='yes'",
                               "<t><xsl:value-of select='//Title'/></t>"));
    EXPECT_EQ(Transform(), Texts());
    const std::string bytes = ReadBytes(document);
    const std::wstring expected = L"\xFEFF<t>Caf\x00E9 &amp; more</t>";
    EXPECT_EQ(bytes.substr(0, expected.size() * 2),
              std::string(reinterpret_cast<const char*>(expected.data()), expected.size() * 2));

    // Later settings without a style sheet keep the one of before.
    plugin.Trace();
    EXPECT_NE(Convert().find(kLoadedSheet), std::wstring::npos);
}

TEST_F(TransformTest, TracesEachStep) {
    const std::wstring trace = Convert(L"-xsltfile=\"" + sheet + L"\"");
    EXPECT_TRUE(trace.ends_with(std::wstring(L"    ") + kLoadedXml + kScope + L"    " + kLoadedSheet +
                                kScope + L"  <-<-" + kScope +
                                L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"))
        << trace;
}

TEST_F(TransformTest, MissingStyleSheetGivesAnEmptyFile) {
    DeleteFileW(sheet.c_str());
    EXPECT_EQ(Transform(), Texts());
    EXPECT_EQ(ReadBytes(document), "");
}

TEST_F(TransformTest, FailuresLeaveTheOutputFileAlone) {
    const std::vector<uint8_t> odd = TagBlob().Add(L"1st", L"x").Bytes();
    const std::vector<uint8_t> control = TagBlob().Add(L"a", L"\x0001").Bytes();
    const struct {
        const char* label;
        std::string sheet;
        const std::vector<uint8_t>* tags;
        const wchar_t* error;
    } rows[] = {
        {"style sheet that is no XML", "<xsl:stylesheet", nullptr, L"Loading XSL failed"},
        {"style sheet with an unknown instruction", Sheet("method='text'", "<xsl:value-of select='(('/>"),
         nullptr, nullptr},
        {"style sheet that ends itself",
         Sheet("method='text'", "<xsl:message terminate='yes'>no</xsl:message>"), nullptr, nullptr},
        {"name that begins with a digit", "", &odd, L"Loading intermediate XML failed"},
        {"control character", "", &control, L"Loading intermediate XML failed"},
    };
    const std::vector<uint8_t> good = tags;
    for (const auto& row : rows) {
        if (!row.sheet.empty()) {
            WriteTestFile(sheet, row.sheet);
        }
        tags = row.tags != nullptr ? *row.tags : good;
        WriteTestFile(document, "kept");
        const Texts errors = Transform();
        if (row.error != nullptr) {
            ASSERT_EQ(errors.size(), 2u) << row.label;
            EXPECT_EQ(errors[0], row.error) << row.label;
            EXPECT_EQ(ReadBytes(document), "kept") << row.label;
        } else { // Wine's parser makes an empty output of these where others fail
            EXPECT_EQ(ReadBytes(document), errors.empty() ? "" : "kept") << row.label;
        }
    }
}

TEST_F(TransformTest, CallsTheParserInOrder) {
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    {
        const StandInXml xml;
        EXPECT_EQ(Transform(), Texts());
    }
    CoUninitialize();
    const Texts expected = {
        L"create xml",
        L"run xml",
        L"query xml",
        L"create sheet",
        L"run sheet",
        L"query sheet",
        L"create template",
        L"run template",
        L"query template",
        L"xml.loadXML <?xml version=\"1.0\" encoding=\"UTF-8\"?><AudioMetadata>\t<SourceFile>\t\t<F",
        L"sheet.load " + sheet,
        L"template.putref_stylesheet sheet",
        L"template.createProcessor",
        L"processor.put_output unknown",
        L"processor.put_input xml",
        L"processor.transform",
        L"release processor",
        L"release template",
        L"release sheet",
        L"release xml",
    };
    EXPECT_EQ(StandInXml::calls, expected);
    EXPECT_TRUE(ReadBytes(document).starts_with(StandInXml::kOutput));
}

TEST_F(TransformTest, EveryFailureIsReportedByItsGuard) {
    const std::wstring loadXml = L"Error loading intermediate XML: ",
                       loadSheet = L"Error loading XSLT file: ", apply = L"Error applying XSL style sheet: ",
                       other = L"Unexpected MS XML error: ";
    const struct {
        XmlFault fault;
        Texts errors;
    } rows[] = {
        {{L"create xml", E_FAIL, L"told"}, {other}},
        {{L"create sheet", E_FAIL}, {other}},
        {{L"create template", REGDB_E_CLASSNOTREG}, {other}},
        {{L"create xml", E_NOINTERFACE}, {loadXml}},
        {{L"create sheet", E_NOINTERFACE}, {loadSheet}},
        {{L"create template", E_NOINTERFACE}, {apply}},
        {{L"query xml", E_NOINTERFACE}, {loadXml}},
        {{L"query template", E_OUTOFMEMORY}, {other}},
        {{L"xml.loadXML", E_FAIL, L"told"}, {loadXml + L"told"}},
        {{L"xml.loadXML", E_FAIL, L"told", false}, {loadXml}},
        {{L"xml.loadXML", E_FAIL}, {loadXml}},
        {{L"xml.loadXML", S_FALSE, nullptr, true, true},
         {L"Loading intermediate XML failed", L"xml's parse error"}},
        {{L"sheet.load", E_FAIL, L"told"}, {loadSheet + L"told"}},
        {{L"sheet.load", S_FALSE, nullptr, true, true}, {L"Loading XSL failed", L"xml's parse error"}},
        {{L"template.putref_stylesheet", E_FAIL, L"told"}, {}},
        {{L"template.createProcessor", E_FAIL, L"told"}, {apply + L"told"}},
        {{L"template.createProcessor", S_OK, nullptr, true, true}, {other}},
        {{L"processor.put_output", E_FAIL}, {}},
        {{L"processor.put_input", E_FAIL}, {}},
        {{L"processor.transform", E_FAIL, L"told"}, {other + L"told"}},
    };
    for (const auto& row : rows) {
        WriteTestFile(document, "kept");
        ASSERT_EQ(CoInitialize(nullptr), S_OK) << "COM was left one time too many or too few";
        {
            const StandInXml xml(row.fault);
            EXPECT_EQ(Transform(), row.errors) << row.fault.step;
        }
        CoUninitialize();
        EXPECT_EQ(ReadBytes(document) == "kept", !row.errors.empty()) << row.fault.step;
        // Whatever was made is gone again.
        const auto count = [](const std::wstring& what) {
            return std::count(StandInXml::calls.begin(), StandInXml::calls.end(), what);
        };
        for (const wchar_t* name : {L"xml", L"sheet", L"template"}) {
            const bool failed = std::wstring(L"create ") + name == row.fault.step;
            EXPECT_EQ(count(std::wstring(L"release ") + name),
                      failed ? 0 : count(std::wstring(L"create ") + name))
                << row.fault.step << ", " << name;
        }
    }
}

TEST_F(TransformTest, LeavesTheThreadsOtherApartmentAsBefore) {
    // On a thread of a multi-threaded apartment COM cannot be entered anew, and is left all the same.
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    EXPECT_EQ(Transform(), Texts());
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_OK) << "one of the two was undone by the transformation";
    CoUninitialize();
}

TEST_F(TransformTest, ManyTransformationsLeaveNothingBehind) {
    // Without decoder libraries: loading and freeing one costs memory on some systems.
    DeleteFileW(Decoders::PathOf(L"lib.dll").c_str());
    source = L"-";
    const auto use = [this](int rounds) {
        for (int i = 0; i < rounds; ++i) {
            plugin.Convert(L"-xsltfile=\"" + sheet + L"\"", Info());
        }
        const OwnedHandle fresh(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        PROCESS_MEMORY_COUNTERS memory = {};
        GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        return std::array<size_t, 3>{reinterpret_cast<size_t>(fresh.Get()), handles, memory.PagefileUsage};
    };
    const auto before = use(20);
    const auto after = use(180);
    EXPECT_EQ(after[0], before[0]) << "the next free handle";
    EXPECT_EQ(after[1], before[1]) << "open handles";
    EXPECT_LT(after[2], before[2] + (256u << 10)) << "memory in bytes";
    for (size_t i = 0; i < after.size(); ++i) {
        RecordProperty("after20and200_" + std::to_string(i),
                       std::to_string(before[i]) + " " + std::to_string(after[i]));
    }
}

} // namespace
