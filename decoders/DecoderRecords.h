#pragma once

#include <cstddef>
#include <cstdint>

// What crosses the boundary between the plug-in and the converter's decoder libraries.
//
// A decoder library exports nine functions under their plain names. The plug-in calls four of them:
//
//   to choose a library    Create, Get with "Decodes" for index 0, 1, …, Destroy
//   to read from a file    Create, Open with one flag, (results are copied), Destroy
//
// It never calls Set, Close, DecodeBlock, SetPosition or DeleteATag, but a library that lacks any of the nine
// is not a decoder. All memory that a library hands out stays the library's own and must live until Destroy.
// All records are packed, little-endian, and may lie at any address.

#pragma pack(push, 1)

/// The audio format in the layout of WAVEFORMATEXTENSIBLE.
struct AudioFormat {
    uint16_t wFormatTag;
    uint16_t nChannels;
    uint32_t nSamplesPerSec;
    uint32_t nAvgBytesPerSec;
    uint16_t nBlockAlign;
    uint16_t wBitsPerSample;
    uint16_t cbSize; ///< bytes of the extension that follow; 22 for the three fields below
    uint16_t samples;
    uint32_t dwChannelMask;
    uint8_t SubFormat[16];
};
static_assert(sizeof(AudioFormat) == 40);
static_assert(offsetof(AudioFormat, wFormatTag) == 0);
static_assert(offsetof(AudioFormat, nChannels) == 2);
static_assert(offsetof(AudioFormat, nSamplesPerSec) == 4);
static_assert(offsetof(AudioFormat, nAvgBytesPerSec) == 8);
static_assert(offsetof(AudioFormat, nBlockAlign) == 12);
static_assert(offsetof(AudioFormat, wBitsPerSample) == 14);
static_assert(offsetof(AudioFormat, cbSize) == 16);
static_assert(offsetof(AudioFormat, samples) == 18);
static_assert(offsetof(AudioFormat, dwChannelMask) == 20);
static_assert(offsetof(AudioFormat, SubFormat) == 24);

/// Format, bitrate, length and size of one audio file. The units of bitrate and length are the decoder's own;
/// they are written as they stand.
struct AudioInfo {
    AudioFormat format;
    int32_t bitrate;
    int64_t length;
    int64_t fileSize;
};
static_assert(sizeof(AudioInfo) == 60);
static_assert(offsetof(AudioInfo, format) == 0);
static_assert(offsetof(AudioInfo, bitrate) == 40);
static_assert(offsetof(AudioInfo, length) == 44);
static_assert(offsetof(AudioInfo, fileSize) == 52);

/// All zero before each call of Get.
struct DecoderGetRecord {
    uint32_t index; ///< in: which entry of the list, from 0
    uint8_t reserved1[20];
    const wchar_t* text; ///< out: zero-terminated, owned by the library; null when there is no such entry
    uint8_t reserved2[24];
};
static_assert(sizeof(DecoderGetRecord) == 56);
static_assert(offsetof(DecoderGetRecord, index) == 0);
static_assert(offsetof(DecoderGetRecord, reserved1) == 4);
static_assert(offsetof(DecoderGetRecord, text) == 24);
static_assert(offsetof(DecoderGetRecord, reserved2) == 32);

/// What one call of Open reads; the plug-in asks for one thing at a time.
enum OpenFlags : uint32_t {
    kOpenAudioInfo = 4,
    kOpenIDTags = 8,
    kOpenAudioProperties = 16,
};

/// All zero but for `fileName` and `openFlags` before each call of Open.
struct DecoderOpenRecord {
    const wchar_t* fileName; ///< in: zero-terminated path
    uint32_t openFlags;      ///< in: OpenFlags
    AudioInfo audioInfo;     ///< out for kOpenAudioInfo
    uint64_t reserved;
    const void* IDTagData; ///< out for kOpenIDTags: a TagBlob, or null
    int32_t IDTagByteSize;
    const void* propertyData; ///< out for kOpenAudioProperties: a TagBlob, or null
    int32_t propertyByteSize;
};
static_assert(sizeof(DecoderOpenRecord) == 104);
static_assert(offsetof(DecoderOpenRecord, fileName) == 0);
static_assert(offsetof(DecoderOpenRecord, openFlags) == 8);
static_assert(offsetof(DecoderOpenRecord, audioInfo) == 12);
static_assert(offsetof(DecoderOpenRecord, reserved) == 72);
static_assert(offsetof(DecoderOpenRecord, IDTagData) == 80);
static_assert(offsetof(DecoderOpenRecord, IDTagByteSize) == 88);
static_assert(offsetof(DecoderOpenRecord, propertyData) == 92);
static_assert(offsetof(DecoderOpenRecord, propertyByteSize) == 100);

#pragma pack(pop)

// A TagBlob, the packed list of ID tags or of properties: int32 count, then that many entries back to back.
// One entry: int32 entrySize (its own four bytes included), the name in UTF-16 with a terminating zero, the
// value likewise, and the rest as binary data.

using DecoderCreateFunction = void*(void* context); // null on failure; the context is the plug-in's instance
using DecoderDestroyFunction = void(void* instance);
using DecoderGetFunction = int32_t(void* instance, const wchar_t* key,
                                   DecoderGetRecord* record);                   // 0 on failure
using DecoderOpenFunction = int32_t(void* instance, DecoderOpenRecord* record); // 0 on failure
