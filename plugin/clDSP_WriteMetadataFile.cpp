#include "plugin/clDSP_WriteMetadataFile.h"

#include "metadata/WriteXMLFile.h"
#include "plugin/ParseOptions.h"
#include "support/DebugLog.h"
#include "support/ThreadErrorModeScope.h"

#include <cstddef>

#ifdef __GNUC__ // which warns of offsetof in a class that has virtual members
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif

namespace {

/// Traces that a method is entered and left, also when it ends by an exception.
class TraceScope {
public:
    TraceScope(const CreateRecord& record, const wchar_t* method) noexcept
        : m_record(record), m_method(method) {
        Log(kEnter, m_record, m_method);
    }
    ~TraceScope() { Log(kLeave, m_record, m_method); }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    const CreateRecord& m_record;
    const wchar_t* m_method;
};

/// An absent or empty option leaves the field as it is.
void TakeOption(XString& field, const std::vector<Option>& options, const wchar_t* name) {
    if (const wchar_t* value = FindOption(options, name); *value != 0) {
        field.Assign(value);
    }
}

const wchar_t* OrEmpty(const wchar_t* text) noexcept {
    return text != nullptr ? text : L"";
}

} // namespace

clDSP_WriteMetadataFile::clDSP_WriteMetadataFile(const CreateRecord& record) noexcept : m_record(record) {
    static_assert(offsetof(clDSP_WriteMetadataFile, m_record) == 0);
}

HWND clDSP_WriteMetadataFile::ShowConfigBit(HWND parent, int32_t x, int32_t y, const wchar_t* settings) {
    const TraceScope trace(m_record, L"clDSP_WriteMetadataFile::ShowConfigBit");
    return m_settingsDialog.Show(parent, x, y, settings);
}

const wchar_t* clDSP_WriteMetadataFile::RemoveConfigBit(int64_t mode) {
    if (mode == kQueryMode) {
        m_configString = m_settingsDialog.ReadSettings();
    } else {
        const TraceScope trace(m_record, L"clDSP_WriteMetadataFile::RemoveConfigBit");
        m_configString = m_settingsDialog.ReadSettings();
        m_settingsDialog.Destroy();
    }
    return m_configString.Text();
}

void clDSP_WriteMetadataFile::BeginConversion(const wchar_t* settings) {
    const TraceScope trace(m_record, L"clDSP_WriteMetadataFile::BeginConversion");
    const std::vector<Option> options = ParseOptions(XString(settings));
    TakeOption(m_xsltFile, options, L"xsltfile");
    TakeOption(m_outputExtension, options, L"ext");
    m_outputName.Assign(L"");
    TakeOption(m_outputName, options, L"filename");
}

void clDSP_WriteMetadataFile::EndConversion() {
    const TraceScope trace(m_record, L"clDSP_WriteMetadataFile::EndConversion");
}

void clDSP_WriteMetadataFile::AfterConversion(const AfterConversionInfo* info) {
    const TraceScope trace(m_record, L"clDSP_WriteMetadataFile::AfterConversion");
    const ThreadErrorModeScope errorMode;
    if (info != nullptr) {
        WriteXMLFile(Context(), *info, !m_xsltFile.IsEmpty());
    }
}

bool clDSP_WriteMetadataFile::Get(const wchar_t* key) {
    Log(OrEmpty(key), m_record, L"clDSP_WriteMetadataFile::Get");
    return Compare(L"IsLive", key) == 0;
}

void clDSP_WriteMetadataFile::Set(const wchar_t* key) {
    Log(OrEmpty(key), m_record, L"clDSP_WriteMetadataFile::Set");
}
