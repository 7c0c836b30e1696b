#pragma once

#include "tests/shared/CallStubs.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>
#include <winternl.h>

#include <atomic>
#include <deque>
#include <map>
#include <mutex>

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
            int64_t kept = change;
            std::erase_if(held, [&](const Entry& entry) { return entry.taker == name && kept-- > 0; });
        }
        return text;
    }

    /// Puts stubs in the methods that every object has: "query NAME", "addRef" and "release".
    static void Watch(void* object, const std::string& name = "object") {
        WatchMethod("query " + name, object, 0);
        WatchMethod("addRef", object, 1);
        WatchMethod("release", object, 2);
    }

    /// Puts a stub in another method.
    static void WatchMethod(const std::string& name, void* object, size_t method) {
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
                Account::Take("free", "malloc", Key(block), count);
            }
            return block;
        }
        static void* TakeZeroed(size_t count, size_t each) {
            void* block = Take(count * each);
            return block != nullptr ? std::memset(block, 0, count * each) : nullptr;
        }
        static void Give(void* block) {
            if (const uint64_t count = Account::Give("free", "free", Key(block)); block != nullptr) {
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
        std::string_view giver; // that is to give it back
        std::string_view taker;
        uint64_t key;
        uint64_t value;
    };

    /// When a call takes something, by its answer.
    enum class If { NotNull, Zero, NotNegative, Any };

    /// Which thing of its kind it is: the argument of that number, counting from 1, or one of these.
    static constexpr size_t kAnswer = 0;
    static constexpr size_t kTo = 10;     // plus n: what the n-th argument points to
    static constexpr size_t kThread = 20; // the thread has one

    struct Function {
        const char* taker;
        If takes;
        size_t taken;
        const char* giver;
        size_t given;
    };
    static constexpr Function kFunctions[] = {
        {"CreateFileW", If::NotNull, kAnswer, "CloseHandle", 1},
        {"CreateMutexW", If::NotNull, kAnswer, "CloseHandle", 1},
        {"CreateFileMappingW", If::NotNull, kAnswer, "CloseHandle", 1},
        {"MapViewOfFile", If::NotNull, kAnswer, "UnmapViewOfFile", 1},
        {"WaitForSingleObject", If::Zero, 1, "ReleaseMutex", 1},
        {"AcquireSRWLockExclusive", If::Any, 1, "ReleaseSRWLockExclusive", 1},
        {"EnterCriticalSection", If::Any, 1, "LeaveCriticalSection", 1},
        {"InitializeCriticalSection", If::Any, 1, "DeleteCriticalSection", 1},
        {"WSAStartup", If::Zero, kThread, "WSACleanup", kThread},
        {"FindFirstFileW", If::NotNull, kAnswer, "FindClose", 1},
        {"RegCreateKeyExW", If::Zero, kTo + 8, "RegCloseKey", 1},
        {"LoadLibraryW", If::NotNull, kAnswer, "FreeLibrary", 1},
        {"GetDC", If::NotNull, kAnswer, "ReleaseDC", 2},
        {"BeginPaint", If::NotNull, 1, "EndPaint", 1},
        {"CreateFontIndirectW", If::NotNull, kAnswer, "DeleteObject", 1},
        {"LoadImageW", If::NotNull, kAnswer, "DestroyIcon", 1},
        {"CreateDialogParamW", If::NotNull, kAnswer, "DestroyWindow", 1},
        {"SetTimer", If::NotNull, 2, "KillTimer", 2},
        {"SetWindowSubclass", If::NotNull, 3, "RemoveWindowSubclass", 3},
        {"CoInitialize", If::NotNegative, kThread, "CoUninitialize", kThread},
        {"CoCreateInstance", If::NotNegative, kTo + 5, "release", 1},
        {"CreateStreamOnHGlobal", If::NotNegative, kTo + 3, "release", 1},
        {"GetErrorInfo", If::NotNegative, kTo + 2, "release", 1},
        {"parseError", If::NotNegative, kTo + 2, "release", 1},
        {"createProcessor", If::NotNegative, kTo + 2, "release", 1},
        {"query", If::NotNegative, kTo + 3, "release", 1},
        {"addRef", If::Any, 1, "release", 1},
        {"SysAllocStringLen", If::NotNull, kAnswer, "SysFreeString", 1},
        {"reason", If::NotNegative, kTo + 2, "SysFreeString", 1},
        {"description", If::NotNegative, kTo + 2, "SysFreeString", 1},
        {"GlobalLock", If::NotNull, 1, "GlobalUnlock", 1},
    };

    static uint64_t Key(const void* pointer) { return reinterpret_cast<uint64_t>(pointer); }

    static void AddFault(std::string_view text) {
        const std::lock_guard lock(mutex);
        faults += "; ";
        faults += text;
    }

    static void Take(std::string_view giver, std::string_view taker, uint64_t key, uint64_t value = 0) {
        const std::lock_guard lock(mutex);
        held.push_front({giver, taker, key, value});
    }

    /// The entry's value. `caller` gives back what is the giver's.
    static uint64_t Give(std::string_view giver, std::string_view caller, uint64_t key) {
        const std::lock_guard lock(mutex);
        const auto last = Find(giver, key);
        if (last == held.end()) {
            if (key != 0) { // null is nothing
                faults += "; " + std::string(caller) + ": not taken";
            }
            return 0;
        }
        const uint64_t value = last->value;
        held.erase(last);
        return value;
    }

    /// What must have been given back before that.
    static void GiveDependent(std::string_view giver, uint64_t key) {
        const std::lock_guard lock(mutex);
        const size_t count = std::erase_if(held, [&](const Entry& entry) {
            return (giver == "ReleaseDC" && entry.giver == "SelectObject" && entry.key == key) ||
                   (giver == "CoUninitialize" && entry.giver == "release");
        });
        if (count != 0) {
            faults += "; " + std::string(giver) + ": too early";
        }
    }

    static std::deque<Entry>::iterator Find(std::string_view giver, uint64_t key) {
        return std::find_if(held.begin(), held.end(),
                            [&](const Entry& entry) { return entry.key == key && entry.giver == giver; });
    }

    /// What is replaced for a time is taken when it changes first and given back when it is as before.
    static void Replace(std::string_view function, uint64_t key, uint64_t before, uint64_t now) {
        const std::lock_guard lock(mutex);
        const auto last = Find(function, key);
        if (last == held.end()) {
            if (before != now) {
                held.push_front({function, function, key, before});
            }
        } else if (last->value == now) {
            held.erase(last);
        }
    }

    /// In the place of every function and method of the table. Passes any other integers and pointers on as
    /// it got them.
    static int64_t Pass(int64_t a, int64_t b, int64_t c, int64_t d, int64_t e, int64_t f, int64_t g,
                        int64_t h, int64_t i) {
        const CallStub& stub = CallStub::Current();
        const Function& row = *static_cast<const Function*>(stub.data);
        const int64_t arguments[] = {0, a, b, c, d, e, f, g, h, i};
        const auto thing = [&](size_t which, int64_t answer) -> uint64_t {
            return which == kThread   ? GetCurrentThreadId()
                   : which == kAnswer ? static_cast<uint64_t>(answer)
                   : which < kTo      ? static_cast<uint64_t>(arguments[which])
                                      : *reinterpret_cast<uint64_t*>(arguments[which - kTo]);
        };
        const bool gives = stub.name == row.giver;
        if (gives) {
            Give(row.giver, row.giver, thing(row.given, 0));
            GiveDependent(row.giver, thing(row.given, 0));
        }
        const int64_t answer = reinterpret_cast<decltype(&Pass)>(stub.function)(a, b, c, d, e, f, g, h, i);
        const auto low = static_cast<int32_t>(answer); // of which an answer of 32 bits consists
        if (!gives && (row.takes == If::Any || (row.takes == If::NotNull && answer != 0 && answer != -1) ||
                       (row.takes == If::Zero && low == 0) || (row.takes == If::NotNegative && low >= 0))) {
            const DWORD error = GetLastError();
            if (stub.name == "CreateStreamOnHGlobal" && static_cast<BOOL>(b) == FALSE) {
                AddFault("a stream that does not free its block");
            }
            if (const uint64_t taken = thing(row.taken, answer); taken != 0) {
                Take(row.giver, row.taker, taken);
                if (row.giver == std::string_view("release")) {
                    Watch(reinterpret_cast<void*>(taken));
                }
                if (stub.name == "GetErrorInfo") {
                    WatchMethod("description", reinterpret_cast<void*>(taken), 5);
                }
            }
            SetLastError(error);
        }
        return answer;
    }

    template<class Type>
    static Type* Original(Type*) {
        return reinterpret_cast<Type*>(CallStub::Current().function);
    }

    static HGDIOBJ WINAPI Select(HDC dc, HGDIOBJ object) {
        const HGDIOBJ before = Original(Select)(dc, object);
        if (before != nullptr) {
            Replace("SelectObject", Key(dc), Key(before), Key(object));
        }
        return before;
    }

    static BOOL WINAPI SetErrorMode(DWORD mode, DWORD* old) {
        auto* const original = Original(SetErrorMode);
        const DWORD before = GetThreadErrorMode();
        const BOOL isSet = original(mode, old);
        Replace("SetThreadErrorMode", GetCurrentThreadId(), before, GetThreadErrorMode());
        return isSet;
    }

    static HRESULT WINAPI Clear(VARIANT* value) {
        auto* const original = Original(Clear);
        // The plug-in has no other kinds. Both lie in one place.
        Give(value->vt == VT_BSTR ? "SysFreeString" : "release", "VariantClear", Key(value->punkVal));
        return original(value);
    }

    static void Adopt(CallStub& stub) {
        const std::pair<const char*, void*> others[] = {
            {"malloc", reinterpret_cast<void*>(Heap::Take)},
            {"calloc", reinterpret_cast<void*>(Heap::TakeZeroed)},
            {"free", reinterpret_cast<void*>(Heap::Give)},
            {"SelectObject", reinterpret_cast<void*>(Select)},
            {"SetThreadErrorMode", reinterpret_cast<void*>(SetErrorMode)},
            {"VariantClear", reinterpret_cast<void*>(Clear)},
        };
        void* wrapper = stub.function;
        for (const auto& [name, function] : others) {
            wrapper = stub.name == name ? function : wrapper;
        }
        const std::string name = stub.name.substr(0, stub.name.find(' ')); // "query", of whatever object
        for (const Function& row : kFunctions) {
            if (name == row.taker || name == row.giver) {
                stub.data = &row;
                wrapper = reinterpret_cast<void*>(Pass);
            }
        }
        stub.target = stub.target == stub.function ? wrapper : stub.target;
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
    inline static std::wstring& library = *new std::wstring;
    inline static HMODULE module = nullptr;
    inline static std::mutex& mutex = *new std::mutex;
    inline static std::deque<Entry>& held = *new std::deque<Entry>; // the newest first
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
