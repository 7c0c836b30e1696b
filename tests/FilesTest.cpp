#include "support/ModuleFolder.h"
#include "support/XFile.h"
#include "support/XFileFind.h"

#include "tests/shared/CallStubs.h"
#include "tests/shared/Files.h"

#include <algorithm>
#include <set>

namespace {

XString Text(const std::wstring& text) {
    return XString(text.c_str());
}

TEST(XFile, LongPathsAreTakenLiterally) {
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
}

std::wstring modulePath;

DWORD WINAPI GiveModulePath(HMODULE /*module*/, wchar_t* out, DWORD size) {
    const size_t copied = std::min<size_t>(size, modulePath.size());
    std::copy_n(modulePath.data(), copied, out);
    return static_cast<DWORD>(copied);
}

TEST(ModuleFolder, MayBeDeepAndStandInQuotes) {
    const std::wstring deep = L"C:\\" + std::wstring(950, L'd') + L"\\";
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"C:\\a b\\host.exe", L"C:\\a b\\"}, {L"\"C:\\a b\\host.exe\" -x \\y", L"C:\\a b\\"},
        {L"\"C:\\a\\host.exe", L"C:\\a\\"},   {L"\"host.exe\"", L"host.exe"},
        {deep + L"host.exe", deep},           {L"", L""}};
    CallStubs& stubs = *new CallStubs; // for as long as anyone calls through them
    stubs.AddImports(GetModuleHandleW(nullptr));
    CallStub& stub = stubs["GetModuleFileNameW"];
    void* const real = std::exchange(stub.target, reinterpret_cast<void*>(GiveModulePath));
    for (const auto& [path, folder] : rows) {
        modulePath = path;
        EXPECT_EQ(ModuleFolder(nullptr).Text(), folder) << path;
    }
    stub.target = real;
}

TEST(FileExists, FindsFilesFoldersRootsAndWildcards) {
    const TempFolder folder;
    WriteTestFile(folder.Path(L"song.flac"), "");
    CreateDirectoryW(folder.Path(L"sub").c_str(), nullptr);
    wchar_t freeDrive = L'Z';
    while ((GetLogicalDrives() >> (freeDrive - L'A') & 1) != 0) {
        --freeDrive;
    }
    const std::pair<std::wstring, bool> rows[] = {
        {L"", false},
        {L"C:", true},
        {L"C:\\", true},
        {std::wstring(1, freeDrive) + L":\\", false},
        {folder.Path(L"song.flac\\\\"), true}, // backslashes at the end do not count
        {folder.Path(L"sub"), true},
        {folder.Path(L"*.FLAC"), true},
        {folder.Path(L"*.mp3"), false},
        {folder.Path(L"missing"), false},
    };
    for (const auto& [path, expected] : rows) {
        EXPECT_EQ(FileExists(Text(path)), expected) << path;
    }
}

TEST(XFileFind, ListsFilesAndFoldersOnce) {
    const TempFolder folder;
    CreateDirectoryW(folder.Path(L"folder.dll").c_str(), nullptr);
    WriteTestFile(folder.Path(L"b.DLL"), "");
    std::set<std::wstring> found;
    XFileFind find(Text(folder.Path(L"*"))); // also finds the folder itself and its parent
    while (find.Next()) {
        found.insert(std::wstring(find.Path().Text()) + (find.IsFolder() ? L" folder" : L""));
    }
    EXPECT_FALSE(find.Next()) << "a call after the last entry";
    EXPECT_EQ(found, (std::set<std::wstring>{folder.Path(L"b.DLL"), folder.Path(L"folder.dll folder")}));
    EXPECT_FALSE(XFileFind(Text(folder.Path(L"none\\*"))).Next());
}

} // namespace
