#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>

// Calls that fail on demand, without a hook in the code that makes them: a stub of machine code takes the
// place of a function pointer, in the import table of a library or in the method table of a COM object.

/// One function pointer's stub: counts the calls and passes them on to `target`, all but one, which returns
/// `failure`. The machine code knows the fields by their offsets, and leaves the stub's address in the thread
/// information block, whose field ArbitraryUserPointer serves such uses.
struct CallStub {
    uint64_t calls = 0;                // at 0
    uint64_t failing = UINT64_MAX;     // at 8: the number of the call, counting from 0
    void* target = nullptr;            // at 16: the function, unless a test puts one of its own here
    int64_t failure = 0;               // at 24: as many low bytes as the function's result has
    uint64_t lastError = 0;            // at 32
    void* callers = nullptr;           // at 40: calls from outside this memory are passed on to the function
    uint64_t callersSize = UINT64_MAX; // at 48:   and not counted
    void* function = nullptr;          // at 56: whose place the stub has taken
    std::string name;
    void* code = nullptr;       // what stands in the function's place
    const void* data = nullptr; // for the target

    /// The stub through which the running function was called; to be asked before any other call.
    static CallStub& Current() {
        return *static_cast<CallStub*>(reinterpret_cast<NT_TIB*>(NtCurrentTeb())->ArbitraryUserPointer);
    }

    /// The call of that number fails, counting from 1, or none for 0.
    void FailAt(uint64_t call, int64_t answer, DWORD error) {
        failing = call - 1;
        failure = answer;
        lastError = error;
    }
};

/// The stubs of one test program. The function pointers stay replaced until the program ends.
class CallStubs {
public:
    /// Puts stubs in the place of every function that a library imports by name. When the library is loaded
    /// anew, the same stubs serve it.
    void AddImports(HMODULE library) {
        auto* base = reinterpret_cast<uint8_t*>(library);
        const auto at = [base](auto offset) { return base + offset; };
        const auto& directory = HeadersOf(library).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(at(directory.VirtualAddress));
             from->FirstThunk != 0; ++from) {
            auto* name = reinterpret_cast<const IMAGE_THUNK_DATA64*>(at(from->OriginalFirstThunk));
            auto* place = reinterpret_cast<void**>(at(from->FirstThunk));
            for (; name->u1.AddressOfData != 0; ++name, ++place) {
                Put((*this)[reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(at(name->u1.AddressOfData))->Name],
                    *place);
            }
        }
    }

    /// Puts a stub in the place of a method, counting from 0, of an object's interface, for all objects that
    /// share its table and for calls from the library alone. A method that has a stub keeps it.
    CallStub& AddMethod(const std::string& name, void* object, size_t method, HMODULE library) {
        void*& place = (*static_cast<void***>(object))[method];
        const auto known = std::find_if(m_stubs.begin(), m_stubs.end(), [&](const CallStub& stub) {
            return stub.code == place || (stub.name == name && stub.function == place);
        });
        CallStub& stub = known != m_stubs.end() ? *known : Make(name);
        Put(stub, place);
        stub.callersSize = HeadersOf(library).OptionalHeader.SizeOfImage;
        MoveCallers(library);
        return stub;
    }

    /// The library is at another address than when it was loaded before.
    void MoveCallers(HMODULE library) {
        for (CallStub& stub : m_stubs) {
            stub.callers = stub.callersSize != UINT64_MAX ? library : nullptr;
        }
    }

    /// The first stub of that name; one that is never called when there is none.
    CallStub& operator[](const std::string& name) {
        const auto known = std::find_if(m_stubs.begin(), m_stubs.end(),
                                        [&](const CallStub& stub) { return stub.name == name; });
        return known != m_stubs.end() ? *known : Make(name);
    }

    void CountAnew() {
        for (CallStub& stub : m_stubs) {
            stub.calls = 0;
        }
    }

    auto begin() { return m_stubs.begin(); }
    auto end() { return m_stubs.end(); }

private:
    static const IMAGE_NT_HEADERS64& HeadersOf(HMODULE library) {
        const auto* base = reinterpret_cast<const uint8_t*>(library);
        const auto offset = reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew;
        return *reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + offset);
    }

    CallStub& Make(const std::string& name) {
        CallStub& stub = m_stubs.emplace_back();
        const CallStub* const address = &stub;
        // Only registers that a call may change; the stack stays as it is for the function passed on to.
        uint8_t code[] = {0x49, 0xBB, 0, 0, 0, 0, 0, 0, 0, 0, // mov r11, stub
                          0x48, 0x8B, 0x04, 0x24,             // mov rax, [rsp], where the call came from
                          0x49, 0x2B, 0x43, 40,               // sub rax, [r11 + 40]
                          0x49, 0x3B, 0x43, 48,               // cmp rax, [r11 + 48]
                          0x72, 4,                            // jb inside
                          0x41, 0xFF, 0x63, 56,               // jmp [r11 + 56]
                          // inside:
                          0x65, 0x4C, 0x89, 0x1C, 0x25, 0x28, 0, 0, 0, // mov gs:[0x28], r11
                          0xB8, 1, 0, 0, 0,                            // mov eax, 1
                          0xF0, 0x49, 0x0F, 0xC1, 0x03,                // lock xadd [r11], rax
                          0x49, 0x3B, 0x43, 8,                         // cmp rax, [r11 + 8]
                          0x74, 4,                                     // je fail
                          0x41, 0xFF, 0x63, 16,                        // jmp [r11 + 16]
                          0x41, 0x8B, 0x43, 32,                        // fail: mov eax, [r11 + 32]
                          0x65, 0x89, 0x04, 0x25, 0x68, 0, 0,
                          0,                    // mov gs:[0x68], eax, the thread's last error
                          0x49, 0x8B, 0x43, 24, // mov rax, [r11 + 24]
                          0xC3};                // ret
        std::memcpy(code + 2, &address, sizeof address);
        stub.name = name;
        stub.code = VirtualAlloc(nullptr, sizeof code, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE);
        std::memcpy(stub.code, code, sizeof code);
        return stub;
    }

    static void Put(CallStub& stub, void*& place) {
        if (place == stub.code) {
            return;
        }
        stub.target = stub.target == stub.function ? place : stub.target;
        stub.function = place;
        DWORD protection = 0;
        VirtualProtect(&place, sizeof place, PAGE_READWRITE, &protection);
        place = stub.code;
        VirtualProtect(&place, sizeof place, protection, &protection);
    }

    std::deque<CallStub> m_stubs; // stay where they are
};
