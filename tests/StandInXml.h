#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <string>
#include <vector>

/// What goes wrong in a stand-in. A step is named like its call, such as "xml.loadXML" or "create template".
struct XmlFault {
    const wchar_t* step = nullptr; ///< null for none
    HRESULT result = S_OK;
    const wchar_t* description = nullptr; ///< set as the thread's error information
    bool supportsErrorInfo = true;
    bool givesNothing = false; ///< answers S_OK with a null pointer or a false flag
};

/// Stand-ins for the XML parser's classes, registered for this process. They record every call and fail where
/// a test asks for it, which the real ones hardly ever do. COM must be initialised on the calling thread.
class StandInXml {
public:
    explicit StandInXml(XmlFault fault = {});
    ~StandInXml();
    StandInXml(const StandInXml&) = delete;
    StandInXml& operator=(const StandInXml&) = delete;

    /// Calls in their order, with their arguments where they matter, and "release …" for an object's last
    /// release.
    static std::vector<std::wstring> calls;

    /// What the stand-in's transformation writes.
    static constexpr const char* kOutput = "made by the stand-in";

private:
    DWORD m_registered[3] = {};
};
