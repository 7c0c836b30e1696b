#include "plugin/Exports.h"

#include "plugin/clDSP_WriteMetadataFile.h"
#include "support/DebugLog.h"

#include <new>
#include <utility>

namespace {

/// Runs the work of one export on a non-null instance. No exception reaches the host: when memory runs out
/// the work is abandoned, the host gets 0, and an error line reports it.
template<class Work>
auto Guarded(clDSP_WriteMetadataFile* instance, Work work) noexcept -> decltype(work(*instance)) {
    if (instance == nullptr) {
        return {};
    }
    try {
        return work(*instance);
    } catch (const std::bad_alloc&) {
        LogError(L"Out of memory", instance->Record(), nullptr);
        return {};
    }
}

} // namespace

clDSP_WriteMetadataFile* DSP_Create(const CreateRecord* record) {
    return new clDSP_WriteMetadataFile(*record);
}

int32_t DSP_Destroy(clDSP_WriteMetadataFile* instance) {
    delete instance;
    return 1;
}

HWND DSP_ShowConfigBit(clDSP_WriteMetadataFile* instance, HWND parent, int32_t x, int32_t y,
                       const wchar_t* settings) {
    return Guarded(instance, [=](clDSP_WriteMetadataFile& plugin) {
        return plugin.ShowConfigBit(parent, x, y, settings);
    });
}

const wchar_t* DSP_RemoveConfigBit(clDSP_WriteMetadataFile* instance, int64_t mode) {
    return Guarded(instance,
                   [mode](clDSP_WriteMetadataFile& plugin) { return plugin.RemoveConfigBit(mode); });
}

int32_t DSP_BeginConversion(clDSP_WriteMetadataFile* instance, void* /*ignored*/, const wchar_t* settings,
                            void* /*ignored*/) {
    return Guarded(instance, [settings](clDSP_WriteMetadataFile& plugin) {
        plugin.BeginConversion(settings);
        return 1;
    });
}

int32_t DSP_EndConversion(clDSP_WriteMetadataFile* instance) {
    return Guarded(instance, [](clDSP_WriteMetadataFile& plugin) {
        plugin.EndConversion();
        return 1;
    });
}

int32_t DSP_AfterConversion(clDSP_WriteMetadataFile* instance, const AfterConversionInfo* info) {
    return Guarded(instance, [info](clDSP_WriteMetadataFile& plugin) {
        plugin.AfterConversion(info);
        return 1;
    });
}

int32_t DSP_PassAudioBlock(clDSP_WriteMetadataFile* instance) {
    return instance != nullptr ? 1 : 0;
}

int32_t DSP_Get(clDSP_WriteMetadataFile* instance, const wchar_t* key) {
    return Guarded(instance, [key](clDSP_WriteMetadataFile& plugin) { return plugin.Get(key) ? 1 : 0; });
}

int32_t DSP_Set(clDSP_WriteMetadataFile* instance, const wchar_t* key) {
    return Guarded(instance, [key](clDSP_WriteMetadataFile& plugin) {
        plugin.Set(key);
        return 0;
    });
}
