#pragma once

#include "metadata/AfterConversionInfo.h"
#include "metadata/MetadataContext.h"

/// Writes the metadata document of one conversion, transformed when `transform` is set, which the caller sets
/// when the context has a style sheet. 1 when the writing stage was reached, whatever became of the file, and
/// 0 when it stopped earlier, after an error line and without touching any file; DSP_AfterConversion ignores
/// the result.
///
/// The output path is the converted file's folder and base name plus the extension of the settings, or the
/// output name of the settings alone. Whatever stands there is replaced. With `transform` set and the style
/// sheet missing, the output file is created empty.
int32_t WriteXMLFile(const MetadataContext& context, const AfterConversionInfo& info, bool transform);
