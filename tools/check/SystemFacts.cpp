#include "tools/check/SystemFacts.h"

#include "tools/check/Files.h"

#include <windows.h>

#include <bcrypt.h>

#include <cstdio>
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

/// In UTC.
std::string Now() {
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d UTC", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute);
    return text;
}

std::string Sha256(const std::string& bytes) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
    UCHAR digest[32] = {};
    BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0);
    auto* data = reinterpret_cast<UCHAR*>(const_cast<char*>(bytes.data()));
    BCryptHashData(hash, data, static_cast<ULONG>(bytes.size()), 0);
    BCryptFinishHash(hash, digest, sizeof digest, 0);
    BCryptDestroyHash(hash);
    BCryptCloseAlgorithmProvider(algorithm, 0);
    std::string text;
    for (const UCHAR byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

} // namespace

std::string SystemFacts(const std::filesystem::path& plugin, const std::string& commit) {
    return Now() + "\nWriteMetadataFile " + FileVersion(plugin) + ", commit " + commit + "\nSHA-256 " +
           Sha256(ReadFile(plugin)) + "\nWindows " + WindowsVersion() + "\nMSXML " +
           FileVersion(SystemFolder() / "msxml3.dll") + "\nlocale " + LocaleName() + ", code page " +
           std::to_string(GetACP()) + ", " + std::to_string(Dpi()) + " dpi\n";
}
