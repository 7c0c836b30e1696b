#include "support/DebugLog.h"

#include "tests/Files.h"

#include <gtest/gtest.h>

namespace {

struct LogFiles {
    TempFolder folder;
    std::wstring tracePath = folder.Path(L"trace");
    std::wstring errorPath = folder.Path(L"errors");
    OwnedFile trace = CreateTestFile(tracePath);
    OwnedFile errors = CreateTestFile(errorPath);
    CreateRecord record = {errors.Get(), nullptr, trace.Get()};
};

TEST(DebugLog, IndentsTheTraceAndKeepsErrorsAtTheLeft) {
    LogFiles files;
    Log(kLeave, files.record, nullptr); // nothing to leave
    Log(kEnter, files.record, L"A");
    Log(L"->->more", files.record, nullptr); // a message that begins like a marker works as one
    Log(L"text", files.record, L"B");
    LogError(L"wrong", files.record, L"B");
    LogError(L"", files.record, nullptr);
    Log(L"<-<-less", files.record, L"");
    Log(kLeave, files.record, L"A");
    Log(L"<-< -", files.record, nullptr);
    EXPECT_EQ(ReadUtf16(files.tracePath), L"<-<-\r\n"
                                          L"->->  [A]\r\n"
                                          L"  ->->more\r\n"
                                          L"    text  [B]\r\n"
                                          L"*** Error: wrong  [B]\r\n"
                                          L"*** Error: \r\n"
                                          L"  <-<-less  []\r\n"
                                          L"<-<-  [A]\r\n"
                                          L"<-< -\r\n");
    EXPECT_EQ(ReadUtf16(files.errorPath), L"wrong  [B]\r\n\r\n");
}

TEST(DebugLog, TracesAnErrorBeforeItTellsIt) {
    LogFiles files;
    LogError(L"wrong", CreateRecord{files.trace.Get(), nullptr, files.trace.Get()}, nullptr);
    EXPECT_EQ(ReadUtf16(files.tracePath), L"*** Error: wrong\r\nwrong\r\n");
}

TEST(DebugLog, CountsDepthWithoutAHandleAndAcrossOwners) {
    LogFiles files;
    Log(kEnter, CreateRecord{INVALID_HANDLE_VALUE, nullptr, nullptr}, nullptr);
    LogError(L"nobody reads this", CreateRecord{nullptr, nullptr, INVALID_HANDLE_VALUE}, nullptr);
    Log(L"inside", files.record, nullptr);
    EXPECT_EQ(ReadUtf16(files.tracePath), L"  inside\r\n");
    Log(kLeave, CreateRecord{}, nullptr);
    EXPECT_EQ(ReadUtf16(files.errorPath), L"");
}

DWORD WINAPI WriteManyLines(void* record) {
    for (int i = 0; i < 1000; ++i) {
        Log(kEnter, *static_cast<const CreateRecord*>(record), L"scope");
        Log(kLeave, *static_cast<const CreateRecord*>(record), L"scope");
    }
    return 0;
}

TEST(DebugLog, ThreadsShareOneDepthAndNeverMixLines) {
    LogFiles files;
    OwnedHandle threads[4];
    for (OwnedHandle& thread : threads) {
        thread.Reset(CreateThread(nullptr, 0, WriteManyLines, &files.record, 0, nullptr));
        ASSERT_TRUE(thread.IsValid());
    }
    for (const OwnedHandle& thread : threads) {
        ASSERT_EQ(WaitForSingleObject(thread.Get(), 30000), WAIT_OBJECT_0);
    }
    size_t depth = 0;
    size_t lines = 0;
    for (const std::wstring& line : Lines(ReadUtf16(files.tracePath))) {
        const bool leaves = line.ends_with(L"<-<-  [scope]");
        depth -= leaves ? 2 : 0;
        ASSERT_EQ(line, std::wstring(depth, L' ') + (leaves ? L"<-<-" : L"->->") + L"  [scope]");
        depth += leaves ? 0 : 2;
        ++lines;
    }
    EXPECT_EQ(lines, 8000u);
    EXPECT_EQ(depth, 0u);
}

} // namespace
