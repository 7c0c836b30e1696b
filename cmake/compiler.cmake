# Compiler and linker flags, all in one place so that the sources stay free of them. What makes a tool chain has a file of
# its own beside this one.
if(MSVC)
    target_compile_options(project_options INTERFACE /W4 /WX /utf-8 /permissive- /EHsc)
    set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
    return()
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(project_options INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Werror)
    set(FUZZ_LINK_OPTIONS -fsanitize=fuzzer)
    return()
endif()

target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wduplicated-cond -Wlogical-op -Wnull-dereference -Wimplicit-fallthrough -Werror)
# For tests and the benchmark: GCC 12 sees overflows in inlined vectors and buffers where there are none.
set(TEST_OPTIONS -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds)
# GCC looks into RapidXML's templates although they come from a system header.
set(RAPIDXML_OPTIONS -Wno-null-dereference)

# The same sources give the same bytes wherever they are built.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
add_compile_options(-ffunction-sections -fdata-sections -fstack-protector-strong)
add_link_options(-static -fstack-protector-strong -Wl,--gc-sections -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
    -Wl,--disable-auto-image-base -Wl,--no-insert-timestamp)

if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    add_compile_options(-Og -D_GLIBCXX_ASSERTIONS
        -fsanitize=undefined -fsanitize-undefined-trap-on-error)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_link_options(-s)
endif()

# clang-tidy reads the compile database without knowing where GCC keeps its C++ headers.
foreach(folder IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    if(folder MATCHES "/c\\+\\+")
        list(APPEND CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${folder})
    endif()
endforeach()
