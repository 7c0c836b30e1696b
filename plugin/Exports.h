#pragma once

#include "metadata/AfterConversionInfo.h"
#include "support/CreateRecord.h"

#include <windows.h>

#include <cstdint>

class clDSP_WriteMetadataFile;

// What the library exports (WriteMetadataFile.def). The host calls
//
//   DSP_Create, any number of (DSP_ShowConfigBit, DSP_RemoveConfigBit),
//   any number of conversions (DSP_BeginConversion, DSP_PassAudioBlock …, DSP_EndConversion,
//   DSP_AfterConversion), DSP_Destroy
//
// with one call at a time for each instance. While a panel is open, DSP_ShowConfigBit, DSP_RemoveConfigBit
// and DSP_Destroy are for the thread that showed the panel. Every function but DSP_Create takes the instance
// first; a null instance is answered with 0 (by DSP_Destroy with 1) and has no effect. Texts are
// zero-terminated UTF-16. Failures of the metadata work are reported in the trace and error handles of the
// CreateRecord, never in a result; a call that ran out of memory answers 0.
extern "C" {

/// A new instance holding a copy of the record, whose handles stay the host's. Throws std::bad_alloc.
clDSP_WriteMetadataFile* DSP_Create(const CreateRecord* record);

/// Frees the instance and all it owns, an open panel included. Always 1.
int32_t DSP_Destroy(clDSP_WriteMetadataFile* instance);

/// Makes the settings panel as a child of the host's window at (x, y) of its client area, in place of one
/// that is still open, filled from the settings text. A coordinate of -12345 stays as the dialog manager set
/// it. Returns the panel's window, or 0 when it could not be made. The host's message loop must call
/// IsDialogMessage for it.
HWND DSP_ShowConfigBit(clDSP_WriteMetadataFile* instance, HWND parent, int32_t x, int32_t y,
                       const wchar_t* settings);

/// The settings text of what the panel holds now, `-xsltfile="…" -ext="…"`; destroys the panel unless `mode`
/// is -123. The text stays the instance's, valid until the next call or DSP_Destroy.
const wchar_t* DSP_RemoveConfigBit(clDSP_WriteMetadataFile* instance, int64_t mode);

/// Reads the settings for the conversion that begins. Returns 1.
int32_t DSP_BeginConversion(clDSP_WriteMetadataFile* instance, void* ignored1, const wchar_t* settings,
                            void* ignored2);

/// Always 1; only traces.
int32_t DSP_EndConversion(clDSP_WriteMetadataFile* instance);

/// Writes the metadata document. Returns 1, also when it could not be written.
int32_t DSP_AfterConversion(clDSP_WriteMetadataFile* instance, const AfterConversionInfo* info);

/// Always 1: the audio is not changed. Further arguments that the host passes are ignored. Exported as
/// DSP_PassNonLive, too.
int32_t DSP_PassAudioBlock(clDSP_WriteMetadataFile* instance);

/// 1 for the key "IsLive", else 0.
int32_t DSP_Get(clDSP_WriteMetadataFile* instance, const wchar_t* key);

/// Always 0: nothing can be set. Only traces.
int32_t DSP_Set(clDSP_WriteMetadataFile* instance, const wchar_t* key);
}
