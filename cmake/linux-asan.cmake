# Native clang with address and undefined-behaviour sanitizers, and with what libFuzzer needs to see of the code.
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)

# wchar_t has 16 bits as on Windows. The C and C++ libraries of the machine take it for 32: nothing of their wide
# functions may be called or put in by the compiler, and the wide strings' code that the C++ library holds ready is left
# aside for that made from its headers. tests/native/WideFunctions.cpp has the few functions that the headers call.
set(CMAKE_CXX_FLAGS_INIT "-fshort-wchar -fno-builtin -D_GLIBCXX_EXTERN_TEMPLATE=0 -D_GLIBCXX_ASSERTIONS")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -O1 -g -fno-omit-frame-pointer")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all")
