#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, for the fuzzer to keep the input, unless the condition holds.
inline void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "wrong: %s\n", what);
        std::abort();
    }
}
