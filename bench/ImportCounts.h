#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Counts what a module calls through its import table, for as long as the object lives.
class ImportCounts {
public:
    /// Puts a counter before every function of that list that the module imports.
    explicit ImportCounts(HMODULE module);
    ~ImportCounts();
    ImportCounts(const ImportCounts&) = delete;
    ImportCounts& operator=(const ImportCounts&) = delete;

    /// Calls so far by name, for the functions that a conversion cannot do without; writing, memory and code
    /// pages are not among them.
    std::map<std::string, uint64_t> Calls() const;

private:
    struct Stub;
    struct Import {
        std::string name;
        ULONGLONG* slot;
        ULONGLONG target;
        uint64_t calls;
    };

    void Count(ULONGLONG& slot, const char* name);

    Stub* m_stubs;                 // one page that can be executed
    std::vector<Import> m_imports; // one for each stub, never moved
};
