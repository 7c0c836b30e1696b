#include "bench/BareConversion.h"

#include "support/Owner.h"
#include "tests/shared/Decoders.h"

#include <iterator>

namespace {

const OwnedHandle logMutex(CreateMutexW(nullptr, FALSE, nullptr));

/// A trace line without a file for it still takes its turn.
void Trace(int lines) {
    for (int i = 0; i < lines; ++i) {
        WaitForSingleObject(logMutex.Get(), INFINITE);
        ReleaseMutex(logMutex.Get());
    }
}

void Find(const std::wstring& pattern) {
    WIN32_FIND_DATAW data = {};
    const OwnedFind search(FindFirstFileW(pattern.c_str(), &data));
}

void ReadTimes(const std::wstring& path) {
    for (int which = 0; which < 3; ++which) {
        Trace(1);
        Find(path);
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
    RegCreateKeyExW(HKEY_CURRENT_USER, Decoders::kCacheKey, 0, nullptr, 0, access, nullptr, &key, nullptr);
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
struct Decoder {
    explicit Decoder(const std::wstring& path) : library(LoadLibraryW(path.c_str())) {
        for (const char* name : {"Set", "Close", "DecodeBlock", "SetPosition", "DeleteATag"}) {
            Find(name);
        }
    }
    ~Decoder() { destroy(instance); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    void* Find(const char* name) const {
        return reinterpret_cast<void*>(GetProcAddress(library.Get(), name));
    }

    OwnedModule library;
    DecoderCreateFunction* create = reinterpret_cast<DecoderCreateFunction*>(Find("Create"));
    DecoderDestroyFunction* destroy = reinterpret_cast<DecoderDestroyFunction*>(Find("Destroy"));
    DecoderGetFunction* get = reinterpret_cast<DecoderGetFunction*>(Find("Get"));
    DecoderOpenFunction* open = reinterpret_cast<DecoderOpenFunction*>(Find("Open"));
    void* instance = create(nullptr);
};

/// Asks for the listed extensions up to this one, which must be among them.
void AskForExtension(const Decoder& decoder, const wchar_t* extension) {
    DecoderGetRecord record = {};
    for (uint32_t index = 1;
         decoder.get(decoder.instance, L"Decodes", &record) != 0 && wcscmp(record.text, extension) != 0;
         ++index) {
        record = {};
        record.index = index;
    }
}

} // namespace

void BareConversion::ReadFromDecoder(const std::wstring& file, OpenFlags flag) const {
    Trace(1);
    Find(file);
    Trace(1);
    wchar_t program[1000];
    GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
    const wchar_t* const extension = file.c_str() + file.rfind(L'.');
    ReadCache(extension);
    if (library.empty()) {
        Find(decoderPattern);
        Trace(1);
        return;
    }
    const Decoder chosen(library);
    AskForExtension(chosen, extension);
    WriteCache(extension, library);
    {
        const Decoder reader(library);
        DecoderOpenRecord record = {};
        record.fileName = file.c_str();
        record.openFlags = flag;
        reader.open(reader.instance, &record);
    }
    Trace(flag == kOpenIDTags ? 3 : 2);
}

void BareConversion::Run(const std::function<void(HANDLE file)>& write) const {
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
