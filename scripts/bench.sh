#!/usr/bin/env bash
# Measures the plug-in against other ways to do the same; docs/performance.md says what the rows mean.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    librapidxml-dev

build mingw-release bench
start_wine wine

# Runs in the folder with the tests' fixture library. Each suite has a process of its own, so that none measures what
# another did to it.
cd "$root/build/mingw-release/tests/run"
for suite in Calls Bench MemoryOfDocument MemoryOfTransformation Transformations; do
    timeout 600 wine ../../bench/bench.exe --gtest_filter="$suite.*" </dev/null >"$root/build/bench.log" 2>&1 ||
        { cat "$root/build/bench.log"; fail "$suite failed"; }
    grep -E '^\||^$' "$root/build/bench.log" || true
done
