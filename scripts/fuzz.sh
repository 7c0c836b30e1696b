#!/usr/bin/env bash
# Fuzzes the code that calls no Win32 and the sample decoders, natively, with address and undefined-behaviour
# sanitizers. A fault fails the script and leaves its input in build/linux-asan/fuzz.
#
#   scripts/fuzz.sh [SECONDS]
#
# Each target runs for SECONDS, 60 unless given; as many run at a time as there are processors.
# Inputs that reach new code are kept in build/linux-asan/fuzz/corpus for the next run.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds=${1-60}
(($# < 2)) || wrong_arguments "takes one argument, SECONDS, but was given $#"
[[ $seconds =~ ^[1-9][0-9]{0,5}$ ]] || wrong_arguments "\"$seconds\" is no number of seconds from 1 to 999999"

install_packages clang libclang-rt-dev cmake ninja-build googletest

build linux-asan
cd "$root/build/linux-asan/fuzz"

fuzz() {
    mkdir -p "corpus/$1"
    if ! "./$1" -max_total_time="$2" -timeout=10 -print_final_stats=1 -artifact_prefix="$1-" "corpus/$1" "$3/$1" \
        >"$1.log" 2>&1; then
        tail -n 60 "$1.log" >&2
        return 1
    fi
    echo "$1: $(sed -n 's/^stat::number_of_executed_units: *//p' "$1.log") inputs, no fault"
}
export -f fuzz
inputs=$root/tests/fuzz/corpus
ls "$inputs" | xargs -P "$(nproc)" -I '{}' bash -c "fuzz {} $seconds '$inputs'" || fail "a fuzz target found a fault"
