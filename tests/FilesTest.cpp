#include "support/Paths.h"
#include "support/XFile.h"
#include "support/XFileFind.h"

#include "tests/shared/Files.h"

namespace {

XString Text(const std::wstring& text) {
    return XString(text.c_str());
}

TEST(XFile, LongPathsAreTakenLiterallyButNoShares) {
    // With the prefix of long paths the system does not resolve ".", and finds no folder of that name.
    const TempFolder folder;
    const auto path = [&folder](size_t size) {
        const std::wstring begin = folder.Path(L".\\");
        return Text(begin + std::wstring(size - begin.size(), L'f'));
    };
    const auto isMade = [&path](size_t size) {
        return XFile().Open(path(size), GENERIC_WRITE, CREATE_ALWAYS);
    };
    EXPECT_TRUE(isMade(259)); // to be opened
    EXPECT_FALSE(isMade(260));
    EXPECT_TRUE(isMade(247) && FileExists(path(247))); // to be found
    EXPECT_TRUE(isMade(248) && !FileExists(path(248)));
    const std::wstring share = L"\\\\" + std::wstring(300, L'x');
    EXPECT_EQ(MakeLongPath(Text(share), kOpenPathLimit).Text(), share);
}

TEST(FileExists, FindsFilesFoldersRootsAndWildcards) {
    const TempFolder folder;
    WriteTestFile(folder.Path(L"song.flac"), "");
    WriteTestFile(folder.Path(L"..dots"), "");
    CreateDirectoryW(folder.Path(L"sub").c_str(), nullptr);
    const std::pair<std::wstring, bool> rows[] = {
        {L"", false},
        {L"C:", true},
        {L"C:\\", true},
        {folder.Path(L"song.flac\\\\"), true}, // backslashes at the end do not count
        {folder.Path(L"sub"), true},
        {folder.Path(L"sub\\*"), false}, // the folder itself and its parent do not count
        {folder.Path(L"*.FLAC"), true},
        {folder.Path(L"*dots"), true},
        {folder.Path(L"*.mp3"), false},
        {folder.Path(L"missing"), false},
    };
    for (const auto& [path, expected] : rows) {
        EXPECT_EQ(FileExists(Text(path)), expected) << path;
    }
}

} // namespace
