#pragma once

#include "metadata/AfterConversionInfo.h"
#include "metadata/MetadataContext.h"
#include "plugin/frmDSPSettings.h"
#include "support/CreateRecord.h"
#include "support/XString.h"

#include <cstdint>

/// One instance of the plug-in: what the host's DSP_Create makes and DSP_Destroy ends. Used by one thread at
/// a time.
class clDSP_WriteMetadataFile {
public:
    explicit clDSP_WriteMetadataFile(const CreateRecord& record) noexcept;

    /// Opens the settings panel inside the host's window; see frmDSPSettings::Show.
    HWND ShowConfigBit(HWND parent, int32_t x, int32_t y, const wchar_t* settings);

    /// The settings text of what the panel holds, valid until the next call. Destroys the panel unless `mode`
    /// is kQueryMode, which also writes no trace line.
    const wchar_t* RemoveConfigBit(int64_t mode);

    /// Takes style sheet, extension and output name from the settings text. Style sheet and extension keep
    /// their values when the text lacks them; the output name lasts for one conversion.
    void BeginConversion(const wchar_t* settings);

    void EndConversion();

    /// Writes the metadata document of the conversion that just ended; nothing is written for null.
    void AfterConversion(const AfterConversionInfo* info);

    /// Whether the plug-in has the property; only "IsLive", spelt so.
    bool Get(const wchar_t* key);

    /// Traces the key; no property can be set.
    void Set(const wchar_t* key);

    /// The host's record: owner of this instance's trace and error lines.
    const CreateRecord& Record() const noexcept { return m_record; }

private:
    MetadataContext Context() noexcept {
        return {m_record, this, m_xsltFile, m_outputExtension, m_outputName};
    }

    static constexpr int64_t kQueryMode = -123;

    CreateRecord m_record; // first: decoder libraries get the instance as their context
    frmDSPSettings m_settingsDialog;
    XString m_configString;
    XString m_xsltFile;
    XString m_outputExtension;
    XString m_outputName;
};
