#include "tests/shared/ConversionFixture.h"

#include <objbase.h>

namespace {

constexpr const wchar_t* kScope = L"  [clDSP_WriteMetadataFile::WriteXMLFile]\r\n";

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

    /// Runs a conversion with the style sheet and returns the error lines.
    std::wstring Transform() {
        const std::wstring trace = Convert(L"-xsltfile=\"" + sheet + L"\"");
        const std::wstring errors = plugin.Errors();
        EXPECT_EQ(trace.find(std::wstring(L"<-<-") + kScope) == std::wstring::npos, !errors.empty())
            << "a failed transformation has no leaving line";
        return errors;
    }

    std::wstring sheet = folder + L"style sheet.xsl";
};

TEST_F(TransformTest, WritesWhatTheParserMadeOfTheDocument) {
    WriteTestFile(document, std::string(100'000, '?'));
    EXPECT_EQ(Transform(), L"");
    EXPECT_TRUE(ReadBytes(document).starts_with("Caf\xC3\xA9 & more"));
    EXPECT_LT(ReadBytes(document).size(), 100'000u) << "nothing is left of the old file";

    // In another encoding the bytes are the parser's own: byte-order mark, then UTF-16.
    WriteTestFile(sheet, Sheet("method='xml' encoding='UTF-16' omit-xml-declaration='yes'",
                               "<t><xsl:value-of select='//Title'/></t>"));
    EXPECT_EQ(Transform(), L"");
    const std::string bytes = ReadBytes(document);
    const std::wstring expected = L"\xFEFF<t>Caf\x00E9 &amp; more</t>";
    EXPECT_EQ(bytes.substr(0, expected.size() * 2),
              std::string(reinterpret_cast<const char*>(expected.data()), expected.size() * 2));

    // Later settings without a style sheet keep the earlier one.
    const std::wstring trace = Convert();
    EXPECT_TRUE(trace.ends_with(std::wstring(L"    XML content loaded successfully") + kScope +
                                L"    XSL file loaded successfully" + kScope + L"  <-<-" + kScope +
                                L"<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"))
        << trace;
}

TEST_F(TransformTest, LeavesTheThreadsOtherApartmentAsBefore) {
    // On a thread of a multi-threaded apartment COM cannot be entered anew, and is left all the same.
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    // Windows puts the document into an apartment of its own; what the parser makes of that is not said.
    const std::wstring errors = Transform();
    EXPECT_TRUE(errors.empty() || !RunsUnderWine()) << errors;
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_OK) << "one of the two was undone by the transformation";
    CoUninitialize();
}

} // namespace
