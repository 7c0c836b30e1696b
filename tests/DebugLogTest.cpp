#include "support/DebugLog.h"

#include "tests/shared/Files.h"

#include <thread>

namespace {

struct LogFile {
    TempFolder folder;
    std::wstring path = folder.Path(L"log");
    OwnedFile file = CreateTestFile(path);
    CreateRecord record = {file.Get(), nullptr, file.Get()}; // both in one file, which shows their order
};

TEST(DebugLog, IndentsTheTraceAndWritesErrorsAfterIt) {
    const LogFile log;
    const CreateRecord silent = {INVALID_HANDLE_VALUE, nullptr, nullptr};
    const CreateRecord alsoSilent = {nullptr, nullptr, INVALID_HANDLE_VALUE};
    Log(kLeave, log.record, nullptr); // nothing to leave
    Log(kEnter, log.record, L"A");
    Log(L"->->more", silent, nullptr); // counts though not written; the marker may be a message's beginning
    Log(L"text", log.record, L"B");
    LogError(L"wrong", log.record, L"B");
    LogError(L"", log.record, nullptr);
    LogError(L"nobody reads this", alsoSilent, nullptr);
    Log(L"<-<-less", log.record, L"");
    Log(L"<-< -", log.record, nullptr);
    Log(kLeave, log.record, L"A");
    EXPECT_EQ(ReadUtf16(log.path), L"<-<-\r\n"
                                   L"->->  [A]\r\n"
                                   L"    text  [B]\r\n"
                                   L"*** Error: wrong  [B]\r\n"
                                   L"wrong  [B]\r\n"
                                   L"*** Error: \r\n"
                                   L"\r\n"
                                   L"  <-<-less  []\r\n"
                                   L"  <-< -\r\n"
                                   L"<-<-  [A]\r\n");
}

TEST(DebugLog, WritesLinesOfAnyLength) {
    const LogFile log;
    std::wstring expected;
    for (size_t size = 350; size < 450; ++size) { // the log has room of its own for the shorter ones
        Log(std::wstring(size, L'x').c_str(), log.record, L"scope");
        expected += std::wstring(size, L'x') + L"  [scope]\r\n";
    }
    EXPECT_EQ(ReadUtf16(log.path), expected);
}

TEST(DebugLog, ThreadsShareTheIndentationAndNeverMixLines) {
    const LogFile log;
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([&log] {
            for (int i = 0; i < 1000; ++i) {
                Log(kEnter, log.record, L"scope");
                Log(kLeave, log.record, L"scope");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::wstring> lines = Lines(ReadUtf16(log.path));
    size_t depth = 0;
    for (const std::wstring& line : lines) {
        const bool leaves = line.ends_with(L"<-<-  [scope]");
        depth -= leaves ? 2 : 0;
        ASSERT_EQ(line, std::wstring(depth, L' ') + (leaves ? L"<-<-" : L"->->") + L"  [scope]");
        depth += leaves ? 0 : 2;
    }
    EXPECT_EQ(lines.size(), 8000u);
}

} // namespace
