#!/usr/bin/env bash
# Formatting and static analysis of our own sources; any finding fails.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages clang-format clang-tidy cppcheck g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git \
    googletest librapidxml-dev

cd "$root"
cmake --preset mingw-release >/dev/null # lists for clang-tidy how each source is compiled

mapfile -t sources < <(git ls-files '*.cpp')
mapfile -t headers < <(git ls-files '*.h')

echo "== clang-format: ${#sources[@]} sources, ${#headers[@]} headers"
clang-format --dry-run --Werror "${sources[@]}" "${headers[@]}"

echo "== cppcheck"
cppcheck --platform=win64 --std=c++20 --language=c++ --quiet --error-exitcode=1 -I . \
    --enable=warning,performance,portability,style --suppress=missingIncludeSystem \
    --suppress=useStlAlgorithm \
    --suppress=knownConditionTrueFalse:toolkit/XWindow.cpp `# rows of its table end in "what, handled"` \
    --suppress=noExplicitConstructor:support/Utf16View.h `# a text is viewed as it is` \
    --suppress=constParameter:plugin/Exports.cpp `# the exports' signatures are the host's` \
    --suppress=constParameterPointer:plugin/Exports.cpp `# the same, as newer versions call it` \
    --suppress=normalCheckLevelMaxBranches `# no finding: how far newer versions look` \
    --suppress=unusedStructMember:support/gcc/Exceptions.cpp `# the runtime uses them` \
    '--suppress=*:tests/*' `# left to the compiler's own warnings` \
    -D_WIN32 -DUNICODE -DWINAPI= -DCALLBACK= -D'TEST_F(fixture,name)=void fixture##name()' \
    support decoders metadata toolkit plugin tools bench

echo "== clang-tidy"
# Without the tests and the benchmark: GoogleTest's macros cost a minute for each program.
printf '%s\n' "${sources[@]}" | grep -v -e '^tests/' -e '^bench/Bench.cpp$' |
    xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/mingw-release 2> >(sed '/warnings generated/d' >&2)
