#pragma once

#include "decoders/DecoderRecords.h"

/// What the host hands to DSP_AfterConversion; the plug-in only reads it. The host owns the record and all
/// that it points to, for the length of the call. Pointers may be null where the host has nothing.
#pragma pack(push, 1)
struct AfterConversionInfo {
    const wchar_t* sourceFileName; ///< zero-terminated; "-" when there is no source file on disk
    const wchar_t* destFileName;   ///< zero-terminated full path of the converted file
    uint64_t reserved;
    const AudioInfo* sourceAudioInfo;
    const void* destIDTags; ///< TagBlob
    uint32_t destIDTagsSize;
    const void* sourceAudioProperties; ///< TagBlob
    uint32_t sourceAudioPropertiesSize;
};
#pragma pack(pop)
static_assert(sizeof(AfterConversionInfo) == 56);
static_assert(offsetof(AfterConversionInfo, sourceFileName) == 0);
static_assert(offsetof(AfterConversionInfo, destFileName) == 8);
static_assert(offsetof(AfterConversionInfo, reserved) == 16);
static_assert(offsetof(AfterConversionInfo, sourceAudioInfo) == 24);
static_assert(offsetof(AfterConversionInfo, destIDTags) == 32);
static_assert(offsetof(AfterConversionInfo, destIDTagsSize) == 40);
static_assert(offsetof(AfterConversionInfo, sourceAudioProperties) == 44);
static_assert(offsetof(AfterConversionInfo, sourceAudioPropertiesSize) == 52);
