#include "tools/check/SystemFacts.h"

#include <windows.h>

#include <vector>

namespace {

/// The file version of a library, or "none".
std::string FileVersion(const std::filesystem::path& path) {
    std::vector<char> data(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (!GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
        !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &size)) {
        return "none";
    }
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionLS));
}

template<class Function>
Function* SystemFunction(const char* name) {
    const FARPROC address = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

/// GetVersionEx reports no version later than those that the program's manifest names.
std::string WindowsVersion() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    SystemFunction<LONG WINAPI(OSVERSIONINFOW*)>("RtlGetVersion")(&version);
    std::string text = std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) +
                       "." + std::to_string(version.dwBuildNumber);
    if (auto* wineVersion = SystemFunction<const char * CDECL()>("wine_get_version");
        wineVersion != nullptr) {
        text += std::string(" (Wine ") + wineVersion() + ")";
    }
    return text;
}

std::string LocaleName() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    return std::filesystem::path(name).string();
}

int Dpi() {
    SetProcessDPIAware();
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

} // namespace

std::string SystemFacts(const std::filesystem::path& plugin) {
    wchar_t system[MAX_PATH] = {};
    GetSystemDirectoryW(system, MAX_PATH);
    return "WriteMetadataFile " + FileVersion(plugin) + "\nWindows " + WindowsVersion() + "\nMSXML " +
           FileVersion(std::filesystem::path(system) / "msxml3.dll") + "\nlocale " + LocaleName() +
           ", code page " + std::to_string(GetACP()) + ", " + std::to_string(Dpi()) + " dpi\n";
}
