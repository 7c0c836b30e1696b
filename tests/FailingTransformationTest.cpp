#include "tests/shared/FailingConversion.h"
#include "tests/shared/ParserStubs.h"

namespace {

class FailingTransformation : public FailingConversion {
protected:
    FailingTransformation() {
        CoInitialize(nullptr);
        WatchParser();
        // The description that the next failing call finds.
        ICreateErrorInfo* creation = nullptr;
        std::wstring description = L"described";
        CreateErrorInfo(&creation);
        creation->SetDescription(description.data());
        creation->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&errorInfo));
        settings = L"-xsltfile=\"" + sheet + L"\"";
        end = "[END]";
    }

    const std::wstring sheet = folder + L"sheet.xsl";
    const std::string reported = RunsUnderWine() ? "described" : ""; // which Windows' parser may replace
    const std::string loadXml = "kept; Error loading intermediate XML: ";
};

TEST_F(FailingTransformation, LeavesNothingBehind) {
    WriteTestFile(sheet,
                  "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                  "<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>"
                  "<xsl:for-each select='//FileCreated|//FileModified|//FileAccessed|//FileBitrate|//IDTags|"
                  "//AudioProperties'><xsl:value-of select='.'/></xsl:for-each>[END]"
                  "</xsl:template></xsl:stylesheet>");
    const std::string loadSheet = "kept; Error loading XSLT file: ";
    const std::string apply = "kept; Error applying XSL style sheet: ";
    const std::string other = "kept; Unexpected MS XML error: ";
    const std::string outOfMemory = "not done, kept; Out of memory";
    LetConversionsFail(
        {
            // No class can be made then. COM is left all the same.
            {"CoInitialize", E_OUTOFMEMORY, 0, {other + "; CoUninitialize: not taken"}},
            {"CoCreateInstance", REGDB_E_CLASSNOTREG, 0, {other}},
            {"CoCreateInstance", E_NOINTERFACE, 0, {loadXml, loadSheet, apply}},
            {"OleRun", E_FAIL, 0, {other}},
            {"OleRun", E_NOINTERFACE, 0, {loadXml, loadSheet, apply}},
            {"query document", E_OUTOFMEMORY, 0, {other}},
            {"query document", E_NOINTERFACE, 0, {loadXml, loadSheet}},
            {"query template", E_NOINTERFACE, 0, {apply}},
            {"SysAllocStringLen", 0, 0, {outOfMemory}},
            {"loadXML", E_FAIL, 0, {loadXml + reported}},
            {"loadXML", S_FALSE, 0, {"kept; Loading intermediate XML failed; "}},
            {"load", E_FAIL, 0, {loadSheet + reported}},
            {"load", S_FALSE, 0, {"kept; Loading XSL failed; "}},
            {"putref_stylesheet", E_FAIL, 0, RunsUnderWine() ? Results{other} : Results{apply, other}},
            {"createProcessor", E_FAIL, 0, {apply}},
            {"createProcessor", S_OK, 0, {other}}, // and gives none
            {"CreateStreamOnHGlobal", E_OUTOFMEMORY, 0, {other}},
            {"put_output", E_FAIL, 0, {"empty"}}, // not asked; without an input Wine's parser crashes
            {"transform", E_FAIL, 0, {other}},
            {"GetHGlobalFromStream", E_INVALIDARG, 0, {other}},
            {"GlobalSize", 0, ERROR_INVALID_HANDLE, {"empty"}}, // as of an empty result
            {"GlobalLock", 0, ERROR_DISCARDED, {other}},
        },
        "empty");
}

TEST_F(FailingTransformation, ReportsABrokenStyleSheetOnce) {
    WriteTestFile(sheet, "<");
    const Scenario convert = [this] { return Convert(); };
    EXPECT_EQ(Run(convert, {}, 0), "kept; Loading XSL failed; ");
    for (const auto& [method, known] :
         {std::pair{"parseError", reported}, std::pair{"reason", std::string()}}) {
        EXPECT_EQ(Run(convert, {method, E_FAIL, 0, {}}, 1),
                  "kept; Loading XSL failed; Error loading XSLT file: " + known);
    }
}

TEST_F(FailingTransformation, TakesNoDescriptionThatIsNotOfTheFailedCall) {
    WriteTestFile(sheet, "<");
    stubs["suppliesErrorInfo"].FailAt(1, S_FALSE, 0);
    EXPECT_EQ(Run([this] { return Convert(); }, {"loadXML", E_FAIL, 0, {}}, 1), loadXml);
    EXPECT_EQ(stubs["suppliesErrorInfo"].calls, 1u);
    EXPECT_NE(ReadUtf16(folder + L"calls.log").find(L"XML:   [clDSP_WriteMetadataFile::WriteXMLFile]\r\n"),
              std::wstring::npos);
}

TEST_F(FailingTransformation, MayRunOutOfMemoryOnceACallHasFailed) {
    WriteTestFile(sheet, "<");
    const auto fail = [](const CLSID&, IUnknown*, DWORD, const IID&, void**) {
        Account::Heap::size = Account::Heap::used;
        return REGDB_E_CLASSNOTREG;
    };
    void* const watched = std::exchange(stubs["CoCreateInstance"].target, reinterpret_cast<void*>(+fail));
    // One exception is handled while the other is thrown.
    EXPECT_EQ(Run([this] { return Convert(); }, {}, 0), "not done, kept; Out of memory");
    stubs["CoCreateInstance"].target = watched;
}

} // namespace
