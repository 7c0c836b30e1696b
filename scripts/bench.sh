#!/usr/bin/env bash
# Measures the plug-in against other ways to do the same; docs/performance.md tells what the rows mean.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    librapidxml-dev

build mingw-release bench
start_wine wine

# The folder with the tests' fixture library. What a suite does to the process, another would measure.
cd "$root/build/mingw-release/tests/run"
for suite in Calls Bench MemoryOfDocument MemoryOfTransformation; do
    timeout 600 wine ../../bench/bench.exe --gtest_filter="$suite.*" </dev/null >"$root/build/bench.log" 2>&1 ||
        { cat "$root/build/bench.log"; fail "$suite failed"; }
    grep -E '^\||^$' "$root/build/bench.log" || true
done
