#include "tests/shared/ConversionFixture.h"

#include <thread>

namespace {

FixtureBehaviour* behaviour = nullptr;

} // namespace

// Not those of Decoders.cpp, which record the calls and are for one thread.
FixtureBehaviour* FixtureBehaviourOf(const wchar_t*) {
    return behaviour;
}

void FixtureCalled(const wchar_t*, const wchar_t*) {}

namespace {

using SideBySide = ConversionTest;

TEST_F(SideBySide, ThreadsConvertAsOneDoes) {
    behaviour = &library;
    const CreateRecord record = {};
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
        threads.emplace_back([&, thread] { convert(thread, 40, documents[thread]); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
