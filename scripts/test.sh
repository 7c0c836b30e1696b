#!/usr/bin/env bash
# Builds what ships and runs all tests: natively under sanitizers what needs no Windows, then everything under Wine, with
# windows on a display of their own.
#
#   scripts/test.sh [PRESET] [CTEST-ARGUMENT…]
#
# PRESET is mingw-release unless given; mingw-debug adds library assertions and undefined-behaviour traps, mingw-ucrt
# takes the newer C runtime, which Debian has from release 13 on. CTest's arguments begin with a hyphen and choose tests
# in both halves, e.g. -R Transform.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=mingw-release
compiler=g++-mingw-w64-x86-64-posix
if [[ $# -gt 0 && $1 != -* ]]; then
    preset=$1
    shift
fi
case $preset in
mingw-release | mingw-debug) ;;
mingw-ucrt) compiler=g++-mingw-w64-ucrt64 ;;
*) wrong_arguments "the preset is mingw-release, mingw-debug or mingw-ucrt, not \"$preset\"" ;;
esac

install_packages "$compiler" binutils-mingw-w64 cmake ninja-build git python3 python3-pefile googletest \
    wine wine64 xvfb xauth flac ffmpeg libxml2-utils xsltproc jq sqlite3 cmark-gfm clang libclang-rt-dev

found=0
failed=()

# run_tests PRESET [CTEST-ARGUMENT…]: runs the chosen tests of a built preset, if it has any.
run_tests() {
    local preset=$1 tests=(--test-dir "$root/build/$1" "${@:2}") count
    # Without input, so that no test and none of Wine's processes waits for it.
    count=$(ctest "${tests[@]}" -N </dev/null | sed -n 's/^Total Tests: //p')
    if ((count > 0)); then
        found=$((found + count))
        ctest "${tests[@]}" --output-on-failure -j "$(nproc)" </dev/null || failed+=("$preset")
    fi
}

build linux-asan
run_tests linux-asan "$@"

build "$preset"
start_display
start_wine wine
run_tests "$preset" "$@"

((found > 0)) || fail "no test of linux-asan or $preset is chosen by: $*"
((${#failed[@]} == 0)) || fail "tests failed in ${failed[*]}"
