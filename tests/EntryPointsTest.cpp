#include "tests/shared/PluginHarness.h"

namespace {

TEST(EntryPoints, NullInstancesHaveNoEffect) {
    const LoadedPlugin plugin;
    AfterConversionInfo info = {};
    EXPECT_EQ(CALL_PLUGIN(DSP_ShowConfigBit, nullptr, nullptr, 0, 0, nullptr), nullptr);
    EXPECT_EQ(CALL_PLUGIN(DSP_RemoveConfigBit, nullptr, 0), nullptr);
    EXPECT_EQ(CALL_PLUGIN(DSP_BeginConversion, nullptr, nullptr, L"", nullptr), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_EndConversion, nullptr), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, nullptr, &info), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_PassAudioBlock, nullptr), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_Get, nullptr, L"IsLive"), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_Set, nullptr, L"IsLive"), 0);
    EXPECT_EQ(CALL_PLUGIN(DSP_Destroy, nullptr), 1);
}

TEST(EntryPoints, GetKnowsOnePropertyAndEveryKeyIsTraced) {
    PluginInstance plugin;
    const struct {
        const wchar_t* key;
        int32_t expected;
    } rows[] = {{L"IsLive", 1}, {L"islive", 0}, {L"IsLive ", 0}, {L"", 0}, {L"IsLiv", 0}, {nullptr, 0}};
    for (const auto& row : rows) {
        const std::wstring key = row.key != nullptr ? row.key : L"";
        EXPECT_EQ(CALL_PLUGIN(DSP_Get, plugin.Instance(), row.key), row.expected) << key;
        EXPECT_EQ(plugin.Trace(), key + L"  [clDSP_WriteMetadataFile::Get]\r\n");
        EXPECT_EQ(CALL_PLUGIN(DSP_Set, plugin.Instance(), row.key), 0) << key;
        EXPECT_EQ(plugin.Trace(), key + L"  [clDSP_WriteMetadataFile::Set]\r\n");
    }
    EXPECT_EQ(plugin.Errors(), L"");
}

TEST(EntryPoints, AudioIsNotTracedAndNullTextsHaveADefinedResult) {
    PluginInstance plugin;
    EXPECT_EQ(CALL_PLUGIN(DSP_PassAudioBlock, plugin.Instance()), 1);
    EXPECT_EQ(PluginExport<void()>("DSP_PassNonLive"), PluginExport<void()>("DSP_PassAudioBlock"));
    EXPECT_EQ(plugin.Trace(), L"");
    EXPECT_EQ(CALL_PLUGIN(DSP_BeginConversion, plugin.Instance(), nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(CALL_PLUGIN(DSP_AfterConversion, plugin.Instance(), nullptr), 1);
    EXPECT_TRUE(plugin.Trace().ends_with(L"\r\n<-<-  [clDSP_WriteMetadataFile::AfterConversion]\r\n"));
    plugin.Destroy();
    EXPECT_EQ(plugin.Trace(), L"");
}

} // namespace
