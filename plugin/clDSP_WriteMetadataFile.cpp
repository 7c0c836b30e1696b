#include "plugin/clDSP_WriteMetadataFile.h"

#include "metadata/WriteXMLFile.h"
#include "plugin/ParseOptions.h"
#include "support/ThreadErrorModeScope.h"

namespace {

constexpr const wchar_t* kShowConfigBit = L"clDSP_WriteMetadataFile::ShowConfigBit";
constexpr const wchar_t* kRemoveConfigBit = L"clDSP_WriteMetadataFile::RemoveConfigBit";
constexpr const wchar_t* kBeginConversion = L"clDSP_WriteMetadataFile::BeginConversion";
constexpr const wchar_t* kEndConversion = L"clDSP_WriteMetadataFile::EndConversion";
constexpr const wchar_t* kAfterConversion = L"clDSP_WriteMetadataFile::AfterConversion";

/// An absent or empty option leaves the field as it is.
void TakeOption(XString& field, const OptionLists& options, const wchar_t* name) {
    if (const wchar_t* value = FindOption(options, name); *value != 0) {
        field.Assign(value);
    }
}

const wchar_t* OrEmpty(const wchar_t* text) noexcept {
    return text != nullptr ? text : L"";
}

} // namespace

HWND clDSP_WriteMetadataFile::ShowConfigBit(HWND parent, int32_t x, int32_t y, const wchar_t* settings) {
    Log(kEnter, m_record, kShowConfigBit);
    const HWND panel = m_settingsDialog.Show(parent, x, y, settings);
    Log(kLeave, m_record, kShowConfigBit);
    return panel;
}

const wchar_t* clDSP_WriteMetadataFile::RemoveConfigBit(int64_t mode) {
    const bool isQuery = mode == kQueryMode;
    if (!isQuery) {
        Log(kEnter, m_record, kRemoveConfigBit);
    }
    m_configString = m_settingsDialog.ReadSettings();
    if (!isQuery) {
        m_settingsDialog.Destroy();
        Log(kLeave, m_record, kRemoveConfigBit);
    }
    return m_configString.Text();
}

void clDSP_WriteMetadataFile::BeginConversion(const wchar_t* settings) {
    Log(kEnter, m_record, kBeginConversion);
    OptionLists options;
    ParseOptions(options, XString(settings));
    TakeOption(m_xsltFile, options, L"xsltfile");
    TakeOption(m_outputExtension, options, L"ext");
    m_outputName.Assign(L"");
    TakeOption(m_outputName, options, L"filename");
    Log(kLeave, m_record, kBeginConversion);
}

void clDSP_WriteMetadataFile::EndConversion() {
    Log(kEnter, m_record, kEndConversion);
    Log(kLeave, m_record, kEndConversion);
}

void clDSP_WriteMetadataFile::AfterConversion(const AfterConversionInfo* info) {
    Log(kEnter, m_record, kAfterConversion);
    const ThreadErrorModeScope errorMode;
    if (info != nullptr) {
        WriteXMLFile(Context(), *info, !m_xsltFile.IsEmpty());
    }
    Log(kLeave, m_record, kAfterConversion);
}

bool clDSP_WriteMetadataFile::Get(const wchar_t* key) {
    Log(OrEmpty(key), m_record, L"clDSP_WriteMetadataFile::Get");
    return Compare(L"IsLive", key) == 0;
}

void clDSP_WriteMetadataFile::Set(const wchar_t* key) {
    Log(OrEmpty(key), m_record, L"clDSP_WriteMetadataFile::Set");
}
