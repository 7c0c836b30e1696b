#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>

// Calls that fail on demand, without a hook in the code that makes them: a stub of machine code takes the
// place of a function pointer, in the import table of a library or in the method table of a COM object.

/// One function pointer's stub: counts the calls and passes them on to `target`, all but one, which returns
/// `failure`. The machine code knows the fields by their offsets.
struct CallStub {
    uint64_t calls = 0;                // at 0
    uint64_t failing = UINT64_MAX;     // at 8: the number of the call, counting from 0
    void* target = nullptr;            // at 16
    int64_t failure = 0;               // at 24: as many low bytes as the function's result has
    uint64_t lastError = 0;            // at 32
    void* callers = nullptr;           // at 40: calls from outside this memory are passed on and not counted
    uint64_t callersSize = UINT64_MAX; // at 48
    std::string name;

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
    /// Puts stubs in the place of every function that a loaded library imports by name.
    void AddImports(HMODULE library) {
        auto* base = reinterpret_cast<uint8_t*>(library);
        const auto at = [base](auto offset) { return base + offset; };
        const auto& directory = HeadersOf(library).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(at(directory.VirtualAddress));
             from->FirstThunk != 0; ++from) {
            auto* name = reinterpret_cast<const IMAGE_THUNK_DATA64*>(at(from->OriginalFirstThunk));
            auto* place = reinterpret_cast<void**>(at(from->FirstThunk));
            for (; name->u1.AddressOfData != 0; ++name, ++place) {
                Add(reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(at(name->u1.AddressOfData))->Name, *place);
            }
        }
    }

    /// Puts a stub in the place of a method, counting from 0, of an object's interface, for all objects that
    /// share its table and for calls from the library alone.
    void AddMethod(const char* name, void* object, size_t method, HMODULE library) {
        CallStub& stub = Add(name, (*static_cast<void***>(object))[method]);
        stub.callers = library;
        stub.callersSize = HeadersOf(library).OptionalHeader.SizeOfImage;
    }

    CallStub& operator[](const std::string& name) {
        for (CallStub& stub : m_stubs) {
            if (stub.name == name) {
                return stub;
            }
        }
        return m_stubs.emplace_back(CallStub{.name = name}); // never called
    }

    void CountAnew() {
        for (CallStub& stub : m_stubs) {
            stub.calls = 0;
        }
    }

    auto begin() const { return m_stubs.begin(); }
    auto end() const { return m_stubs.end(); }

private:
    static const IMAGE_NT_HEADERS64& HeadersOf(HMODULE library) {
        const auto* base = reinterpret_cast<const uint8_t*>(library);
        const auto offset = reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew;
        return *reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + offset);
    }

    CallStub& Add(const char* name, void*& place) {
        CallStub* stub = &m_stubs.emplace_back(CallStub{.target = place, .name = name});
        // Only registers that a call may change; the stack stays as it is for the function passed on to.
        uint8_t code[] = {
            0x49, 0xBB, 0,    0,    0,    0, 0, 0, 0, 0, // mov r11, stub
            0x48, 0x8B, 0x04, 0x24,                      // mov rax, [rsp], where the call came from
            0x49, 0x2B, 0x43, 40,                        // sub rax, [r11 + 40]
            0x49, 0x3B, 0x43, 48,                        // cmp rax, [r11 + 48]
            0x73, 16,                                    // jae pass
            0xB8, 1,    0,    0,    0,                   // mov eax, 1
            0xF0, 0x49, 0x0F, 0xC1, 0x03,                // lock xadd [r11], rax
            0x49, 0x3B, 0x43, 8,                         // cmp rax, [r11 + 8]
            0x74, 4,                                     // je fail
            0x41, 0xFF, 0x63, 16,                        // pass: jmp [r11 + 16]
            0x41, 0x8B, 0x43, 32,                        // fail: mov eax, [r11 + 32]
            0x65, 0x89, 0x04, 0x25, 0x68, 0, 0, 0,       // mov gs:[0x68], eax, the thread's last error
            0x49, 0x8B, 0x43, 24,                        // mov rax, [r11 + 24]
            0xC3};                                       // ret
        std::memcpy(code + 2, &stub, sizeof stub);
        if (m_room < sizeof code) {
            m_room = 0x10000;
            m_code = static_cast<uint8_t*>(
                VirtualAlloc(nullptr, m_room, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE));
        }
        std::memcpy(m_code, code, sizeof code);
        DWORD protection = 0;
        VirtualProtect(&place, sizeof place, PAGE_READWRITE, &protection);
        place = m_code;
        VirtualProtect(&place, sizeof place, protection, &protection);
        m_code += sizeof code;
        m_room -= sizeof code;
        return *stub;
    }

    std::deque<CallStub> m_stubs; // stay where they are
    uint8_t* m_code = nullptr;
    size_t m_room = 0;
};
