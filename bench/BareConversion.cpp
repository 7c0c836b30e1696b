#include "bench/BareConversion.h"

#include "support/Owner.h"

#include <cstring>
#include <iterator>

int decoderCalls = 0;

namespace {

const OwnedHandle logMutex(CreateMutexW(nullptr, FALSE, nullptr));

/// A trace line without a file for it still takes its turn.
void Trace(int lines) {
    for (int i = 0; i < lines; ++i) {
        WaitForSingleObject(logMutex.Get(), INFINITE);
        ReleaseMutex(logMutex.Get());
    }
}

void CheckExistence(const std::wstring& file) {
    WIN32_FIND_DATAW data = {};
    const OwnedFind search(FindFirstFileW(file.c_str(), &data));
}

void ReadTimes(const std::wstring& path) {
    for (int which = 0; which < 3; ++which) {
        Trace(1);
        CheckExistence(path);
        FILETIME fileTime = {};
        {
            const OwnedFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                             nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
            GetFileTime(file.Get(), which == 0 ? &fileTime : nullptr, which == 2 ? &fileTime : nullptr,
                        which == 1 ? &fileTime : nullptr);
        }
        SYSTEMTIME time = {};
        FileTimeToSystemTime(&fileTime, &time);
        wchar_t text[32];
        const int size = static_cast<int>(std::size(text));
        GetDateFormatW(LOCALE_USER_DEFAULT, 0, &time, L"yyyy-MM-dd", text, size);
        GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_FORCE24HOURFORMAT, &time, L"hh:mm:ss", text, size);
        Trace(1);
    }
}

OwnedKey OpenCache(REGSAM access) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Brevik\\Zentaro\\DecoderCache64", 0, nullptr, 0, access,
                    nullptr, &key, nullptr);
    return OwnedKey(key);
}

void ReadCache(const wchar_t* extension) {
    const OwnedKey key = OpenCache(KEY_QUERY_VALUE);
    DWORD size = 0;
    if (RegQueryValueExW(key.Get(), extension, nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS) {
        wchar_t path[1000];
        size = sizeof path;
        RegQueryValueExW(key.Get(), extension, nullptr, nullptr, reinterpret_cast<BYTE*>(path), &size);
    }
}

void WriteCache(const wchar_t* extension, const std::wstring& library) {
    const OwnedKey key = OpenCache(KEY_WRITE);
    RegSetValueExW(key.Get(), extension, 0, REG_SZ, reinterpret_cast<const BYTE*>(library.c_str()),
                   static_cast<DWORD>((library.size() + 1) * sizeof(wchar_t)));
}

/// A loaded decoder library with one instance.
class Decoder {
public:
    explicit Decoder(const std::wstring& library) : m_library(LoadLibraryW(library.c_str())) {
        for (const char* name : {"Set", "Close", "DecodeBlock", "SetPosition", "DeleteATag"}) {
            GetProcAddress(m_library.Get(), name);
        }
        Bind(m_create, "Create");
        Bind(m_destroy, "Destroy");
        Bind(m_get, "Get");
        Bind(m_open, "Open");
        m_instance = m_create(nullptr);
    }
    ~Decoder() { m_destroy(m_instance); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Asks for the listed extensions up to this one, which has to be among them.
    void Find(const wchar_t* extension) const {
        DecoderGetRecord record = {};
        while (m_get(m_instance, L"Decodes", &record) != 0 && wcscmp(record.text, extension) != 0) {
            ++record.index;
        }
    }

    void Open(const std::wstring& file, OpenFlags flag) const {
        DecoderOpenRecord record = {};
        record.fileName = file.c_str();
        record.openFlags = flag;
        m_open(m_instance, &record);
    }

private:
    template<class Function>
    void Bind(Function*& function, const char* name) const {
        function =
            reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_library.Get(), name)));
    }

    OwnedModule m_library;
    void* m_instance = nullptr;
    DecoderCreateFunction* m_create = nullptr;
    DecoderDestroyFunction* m_destroy = nullptr;
    DecoderGetFunction* m_get = nullptr;
    DecoderOpenFunction* m_open = nullptr;
};

} // namespace

void BareConversion::ReadFromDecoder(const std::wstring& file, OpenFlags flag) const {
    Trace(1);
    CheckExistence(file);
    Trace(1);
    wchar_t program[1000];
    GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
    ReadCache(extension);
    if (library.empty()) {
        CheckExistence(decoderPattern);
        Trace(1);
        return;
    }
    const Decoder chosen(library);
    chosen.Find(extension);
    WriteCache(extension, library);
    Decoder(library).Open(file, flag);
    Trace(flag == kOpenIDTags ? 3 : 2);
}

void BareConversion::Run(const WriteDocument& write) const {
    Trace(7); // up to the output path
    ReadFromDecoder(converted, kOpenAudioInfo);
    ReadFromDecoder(converted, kOpenAudioProperties);
    if (!source.empty()) {
        ReadFromDecoder(source, kOpenIDTags);
        ReadTimes(source);
    }
    ReadTimes(converted);
    {
        const OwnedFile file(CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        write(file.Get());
    }
    Trace(2);
}
