#include "tests/ConversionFixture.h"

#include <objbase.h>

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

TEST_F(TransformTest, LeavesTheThreadsOtherApartmentAsBefore) {
    // On a thread of a multi-threaded apartment COM cannot be entered anew, and is left all the same.
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    EXPECT_EQ(Transform(), Texts());
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_OK) << "one of the two was undone by the transformation";
    CoUninitialize();
}

} // namespace
