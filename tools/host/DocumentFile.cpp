#include "tools/host/DocumentFile.h"

#include "plugin/ParseOptions.h"
#include "support/Paths.h"
#include "tools/host/Console.h"

namespace {

XString DocumentPath(const Options& options) {
    OptionLists settings;
    ParseOptions(settings, options.settings);
    if (XString name(FindOption(settings, L"filename")); !name.IsEmpty()) {
        return name;
    }
    const XString extension(FindOption(settings, L"ext"));
    return Concat(GetFilePath(options.converted), GetFileNameNoExt(options.converted),
                  extension.IsEmpty() ? L".xml" : extension.Text());
}

/// Zero times and size when there is no such file.
WIN32_FILE_ATTRIBUTE_DATA Attributes(const XString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExW(MakeLongPath(path, kOpenPathLimit).Text(), GetFileExInfoStandard, &data);
    return data;
}

} // namespace

DocumentFile::DocumentFile(const Options& options)
    : m_path(DocumentPath(options)), m_writtenBefore(Attributes(m_path).ftLastWriteTime) {}

int64_t DocumentFile::WrittenSize() const {
    const WIN32_FILE_ATTRIBUTE_DATA now = Attributes(m_path);
    if (CompareFileTime(&now.ftLastWriteTime, &m_writtenBefore) == 0) {
        return -1;
    }
    return static_cast<int64_t>(now.nFileSizeHigh) << 32 | now.nFileSizeLow;
}
