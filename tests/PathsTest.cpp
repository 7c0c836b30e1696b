#include "support/Paths.h"

#include "tests/shared/Wide.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Paths, SplitAtBackslashesAndLastDots) {
    const struct {
        const wchar_t *path, *name, *noExt, *ext, *folder;
    } rows[] = {
        {L"C:\\a\\song.mp3", L"song.mp3", L"song", L".mp3", L"C:\\a\\"},
        {L"C:\\Music\\Track.01\\song", L"song", L"song", L".", L"C:\\Music\\Track.01\\"},
        {L"\\s.", L"s.", L"s", L".", L"\\"},
        {L"C:\\a\\", L"", L"", L".", L"C:\\a\\"},
        {L"C:/a/song.mp3", L"C:/a/song.mp3", L"C:/a/song", L".mp3", L"C:/a/song.mp3"},
        {L"C:\\a\\.hidden", L".hidden", L"", L".hidden", L"C:\\a\\"},
        {L"", L"", L"", L".", L""},
    };
    for (const auto& row : rows) {
        const XString path(row.path);
        EXPECT_EQ(Wide(GetFileName(path)), row.name) << row.path;
        EXPECT_EQ(Wide(GetFileNameNoExt(path)), row.noExt) << row.path;
        EXPECT_EQ(Wide(GetFileExt(path)), row.ext) << row.path;
        EXPECT_EQ(Wide(GetFilePath(path)), row.folder) << row.path;
    }
}

} // namespace
