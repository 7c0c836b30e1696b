#pragma once

#include "tests/shared/Account.h"
#include "tests/shared/ConversionFixture.h"

#include <functional>
#include <new>
#include <set>

/// One use of the plug-in from beginning to end; the text says what came of it.
using Scenario = std::function<std::string()>;
using Results = std::set<std::string>;

/// How a function reports failure, and the results of the scenario: when the function's first call fails,
/// when its second does, and so on. These results occur and no others.
struct Failure {
    std::string function;
    int64_t answer;
    DWORD lastError;
    Results results;
};
using Failures = std::vector<Failure>;

constexpr int64_t kInvalid = -1; // INVALID_HANDLE_VALUE; in its lower half WAIT_FAILED

/// In place of a function: memory runs out at the n-th allocation, and none is added afterwards.
inline const std::string kMemory = "memory";

/// Lets each call of the plug-in fail, one at a time. What is not even in the plug-in's account after a
/// scenario stands in its result.
class FailingCalls : protected Accounted, public ConversionTest {
protected:
    /// Runs a scenario in which that call fails, 0 for none. The calls of stubs can be read afterwards.
    std::string Run(const Scenario& scenario, const Failure& failure, uint64_t call) {
        RegDeleteKeyW(HKEY_CURRENT_USER, Decoders::kCacheKey);
        const Account::Balance before = Account::Now();
        stubs.CountAnew();
        CallStub& stub = stubs[failure.function];
        Account::Heap::EndAt(failure.function == kMemory ? call : 0);
        stub.FailAt(call, failure.answer, failure.lastError);
        const std::string result = scenario();
        stub.FailAt(0, 0, 0);
        Account::Heap::EndAt(0);
        return result + Account::Since(before);
    }

    /// For each of the failures runs the scenario as many times as it calls the function.
    void LetFail(const Scenario& scenario, const Failures& failures) {
        const std::string withoutFailure = Run(scenario, {}, 0);
        for (const CallStub& stub : stubs) {
            const bool known = kCannotFail.find(" " + stub.name + " ") != std::string::npos ||
                               std::any_of(failures.begin(), failures.end(), [&stub](const Failure& failure) {
                                   return failure.function == stub.name;
                               });
            ASSERT_TRUE(stub.calls == 0 || known) << "How does it fail? " << stub.name;
        }
        for (const Failure& failure : failures) {
            const std::string& name = failure.function;
            ASSERT_EQ(Run(scenario, failure, 0), withoutFailure);
            const uint64_t calls = stubs[name == kMemory ? "malloc" : name].calls;
            Results results;
            for (uint64_t call = 1; call <= calls; ++call) {
                const std::string result = Run(scenario, failure, call);
                if (results.insert(result).second) {
                    ASSERT_EQ(Run(scenario, failure, 0), withoutFailure) << name << ", after " << result;
                }
            }
            ASSERT_EQ(Run(scenario, failure, 0), withoutFailure) << name;
            if (!RunsUnderWine()) { // a system where some of the calls are not made, as when the labels fit
                results.insert(failure.results.begin(), failure.results.end());
            }
            ASSERT_EQ(results, failure.results) << name;
        }
    }

    CallStubs& stubs = Account::Stubs();
    const OwnedFile trace = CreateTestFile(folder + L"calls.log");

private:
    /// Called, but without a failure that could matter, such as those that release something.
    inline static const std::string kCannotFail =
        " addRef CloseHandle CoUninitialize DeleteObject DestroyIcon DestroyWindow EndPaint "
        "EnterCriticalSection FindClose free FreeLibrary GlobalUnlock KillTimer LeaveCriticalSection "
        "memcpy memmove memset RegCloseKey release ReleaseDC ReleaseMutex ShowWindow strlen SysFreeString "
        "VariantClear ";
};
