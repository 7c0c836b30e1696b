#pragma once

#include "tests/shared/FailingCalls.h"
#include "tests/shared/Thread.h"

/// Lets the calls of conversions fail.
class FailingConversion : public FailingCalls {
protected:
    /// Runs an instance from Create to Destroy on a thread that never called the plug-in before. The result
    /// says which calls did not answer 1, what became of the output file, and the error lines without file
    /// names, scopes and the descriptions of Windows' parser.
    std::string Convert() {
        WriteTestFile(document, "kept");
        const OwnedFile errors = CreateTestFile(errorPath);
        const CreateRecord record = {errors.Get(), nullptr, trace.Get()};
        const AfterConversionInfo info = Info();
        std::string result;
        Thread([&] {
            SetErrorInfo(0, errorInfo);
            try {
                auto* instance = CALL_PLUGIN(DSP_Create, &record);
                if (CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr) == 0) {
                    result += "not begun, ";
                }
                EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, instance), 1);
                if (CALL_PLUGIN(DSP_AfterConversion, instance, &info) == 0) {
                    result += "not done, ";
                }
                EXPECT_EQ(Account::Held("CreateFileW"), 0) << "nobody could rename or delete the file";
                EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, instance), 1);
            } catch (const std::bad_alloc&) {
                result = "not created, ";
            }
        });
        const std::string bytes = Written();
        const bool isLess = bytes.ends_with(end) && bytes.size() <= whole.size();
        result += bytes == whole    ? "whole"
                  : bytes == "kept" ? "kept"
                  : bytes.empty()   ? "empty"
                  : isLess          ? "less"
                                    : "other";
        for (const std::wstring& line : Lines(ReadUtf16(errorPath))) {
            const size_t colon = RunsUnderWine() ? std::wstring::npos : line.find(L": ");
            const std::wstring text = line.substr(0, colon == std::wstring::npos ? colon : colon + 2);
            result += "; " + Narrow(text.substr(0, std::min(text.find(L" '"), text.find(L"  ["))));
        }
        return result;
    }

    /// Lets the calls of conversions fail, `failures` and those of every conversion.
    void LetConversionsFail(Failures failures, const std::string& missingSheet = "whole") {
        if (!Decoders::AreListedByName()) {
            GTEST_SKIP() << Decoders::kUnsorted;
        }
        decoders.Add(L"a.dll").decodes = {L".other"};
        Convert();
        whole = Written();
        const std::string noInfo = "less; Failed to find decoder to read audio properties from file";
        const std::string noTags = "less; Failed to find decoder to read ID tags from file";
        const Results someLess = {"whole", "less", noInfo, noTags};
        const std::string missing = "less; Error reading ";
        Results unfound = {noInfo,
                           noTags,
                           missing + "audio info, file does not exist",
                           missing + "audio properties, file does not exist",
                           missing + "ID tags, file does not exist",
                           missing + "file date time, file does not exist"};
        const bool transforms = missingSheet != "whole";
        if (transforms) {
            unfound.insert(missingSheet);
        }
        const std::string notBegun =
            transforms ? "not begun, other; Out of memory" : "not begun, whole; Out of memory";
        const std::string notDone = "not done, kept; Out of memory";
        const std::string nothingDone = "not begun, not done, kept; Out of memory; Out of memory";
        const Failures ofAll = {
            // Without the cache the folder is scanned; without a lock the work goes on.
            {"RegCreateKeyExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"RegQueryValueExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"RegSetValueExW", ERROR_ACCESS_DENIED, 0, {"whole"}},
            {"CreateMutexW", 0, ERROR_NO_SYSTEM_RESOURCES, {"whole"}},
            {"WaitForSingleObject", kInvalid, ERROR_INVALID_HANDLE, {"whole; ReleaseMutex: not taken"}},
            {"GetThreadErrorMode", 0, 0, {"whole"}},
            {"SetThreadErrorMode",
             0,
             ERROR_INVALID_PARAMETER,
             {"whole", "whole; SetThreadErrorMode: 1 kept"}},
            // Trace lines, then the document.
            {"WriteFile", 0, ERROR_DISK_FULL, {"whole", "empty"}},
            // Times, then the output file.
            {"CreateFileW", kInvalid, ERROR_ACCESS_DENIED, {"less", "kept"}},
            {"GetFileTime", 0, ERROR_ACCESS_DENIED, {"less"}},
            {"FileTimeToSystemTime", 0, ERROR_INVALID_PARAMETER, {"less"}},
            {"GetDateFormatW", 0, ERROR_INVALID_PARAMETER, {"less"}},
            {"GetTimeFormatW", 0, ERROR_INVALID_PARAMETER, {"less"}},
            // What cannot be found does not exist.
            {"FindFirstFileW", kInvalid, ERROR_ACCESS_DENIED, unfound},
            {"FindNextFileW", 0, ERROR_ACCESS_DENIED, {noInfo, noTags}},
            {"GetModuleFileNameW", 0, ERROR_NOT_ENOUGH_MEMORY, {"whole", noInfo, noTags}},
            // A library that fails is skipped; when it fails at its second load in a reading, nothing is
            // logged.
            {"LoadLibraryW", 0, ERROR_NOT_ENOUGH_MEMORY, someLess},
            {"GetProcAddress", 0, ERROR_PROC_NOT_FOUND, someLess},
            {"malloc", 0, 0, {"not created, kept", notBegun, notDone, "whole"}},
            {kMemory, 0, 0, {"not created, kept", nothingDone, notDone, "whole"}},
        };
        failures.insert(failures.end(), ofAll.begin(), ofAll.end());
        LetFail([this] { return Convert(); }, failures);
    }

    std::wstring settings = L"-ext=.xml";
    IErrorInfo* errorInfo = nullptr; // the thread's
    std::string end = "</AudioMetadata>\r\n";

private:
    /// The output file without the bytes that a stream's memory block may have after the end.
    std::string Written() const {
        const std::string bytes = ReadBytes(document);
        const size_t at = bytes.rfind(end);
        return at == std::string::npos ? bytes : bytes.substr(0, at + end.size());
    }

    const std::wstring errorPath = folder + L"failures.log";
    std::string whole; // what the output file should hold
};
