# As mingw-w64.cmake, with the compiler for Windows' newer C runtime, which is the one of MSYS2's UCRT64.
set(TOOL_PREFIX x86_64-w64-mingw32ucrt)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
