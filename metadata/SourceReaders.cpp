#include "metadata/SourceReaders.h"

#include "decoders/FindDecoder.h"
#include "support/DebugLog.h"
#include "support/XFile.h"
#include "support/XFileFind.h"

#include <iterator>
#include <span>

namespace {

/// How one of the three readers differs from the others. Every message is followed by the file name and "'".
struct ReaderTexts {
    const wchar_t* scope;
    const wchar_t* notExist;
    const wchar_t* reading;
    const wchar_t* noDecoder;
    const wchar_t* readFailed;
    const wchar_t* finished;
};

constexpr ReaderTexts kAudioInfoTexts = {
    L"clDSP_WriteMetadataFile::GetAudioInfo", L"Error reading audio info, file does not exist '",
    L"Reading audio info from file '",        L"Failed to find decoder to read audio properties from file '",
    L"Failed to read audio info from file '", L"Finished reading audio info from file '",
};

constexpr ReaderTexts kAudioPropertiesTexts = {
    L"clDSP_WriteMetadataFile::GetAudioProperties",
    L"Error reading audio properties, file does not exist '",
    L"Reading audio properties from file '",
    L"Failed to find decoder to read audio properties from file '",
    L"Failed to read audio properties from file '",
    L"Finished reading audio properties from file '",
};

constexpr ReaderTexts kIDTagsTexts = {
    L"clDSP_WriteMetadataFile::GetIDTags", L"Error reading ID tags, file does not exist '",
    L"Reading audio ID tags from file '",  L"Failed to find decoder to read ID tags from file '",
    L"Failed to read ID tags from file '", L"Finished reading ID tags from file '",
};

constexpr const wchar_t* kTimeScope = L"clDSP_WriteMetadataFile::GetFormattedFileDateTime";

XString WithFileName(const wchar_t* message, const XString& fileName) {
    XString text(message);
    text.Append(fileName);
    text.Append(L"'");
    return text;
}

/// What the three readers have in common. `take` copies what it needs of the report while the library's
/// instance, which owns the memory, still exists. Where the reading ends early no leaving line is written:
/// that is how the trace shows it.
template<class Take>
int32_t ReadFromDecoder(const MetadataContext& context, const XString& fileName, const ReaderTexts& texts,
                        OpenFlags flag, Take take) {
    Log(kEnter, context.log, texts.scope);
    if (!FileExists(fileName)) {
        LogError(WithFileName(texts.notExist, fileName).Text(), context.log, nullptr);
        return -1;
    }
    Log(WithFileName(texts.reading, fileName).Text(), context.log, nullptr);

    // The chosen library stays loaded, with the instance that was asked for its extensions, until the reading
    // is over; the file is opened with an instance of a second load.
    clZentaroDecoder chosen;
    if (!FindDecoderForFile(fileName, chosen, context.decoderContext)) {
        LogError(WithFileName(texts.noDecoder, fileName).Text(), context.log, nullptr);
        return -1;
    }
    int32_t result = 1;
    {
        clZentaroDecoder reader;
        if (reader.Load(chosen.LibraryPath().Text()) && reader.CreateInstance(context.decoderContext)) {
            if (const auto report = reader.Open(fileName.Text(), flag)) {
                take(*report);
            } else {
                LogError(WithFileName(texts.readFailed, fileName).Text(), context.log, nullptr);
                result = -1;
            }
        }
    }
    chosen.DestroyInstance();
    Log(WithFileName(texts.finished, fileName).Text(), context.log, nullptr);
    Log(kLeave, context.log, texts.scope);
    return result;
}

/// Nothing is copied of an empty list: `out` stays as it was.
void CopyList(std::vector<uint8_t>& out, std::span<const uint8_t> list) {
    if (!list.empty()) {
        out.assign(list.begin(), list.end());
    }
}

FILETIME ReadFileTime(const XString& fileName, FileTime which) {
    FILETIME time = {};
    XFile file;
    if (file.Open(fileName, GENERIC_READ, OPEN_EXISTING)) {
        GetFileTime(file.Handle(), which == FileTime::Created ? &time : nullptr,
                    which == FileTime::Accessed ? &time : nullptr,
                    which == FileTime::Modified ? &time : nullptr);
    }
    return time;
}

} // namespace

int32_t GetAudioInfo(const MetadataContext& context, const XString& fileName, AudioInfo& out) {
    return ReadFromDecoder(context, fileName, kAudioInfoTexts, kOpenAudioInfo,
                           [&out](const DecoderReport& report) { out = report.audioInfo; });
}

int32_t GetAudioProperties(const MetadataContext& context, const XString& fileName,
                           std::vector<uint8_t>& out) {
    return ReadFromDecoder(context, fileName, kAudioPropertiesTexts, kOpenAudioProperties,
                           [&out](const DecoderReport& report) { CopyList(out, report.properties); });
}

int32_t GetIDTags(const MetadataContext& context, const XString& fileName, std::vector<uint8_t>& out) {
    return ReadFromDecoder(context, fileName, kIDTagsTexts, kOpenIDTags, [&](const DecoderReport& report) {
        XString message(L"Pass.IDTagByteSize: ");
        message.Append(XString::FromInt64(report.idTagByteSize));
        Log(message.Text(), context.log, kIDTagsTexts.scope);
        CopyList(out, report.idTags);
    });
}

XString GetFormattedFileDateTime(const MetadataContext& context, const XString& fileName, FileTime which) {
    Log(kEnter, context.log, kTimeScope);
    if (!FileExists(fileName)) {
        LogError(WithFileName(L"Error reading file date time, file does not exist '", fileName).Text(),
                 context.log, nullptr);
        return XString(); // without a leaving line, as the readers
    }
    const FILETIME fileTime = ReadFileTime(fileName, which);
    SYSTEMTIME time = {};
    FileTimeToSystemTime(&fileTime, &time);

    wchar_t part[32];
    XString text;
    if (GetDateFormatW(LOCALE_USER_DEFAULT, 0, &time, L"yyyy-MM-dd", part,
                       static_cast<int>(std::size(part))) != 0) {
        text.Append(part);
    }
    text.Append(L"T");
    // The flag makes "hh" count to 24.
    if (GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_FORCE24HOURFORMAT, &time, L"hh:mm:ss", part,
                       static_cast<int>(std::size(part))) != 0) {
        text.Append(part);
    }
    Log(kLeave, context.log, kTimeScope);
    return text;
}
