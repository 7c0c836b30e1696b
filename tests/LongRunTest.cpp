#include "tests/shared/Account.h"
#include "tests/shared/ConversionFixture.h"

#include <cstdlib>
#include <thread>

// Long runs: ROUNDS of the environment says how long, 20000 for a thorough one.

namespace {

FixtureBehaviour* behaviour = nullptr;

} // namespace

FixtureBehaviour* FixtureBehaviourOf(const wchar_t*) {
    return behaviour;
}

void FixtureCalled(const wchar_t*, const wchar_t*) {}

namespace {

int Rounds() {
    const char* rounds = std::getenv("ROUNDS");
    return rounds != nullptr ? std::atoi(rounds) : 400;
}

class LongRun : protected Accounted, public ConversionTest {
protected:
    LongRun() { behaviour = &library; }
};

TEST_F(LongRun, ConversionsLeakNothing) {
    const std::wstring sheet = folder + L"sheet.xsl";
    WriteTestFile(sheet, "<s:stylesheet version='1.0' xmlns:s='http://www.w3.org/1999/XSL/Transform'>"
                         "<s:template match='/'>" +
                             std::string(4000, 'x') + "</s:template></s:stylesheet>");
    const CreateRecord record = {};
    for (const std::wstring& settings : {std::wstring(L"-ext=.xml"), L"-xsltfile=\"" + sheet + L"\""}) {
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        const AfterConversionInfo info = Info();
        const auto convert = [&](int rounds) {
            for (int round = 0; round < rounds; ++round) {
                CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, settings.c_str(), nullptr);
                EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, instance, &info), 1);
            }
            // Any bytes may follow: a stream's memory block may be larger than what was written.
            return ReadBytes(document).substr(0, 8000);
        };
        const std::string first = convert(1);
        EXPECT_GT(first.size(), 100u);
        const Account::Balance before = Account::Now();
        EXPECT_EQ(convert(Rounds()), first);
        EXPECT_EQ(Account::Since(before), "");
        CALL_PLUGIN(DSP_Destroy, instance);
    }
}

TEST_F(LongRun, ThreadsConvertSideBySide) {
    const OwnedFile trace = CreateTestFile(folder + L"shared.log"); // whose lines are written one at a time
    const CreateRecord record = {nullptr, nullptr, trace.Get()};
    const auto convert = [&](int thread, int rounds, std::string& expected) {
        const std::wstring name = folder + std::to_wstring(thread);
        const std::wstring output = name + L".OUT";
        AfterConversionInfo info = Info();
        info.destFileName = output.c_str();
        auto* instance = CALL_PLUGIN(DSP_Create, &record);
        for (int round = 0; round < rounds; ++round) {
            CALL_PLUGIN(DSP_BeginConversion, instance, nullptr, L"", nullptr);
            CALL_PLUGIN(DSP_AfterConversion, instance, &info);
            const std::string bytes = ReadBytes(name + L".xml");
            expected = expected.empty() ? bytes : expected;
            ASSERT_EQ(bytes, expected);
        }
        CALL_PLUGIN(DSP_Destroy, instance);
    };
    constexpr int kThreads = 8;
    std::string documents[kThreads];
    for (int thread = 0; thread < kThreads; ++thread) {
        WriteTestFile(folder + std::to_wstring(thread) + L".OUT", "converted");
        convert(thread, 1, documents[thread]);
    }
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] { convert(thread, Rounds() / 10, documents[thread]); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
