#!/usr/bin/env bash
# Makes build/package/WriteMetadataFile-<version>-win64-check.zip, with which anyone can check the plug-in on Windows,
# and runs it under Wine as they would: the tests that it runs are those that CTest knows, and all pass.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    xvfb xauth zip unzip flac ffmpeg

build mingw-release
build=$root/build/mingw-release
work=$root/build/package/check
zip=$root/build/package/$(sed -n 's/^set(CPACK_PACKAGE_FILE_NAME "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")-check.zip
rm -rf "$work" "$zip"

# The folders lie as in the build: the programs of the tests find the library and the tools by relative paths.
mkdir -p "$work/pack/recording"
cd "$work/pack"
cp "$root/tools/check/check.cmd" .
(cd "$build" && cp --parents -r dist tests/check.exe tests/run tools/dsphost.exe tools/decoder "$work/pack")
ffmpeg -loglevel error -f lavfi -i sine=frequency=440:duration=1 -bitexact recording/tone.wav </dev/null
flac --silent --output-name recording/tone.flac --tag 'TITLE=One second' --tag 'ARTIST=Zoë Ångström' \
    --tag 'ARTIST=Łukasz & Żaneta' --picture "$root/tests/data/cover.png" -- recording/tone.wav
find . -type f -printf '%P\n' | sort | zip -X -q -@ "$zip"

user="$work/with a blank and ü"
unzip -q "$zip" -d "$user"
one_processor
start_display
start_wine wine-check
cd "$user"
wine reg add 'HKCU\Software\Brevik\Zentaro\DecoderCache64' /v .ogg /t REG_SZ /d 'C:\o g.dll' /f >/dev/null 2>&1
timeout 1800 "$root/cmake/run-under-wine.sh" cmd /c check.cmd </dev/null 2>"$work/wine.log" ||
    { cat check.log >&2 && fail "the check fails"; }

tests_in_log() {
    tr -d '\r' <check.log | awk '/^(passed|skipped|FAILED) / && $4 != "dsphost" { print $5 }' | sort
}
tests_in_ctest() {
    ctest --test-dir "$build" -N </dev/null | sed -n 's/^ *Test *#[0-9]*: \(.*\..*\)/\1/p' | sort
}
diff <(tests_in_ctest) <(tests_in_log) || fail "the check runs not all tests of CTest (<), or more (>)"
[[ ! -e temp ]] || fail "the check leaves files in $user/temp"
cache=$(run_wine reg query 'HKCU\Software\Brevik' /s | tr -d '\r' | sed '/^$/d')
[[ $cache == *'DecoderCache64'*'.ogg'*'C:\o g.dll' && $cache != *before* ]] || fail "the check leaves the cache as $cache"
printf '\n%s, %s bytes\n' "$zip" "$(stat -c %s "$zip")"
