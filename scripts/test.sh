#!/usr/bin/env bash
# Builds what ships and runs all tests: under Wine, with windows on a display of their own, and what needs no Windows
# natively under sanitizers, too.
#
#   scripts/test.sh [PRESET] [CTEST-ARGUMENT…]
#
# PRESET is mingw-release unless given; mingw-debug adds library assertions and undefined-behaviour traps.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=${1:-mingw-release}
shift || true

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git python3 googletest \
    wine wine64 xvfb xauth flac ffmpeg libxml2-utils xsltproc jq sqlite3 cmark-gfm clang libclang-rt-14-dev

build linux-asan
(cd "$root/build/linux-asan" && ctest --output-on-failure -j "$(nproc)" "$@" </dev/null)

build "$preset"
start_display
start_wine wine

# Tests wait for no input, and for Wine's own processes neither.
(cd "$root/build/$preset" && ctest --output-on-failure -j "$(nproc)" "$@" </dev/null)
