#include "tools/host/DocumentFile.h"

#include "plugin/ParseOptions.h"
#include "support/Paths.h"
#include "tools/host/Console.h"

namespace {

XString Setting(const Options& options, const wchar_t* name) {
    return XString(FindOption(ParseOptions(options.settings), name));
}

XString DocumentPath(const Options& options) {
    if (XString name = Setting(options, L"filename"); !name.IsEmpty()) {
        return name;
    }
    const XString extension = Setting(options, L"ext");
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
    : path(DocumentPath(options)), styleSheet(Setting(options, L"xsltfile")),
      writtenBefore(Attributes(path).ftLastWriteTime) {}

int64_t DocumentFile::WrittenSize() const {
    const WIN32_FILE_ATTRIBUTE_DATA now = Attributes(path);
    if (CompareFileTime(&now.ftLastWriteTime, &writtenBefore) == 0) {
        return -1;
    }
    return static_cast<int64_t>(now.nFileSizeHigh) << 32 | now.nFileSizeLow;
}
