#include "tools/host/PluginLibrary.h"

template<class Function>
void PluginLibrary::Bind(Function*& function, const char* name, bool needed) {
    function = m_library.Export<Function>(name);
    if (function == nullptr && needed && m_missingExport == nullptr) {
        m_missingExport = name;
    }
}

bool PluginLibrary::Load(const wchar_t* path) {
    if (!m_library.Load(path)) {
        return false;
    }
    Bind(create, "DSP_Create", true);
    Bind(destroy, "DSP_Destroy", true);
    Bind(beginConversion, "DSP_BeginConversion", true);
    Bind(endConversion, "DSP_EndConversion", true);
    Bind(afterConversion, "DSP_AfterConversion", true);
    Bind(passAudioBlock, "DSP_PassAudioBlock", true);
    Bind(passNonLive, "DSP_PassNonLive", true);
    Bind(get, "DSP_Get", true);
    Bind(set, "DSP_Set", true);
    Bind(showConfigBit, "DSP_ShowConfigBit", false);
    Bind(removeConfigBit, "DSP_RemoveConfigBit", false);
    return m_missingExport == nullptr;
}
