#include "tools/host/LogFiles.h"

#include "support/Paths.h"
#include "tools/host/Console.h"

#include <vector>

namespace {

bool CreateLogFile(OwnedFile& file, const XString& path, DWORD attributes) {
    file.Reset(CreateFileW(MakeLongPath(path, kOpenPathLimit).Text(), GENERIC_READ | GENERIC_WRITE,
                           FILE_SHARE_READ, nullptr, CREATE_ALWAYS, attributes, nullptr));
    if (!file.IsValid()) {
        PrintError(Concat(L"Cannot create ", path, L" (error ", XString::FromInt64(GetLastError()), L")"));
    }
    return file.IsValid();
}

bool CreateTemporaryFile(OwnedFile& file) {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, folder);
    GetTempFileNameW(folder, L"dsp", 0, path);
    return CreateLogFile(file, XString(path), FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
}

} // namespace

bool LogFiles::Create(const Options& options) {
    const bool hasErrors = options.errorFile.IsEmpty()
                               ? CreateTemporaryFile(m_errors)
                               : CreateLogFile(m_errors, options.errorFile, FILE_ATTRIBUTE_NORMAL);
    return hasErrors &&
           (options.traceFile.IsEmpty() || CreateLogFile(m_trace, options.traceFile, FILE_ATTRIBUTE_NORMAL));
}

XString LogFiles::ReadErrors() const {
    const DWORD size = GetFileSize(m_errors.Get(), nullptr);
    if (size == INVALID_FILE_SIZE || SetFilePointer(m_errors.Get(), 0, nullptr, FILE_BEGIN) != 0) {
        return XString();
    }
    std::vector<wchar_t> text(size / sizeof(wchar_t));
    DWORD read = 0;
    ReadFile(m_errors.Get(), text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &read, nullptr);
    return XString(text.data(), read / sizeof(wchar_t));
}
