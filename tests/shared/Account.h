#pragma once

#include "tests/shared/CallStubs.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>
#include <winternl.h>

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <vector>

/// What the plug-in has taken from the system and not given back, by the stubs of its imports and of the COM
/// methods that it calls. Exact on any system: it counts the plug-in's own calls and nothing else. A call
/// that fails takes nothing; to give back what was not taken is a fault.
class Account {
public:
    /// By the name of the function that took it; and the bytes of all memory blocks.
    using Balance = std::map<std::string, int64_t>;

    /// From now on stubs are put in the place of every import of that library, the plug-in or one of ours
    /// beside it, whenever it is loaded, before its first instruction runs.
    static void Keep(const std::wstring& libraryName = L"WriteMetadataFile.dll") {
        library = libraryName;
        static const bool isKept = [] {
            void* cookie = nullptr;
            const auto watch = reinterpret_cast<LONG(NTAPI*)(ULONG, decltype(&OnModule), void*, void**)>(
                reinterpret_cast<void*>(
                    GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification")));
            return watch(0, OnModule, nullptr, &cookie) == 0;
        }();
        EXPECT_TRUE(isKept);
    }

    static CallStubs& Stubs() { return *stubs; }

    static Balance Now() {
        const std::lock_guard lock(mutex);
        Balance balance = {{"bytes", Heap::used}};
        for (const Entry& entry : held) {
            ++balance[std::string(entry.taker)];
        }
        return balance;
    }

    /// How many things that this function took are still held.
    static int64_t Held(const std::string& taker) { return Now()[taker]; }

    /// What has changed since the balance, and the faults: "" when all is even. It is forgotten then.
    static std::string Since(const Balance& before) {
        Balance changes = Now();
        for (const auto& [name, count] : before) {
            changes[name] -= count;
        }
        std::string text = std::exchange(faults, "");
        for (const auto& [name, change] : changes) {
            if (change != 0) {
                text += "; " + name + ": " + std::to_string(change) + " kept";
            }
            for (int64_t count = change; count > 0 && name != "bytes"; --count) {
                held.erase(std::find_if(held.rbegin(), held.rend(),
                                        [&](const Entry& entry) { return entry.taker == name; })
                               .base() -
                           1);
            }
        }
        return text;
    }

    /// Puts stubs in the methods that every object has: "query NAME", "addRef" and "release".
    static void Watch(void* object, const std::string& name = "object") {
        Wrap(stubs->AddMethod("query " + name, object, 0, module), reinterpret_cast<void*>(Query));
        Wrap(stubs->AddMethod("addRef", object, 1, module), reinterpret_cast<void*>(AddRef));
        Wrap(stubs->AddMethod("release", object, 2, module), reinterpret_cast<void*>(Release));
    }

    /// Puts a stub in another method.
    static void WatchMethod(const char* name, void* object, size_t method) {
        Adopt(stubs->AddMethod(name, object, method, module));
    }

    /// The plug-in's memory, which can run out.
    struct Heap {
        inline static std::atomic<uint64_t> calls = 0;
        inline static uint64_t lastCall = 0; // that finds no memory; 0 for none
        inline static std::atomic<int64_t> used = 0;
        inline static int64_t size = INT64_MAX;

        static void EndAt(uint64_t call) {
            calls = 0;
            lastCall = call;
            size = INT64_MAX;
        }

    private:
        friend Account;
        static constexpr uint64_t kEnd = 0xE7D1'5C3A'92B8'640F; // behind each block

        static void* Take(size_t count) {
            const auto bytes = static_cast<int64_t>(count);
            if (++calls == lastCall) {
                size = used + bytes - 1;
            }
            auto* block = used + bytes <= size ? static_cast<char*>(malloc(count + sizeof kEnd)) : nullptr;
            if (block != nullptr) {
                std::memcpy(block + count, &kEnd, sizeof kEnd);
                used += bytes;
                Account::Take("block", "malloc", Key(block), count);
            }
            return block;
        }
        static void* TakeZeroed(size_t count, size_t each) {
            void* block = Take(count * each);
            return block != nullptr ? std::memset(block, 0, count * each) : nullptr;
        }
        static void* TakeAgain(void* old, size_t count) {
            void* block = Take(count);
            if (block != nullptr && old != nullptr) {
                std::memcpy(block, old, std::min(count, _msize(old) - sizeof kEnd));
                Give(old);
            }
            return block;
        }
        static void Give(void* block) {
            if (const uint64_t count = Account::Give("block", "free", Key(block)); block != nullptr) {
                if (std::memcmp(static_cast<char*>(block) + count, &kEnd, sizeof kEnd) != 0) {
                    AddFault("written behind a block");
                }
                used -= static_cast<int64_t>(count);
            }
            free(block);
        }
    };

private:
    struct Entry {
        std::string_view kind;
        std::string_view taker;
        uint64_t key;
        uint64_t value;
    };

    /// When a call takes something, by its answer; or that it gives it back.
    enum class If { Handle, NotZero, Zero, NotNegative, Any, Gives };

    /// Which thing of its kind it is: the argument of that number, counting from 1, or one of these.
    static constexpr size_t kAnswer = 0;
    static constexpr size_t kTo = 10; // plus n: what the n-th argument points to
    static constexpr size_t kThread = 20;
    static constexpr size_t kOne = 21; // there is but one of the kind

    struct Function {
        const char* name;
        const char* kind;
        If takes;
        size_t key;
    };
    static constexpr Function kFunctions[] = {
        {"CreateFileW", "handle", If::Handle, kAnswer},
        {"CreateMutexW", "handle", If::Handle, kAnswer},
        {"CreateFileMappingW", "handle", If::Handle, kAnswer},
        {"CloseHandle", "handle", If::Gives, 1},
        {"MapViewOfFile", "view", If::Handle, kAnswer},
        {"UnmapViewOfFile", "view", If::Gives, 1},
        {"WaitForSingleObject", "lock", If::Zero, 1},
        {"ReleaseMutex", "lock", If::Gives, 1},
        {"AcquireSRWLockExclusive", "lock", If::Any, 1},
        {"ReleaseSRWLockExclusive", "lock", If::Gives, 1},
        {"EnterCriticalSection", "lock", If::Any, 1},
        {"LeaveCriticalSection", "lock", If::Gives, 1},
        {"InitializeCriticalSection", "critical section", If::Any, 1},
        {"DeleteCriticalSection", "critical section", If::Gives, 1},
        {"WSAStartup", "Winsock", If::Zero, kOne},
        {"WSACleanup", "Winsock", If::Gives, kOne},
        {"FindFirstFileW", "search", If::Handle, kAnswer},
        {"FindClose", "search", If::Gives, 1},
        {"RegCreateKeyExW", "registry key", If::Zero, kTo + 8},
        {"RegCloseKey", "registry key", If::Gives, 1},
        {"LoadLibraryW", "module", If::Handle, kAnswer},
        {"FreeLibrary", "module", If::Gives, 1},
        {"GetDC", "device context", If::Handle, kAnswer},
        {"ReleaseDC", "device context", If::Gives, 2},
        {"BeginPaint", "painting", If::Handle, 1},
        {"EndPaint", "painting", If::Gives, 1},
        {"CreateFontIndirectW", "font", If::Handle, kAnswer},
        {"DeleteObject", "font", If::Gives, 1},
        {"LoadImageW", "icon", If::Handle, kAnswer},
        {"DestroyIcon", "icon", If::Gives, 1},
        {"CreateDialogParamW", "window", If::Handle, kAnswer},
        {"DestroyWindow", "window", If::Gives, 1},
        {"SetTimer", "timer", If::Handle, 2},
        {"KillTimer", "timer", If::Gives, 2},
        {"SetWindowSubclass", "subclass", If::NotZero, 3},
        {"RemoveWindowSubclass", "subclass", If::Gives, 3},
        {"CoInitialize", "COM entry", If::NotNegative, kThread},
        {"CoUninitialize", "COM entry", If::Gives, kThread},
        {"CoCreateInstance", "reference", If::NotNegative, kTo + 5},
        {"CreateStreamOnHGlobal", "reference", If::NotNegative, kTo + 3},
        {"GetErrorInfo", "reference", If::NotNegative, kTo + 2},
        {"parseError", "reference", If::NotNegative, kTo + 2},
        {"createProcessor", "reference", If::NotNegative, kTo + 2},
        {"SysAllocStringLen", "BSTR", If::Handle, kAnswer},
        {"reason", "BSTR", If::NotNegative, kTo + 2},
        {"description", "BSTR", If::NotNegative, kTo + 2},
        {"SysFreeString", "BSTR", If::Gives, 1},
        {"GlobalLock", "locked block", If::Handle, 1},
        {"GlobalUnlock", "locked block", If::Gives, 1},
    };

    static uint64_t Key(const void* pointer) { return reinterpret_cast<uint64_t>(pointer); }

    static void AddFault(std::string_view text) {
        const std::lock_guard lock(mutex);
        faults += "; ";
        faults += text;
    }

    static void Take(std::string_view kind, std::string_view taker, uint64_t key, uint64_t value = 0) {
        const std::lock_guard lock(mutex);
        held.push_back({kind, taker, key, value});
    }

    /// The entry's value.
    static uint64_t Give(std::string_view kind, std::string_view giver, uint64_t key) {
        const std::lock_guard lock(mutex);
        const auto last = Find(kind, key);
        if (last == held.rend()) {
            if (key != 0) { // null is nothing
                faults += "; " + std::string(giver) + ": not taken";
            }
            return 0;
        }
        const uint64_t value = last->value;
        held.erase(last.base() - 1);
        return value;
    }

    /// What must have been given back before that.
    static void GiveDependent(std::string_view giver, uint64_t key) {
        const std::lock_guard lock(mutex);
        const size_t count = std::erase_if(held, [&](const Entry& entry) {
            return (giver == "ReleaseDC" && entry.kind == "selection" && entry.key == key) ||
                   (giver == "CoUninitialize" && entry.kind == "reference");
        });
        if (count != 0) {
            faults += "; " + std::string(giver) + ": too early";
        }
    }

    static std::vector<Entry>::reverse_iterator Find(std::string_view kind, uint64_t key) {
        return std::find_if(held.rbegin(), held.rend(),
                            [&](const Entry& entry) { return entry.key == key && entry.kind == kind; });
    }

    /// What is replaced for a time is taken when it changes first and given back when it is as before.
    static void Replace(std::string_view kind, std::string_view taker, uint64_t key, uint64_t before,
                        uint64_t now) {
        const std::lock_guard lock(mutex);
        const auto last = Find(kind, key);
        if (last == held.rend()) {
            if (before != now) {
                held.push_back({kind, taker, key, before});
            }
        } else if (last->value == now) {
            held.erase(last.base() - 1);
        }
    }

    /// The function passes any other integers and pointers on as it got them.
    template<size_t index>
    static int64_t Pass(int64_t a, int64_t b, int64_t c, int64_t d, int64_t e, int64_t f, int64_t g,
                        int64_t h, int64_t i) {
        constexpr const Function& row = kFunctions[index];
        const int64_t arguments[] = {0, a, b, c, d, e, f, g, h, i};
        const auto key = [&](int64_t answer) -> uint64_t {
            return row.key == kThread   ? GetCurrentThreadId()
                   : row.key == kOne    ? 1
                   : row.key == kAnswer ? static_cast<uint64_t>(answer)
                   : row.key < 10       ? static_cast<uint64_t>(arguments[row.key % 10])
                                        : *reinterpret_cast<uint64_t*>(arguments[row.key % 10]);
        };
        if (row.takes == If::Gives) {
            Give(row.kind, row.name, key(0));
            GiveDependent(row.name, key(0));
        }
        auto* function = reinterpret_cast<decltype(&Pass<index>)>(stubOf[index]->function);
        const int64_t answer = function(a, b, c, d, e, f, g, h, i);
        const auto low = static_cast<int32_t>(answer); // of which an answer of 32 bits consists
        if (row.takes == If::Any || (row.takes == If::Handle && answer != 0 && answer != -1) ||
            (row.takes == If::NotZero && low != 0) || (row.takes == If::Zero && low == 0) ||
            (row.takes == If::NotNegative && low >= 0)) {
            const DWORD error = GetLastError();
            if (row.name == std::string_view("CreateStreamOnHGlobal") && static_cast<BOOL>(b) == FALSE) {
                AddFault("a stream that does not free its block");
            }
            if (const uint64_t taken = key(answer); taken != 0) {
                Take(row.kind, row.name, taken);
                if (row.kind == std::string_view("reference")) {
                    Watch(reinterpret_cast<void*>(taken));
                }
                if (row.name == std::string_view("GetErrorInfo")) {
                    WatchMethod("description", reinterpret_cast<void*>(taken), 5);
                }
            }
            SetLastError(error);
        }
        return answer;
    }

    template<class Type>
    static Type* Original(const char* name, Type*) {
        return reinterpret_cast<Type*>((*stubs)[name].function);
    }

    static HGDIOBJ WINAPI Select(HDC dc, HGDIOBJ object) {
        const HGDIOBJ before = Original("SelectObject", Select)(dc, object);
        if (before != nullptr) {
            Replace("selection", "SelectObject", Key(dc), Key(before), Key(object));
        }
        return before;
    }

    static BOOL WINAPI SetErrorMode(DWORD mode, DWORD* old) {
        const DWORD before = GetThreadErrorMode();
        const BOOL isSet = Original("SetThreadErrorMode", SetErrorMode)(mode, old);
        Replace("error mode", "SetThreadErrorMode", GetCurrentThreadId(), before, GetThreadErrorMode());
        return isSet;
    }

    static HRESULT WINAPI Clear(VARIANT* value) {
        if (value->vt == VT_BSTR) {
            Give("BSTR", "VariantClear", Key(value->bstrVal));
        } else if (value->vt == VT_UNKNOWN) {
            Give("reference", "VariantClear", Key(value->punkVal));
        }
        return Original("VariantClear", Clear)(value);
    }

    /// The method whose place a stub has taken: the stub's address stands in its code.
    template<class Type>
    static Type* Original(IUnknown* object, size_t method, Type*) {
        const CallStub* stub = nullptr;
        std::memcpy(&stub, (*reinterpret_cast<char***>(object))[method] + 2, sizeof stub);
        return reinterpret_cast<Type*>(stub->function);
    }

    static HRESULT WINAPI Query(IUnknown* object, const IID& id, void** result) {
        const HRESULT answer = Original(object, 0, Query)(object, id, result);
        if (SUCCEEDED(answer) && *result != nullptr) {
            Take("reference", "query", Key(*result));
            Watch(*result);
        }
        return answer;
    }

    static ULONG WINAPI AddRef(IUnknown* object) {
        Take("reference", "addRef", Key(object));
        return Original(object, 1, AddRef)(object);
    }

    static ULONG WINAPI Release(IUnknown* object) {
        Give("reference", "release", Key(object));
        return Original(object, 2, Release)(object);
    }

    template<size_t... indices>
    static void* Passing(size_t index, std::index_sequence<indices...>) {
        void* const functions[] = {reinterpret_cast<void*>(Pass<indices>)...};
        return functions[index];
    }

    static void Wrap(CallStub& stub, void* wrapper) {
        stub.target = stub.target == stub.function ? wrapper : stub.target;
    }

    static void Adopt(CallStub& stub) {
        const std::pair<const char*, void*> others[] = {
            {"malloc", reinterpret_cast<void*>(Heap::Take)},
            {"calloc", reinterpret_cast<void*>(Heap::TakeZeroed)},
            {"realloc", reinterpret_cast<void*>(Heap::TakeAgain)},
            {"free", reinterpret_cast<void*>(Heap::Give)},
            {"SelectObject", reinterpret_cast<void*>(Select)},
            {"SetThreadErrorMode", reinterpret_cast<void*>(SetErrorMode)},
            {"VariantClear", reinterpret_cast<void*>(Clear)},
        };
        for (const auto& [name, wrapper] : others) {
            if (stub.name == name) {
                Wrap(stub, wrapper);
            }
        }
        for (size_t index = 0; index < std::size(kFunctions); ++index) {
            if (stub.name == kFunctions[index].name) {
                stubOf[index] = &stub;
                Wrap(stub, Passing(index, std::make_index_sequence<std::size(kFunctions)>()));
            }
        }
    }

    /// What the system tells of a module that it has loaded or is about to unload.
    struct ModuleData {
        ULONG flags;
        const UNICODE_STRING* path;
        const UNICODE_STRING* name;
        void* base;
        ULONG size;
    };
    static void NTAPI OnModule(ULONG reason, const ModuleData* data, void* /*context*/) {
        constexpr ULONG kLoaded = 1;
        if (reason == kLoaded &&
            std::wstring_view(data->name->Buffer, data->name->Length / sizeof(wchar_t)) == library) {
            module = static_cast<HMODULE>(data->base);
            stubs->AddImports(module);
            stubs->MoveCallers(module);
            for (CallStub& stub : *stubs) {
                Adopt(stub);
            }
        }
    }

    inline static CallStubs* const stubs = new CallStubs; // replaced pointers lead to them until the end
    inline static CallStub* stubOf[std::size(kFunctions)] = {};
    inline static std::wstring& library = *new std::wstring;
    inline static HMODULE module = nullptr;
    inline static std::mutex& mutex = *new std::mutex;
    inline static std::vector<Entry>& held = *new std::vector<Entry>;
    inline static std::string& faults = *new std::string;
};

/// The first base of a fixture that loads the plug-in: between load and unload all must be given back.
class Accounted {
protected:
    Accounted() { Account::Keep(); }
    ~Accounted() { EXPECT_EQ(Account::Since({}), "") << "after the unload"; }
    Accounted(const Accounted&) = delete;
    Accounted& operator=(const Accounted&) = delete;
};
