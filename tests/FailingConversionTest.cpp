#include "tests/shared/FailingConversion.h"

namespace {

TEST_F(FailingConversion, LeavesNothingBehind) {
    LetConversionsFail({});
}

TEST_F(FailingConversion, OnAFullDiskWritesTheDocumentsBeginning) {
    // A document of several writes, in letters of the most bytes.
    tags = TagBlob().Add(L"LYRICS", std::wstring(200'000, L'\u65e5')).Bytes();
    const Scenario convert = [this] { return Convert(); };
    convert();
    const std::string wanted = ReadBytes(document);
    const uint64_t calls = stubs["WriteFile"].calls;
    std::set<size_t> sizes;
    for (uint64_t call = 1; call <= calls; ++call) {
        const std::string result = Run(convert, {"WriteFile", FALSE, ERROR_DISK_FULL, {}}, call);
        ASSERT_EQ(result.find(';'), std::string::npos) << result;
        const std::string bytes = ReadBytes(document);
        ASSERT_TRUE(wanted.starts_with(bytes)) << "after call " << call << ", which fails";
        sizes.insert(bytes.size());
    }
    EXPECT_GT(sizes.size(), 3u) << "nothing, one write, two writes, all";

    // A write of fewer bytes than asked for is the last, too.
    const auto writeFewer = [](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* at) {
        return WriteFile(file, bytes, std::min(size, DWORD{100'000}), written, at);
    };
    stubs["WriteFile"].target = reinterpret_cast<void*>(+writeFewer);
    convert();
    stubs["WriteFile"].target = stubs["WriteFile"].function;
    EXPECT_EQ(ReadBytes(document), wanted.substr(0, 100'000));
}

TEST_F(FailingConversion, KeepsTheTraceBalanced) {
    const std::pair<const wchar_t*, std::function<int64_t()>> rows[] = {
        {L"BeginConversion",
         [this] {
             return CALL_PLUGIN(DSP_BeginConversion, plugin.Instance(), nullptr, L"-ext=.a", nullptr);
         }},
        {L"ShowConfigBit",
         [this] {
             return reinterpret_cast<intptr_t>(
                 CALL_PLUGIN(DSP_ShowConfigBit, plugin.Instance(), nullptr, 0, 0, L"-ext=.a"));
         }},
        {L"RemoveConfigBit", [this] {
             return reinterpret_cast<intptr_t>(CALL_PLUGIN(DSP_RemoveConfigBit, plugin.Instance(), 0));
         }}};
    for (const auto& [method, call] : rows) {
        plugin.Trace();
        Account::Heap::size = Account::Heap::used;
        EXPECT_EQ(call(), 0) << method;
        Account::Heap::EndAt(0);
        const std::wstring scope = std::wstring(L"  [clDSP_WriteMetadataFile::") + method + L"]\r\n";
        EXPECT_EQ(plugin.Trace(), L"->->" + scope + L"<-<-" + scope + L"*** Error: Out of memory\r\n");
    }
}

TEST_F(FailingConversion, LooksForDecodersBesideTheProgram) {
    static std::wstring program;
    static std::set<std::wstring> patterns;
    static void* const watched = stubs["FindFirstFileW"].target;
    const auto name = [](HMODULE, wchar_t* path, DWORD size) {
        return static_cast<DWORD>(program.copy(path, size));
    };
    const auto find = [](const wchar_t* pattern, WIN32_FIND_DATAW* found) {
        patterns.insert(pattern);
        return reinterpret_cast<decltype(&FindFirstFileW)>(watched)(pattern, found);
    };
    const std::wstring deep = L"C:\\" + std::wstring(200, L'a') + L"\\" + std::wstring(700, L'b') + L"\\";
    const std::pair<std::wstring, std::wstring> rows[] = {{deep + std::wstring(200, L'x'), L"\\\\?\\" + deep},
                                                          {L"\"C:\\a b\\x.exe\" -y \\z", L"C:\\a b\\"},
                                                          {L"\"C:\\a\\x.exe", L"C:\\a\\"},
                                                          {L"\"x.exe\"", L"x.exe\\"},
                                                          {L"", L"\\"}};
    stubs["GetModuleFileNameW"].target = reinterpret_cast<void*>(+name);
    stubs["FindFirstFileW"].target = reinterpret_cast<void*>(+find);
    for (const auto& [path, folderOfIt] : rows) {
        program = path;
        patterns.clear();
        Convert();
        EXPECT_EQ(patterns.count(folderOfIt + L"decoder\\*.dll"), 1u) << path;
    }
    stubs["GetModuleFileNameW"].target = stubs["GetModuleFileNameW"].function;
    stubs["FindFirstFileW"].target = watched;
}

} // namespace
