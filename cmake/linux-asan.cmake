# Native clang with address and undefined-behaviour sanitizers, and with what libFuzzer needs to see of the code.
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)

# wchar_t has 16 bits as on Windows, but 32 in the machine's C and C++ libraries. So none of their wide functions may be
# called, nor inserted by the compiler, and wide strings are instantiated from the headers instead of taken from the C++
# library. tests/native/WideFunctions.cpp has the few functions that the headers call.
set(CMAKE_CXX_FLAGS_INIT "-fshort-wchar -fno-builtin -D_GLIBCXX_EXTERN_TEMPLATE=0 -D_GLIBCXX_ASSERTIONS")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -O1 -g -fno-omit-frame-pointer")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all")
