#!/usr/bin/env bash
# Makes build/package/WriteMetadataFile-<version>-win64-check.zip, with which anyone can check the plug-in on Windows,
# and runs it under Wine as they would: the tests that it runs are those that CTest knows, and all pass. The file with
# .sha256 after its name is for sha256sum -c.
#
#   scripts/check-package.sh            makes and runs it
#   scripts/check-package.sh --accept   makes what the document and the style sheets are now the expected output of
#                                       the check, in tools/check/expected, to be read with git diff

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[[ $# == 0 || ($# == 1 && $1 == --accept) ]] || wrong_arguments "the one argument is --accept, not \"$*\""

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    xvfb xauth zip unzip

build mingw-release
build=$root/build/mingw-release
work=$root/build/package/check
zip=$root/build/package/$(sed -n 's/^set(CPACK_PACKAGE_FILE_NAME "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")-check.zip
rm -rf "$work" "$zip" "$zip.sha256"

# The folders lie as in the build: the programs of the tests find the library and the tools by relative paths.
mkdir -p "$work/pack"
cd "$work/pack"
cp -r "$root"/tools/check/{check.cmd,recording,expected} "$build/tools/check/README.txt" .
(cd "$build" && cp --parents -r dist tests/check.exe tests/run tools/dsphost.exe tools/decoder "$work/pack")
commit_of "$root" | tr -d '\n' >tests/commit.txt
find . -type f -printf '%P\n' | sort >"$work/files.txt"
mv "$work/files.txt" tests/
find . -type f -printf '%P\n' | sort | zip -X -q -@ "$zip"

user="$work/with a blank and ü"
unzip -q "$zip" -d "$user"
one_processor
start_display
start_wine wine-check
cd "$user"

# run_check [--accept]: in another time zone than ours; its lines go to standard output, and to check.log.
run_check() {
    TZ=Asia/Tokyo timeout 1800 "$root/cmake/run-under-wine.sh" cmd /c check.cmd "$@" </dev/null 2>"$work/wine.log"
}

if (($# == 1)); then
    rm -f expected/* tests/files.txt
    run_check --accept || fail "a conversion fails"
    rm -f "$root"/tools/check/expected/*
    cp expected/* "$root/tools/check/expected/"
    exit
fi

# user_registry: all that the user's registry holds, but for a key in which Wine keeps the mouse's state.
user_registry() {
    run_wine reg export HKCU registry.reg /y >/dev/null
    iconv -f UTF-16 -t UTF-8 registry.reg | grep -v -e '^\s*$' -e '\\Temporary System Parameters\\'
    rm registry.reg
}
wine reg add 'HKCU\Software\Brevik\Zentaro\DecoderCache64' /v .ogg /t REG_SZ /d 'C:\o g.dll' /f >/dev/null 2>&1
user_registry >"$work/registry.before"
begin=$(date -u '+%F %H:%M UTC')
run_check || { cat check.log >&2 && fail "the check fails"; }
user_registry >"$work/registry.after"
diff "$work/registry.before" "$work/registry.after" || fail "the check changes the user's registry"

time=$(head -n 1 check.log | tr -d '\r')
[[ ! $time < $begin && ! $time > $(date -u '+%F %H:%M UTC') ]] || fail "check.log says that it began at $time"
version=$(sed -n '1s/.* \([0-9.]*\)\r$/\1/p' README.txt)
sum=$(sha256sum <dist/WriteMetadataFile.dll)
[[ $(head -n 6 check.log) == *"WriteMetadataFile $version.0, commit $(<tests/commit.txt)"*"SHA-256 ${sum%% *}"* &&
    $(head -n 6 check.log) == *'Windows '[1-9]*' (Wine '*'MSXML '[1-9]*', code page '*', 96 dpi'* ]] ||
    fail "check.log does not say what was tested, and where"
grep -q '^[1-9][0-9]* passed, 0 failed, ' check.log || fail "check.log does not count what passed"

tests_in_log() {
    tr -d '\r' <check.log | awk '/^(passed|skipped|FAILED) / && $4 !~ /^(dsphost|cscript)$/ { print $5 }' | sort
}
tests_in_ctest() {
    ctest --test-dir "$build" -N </dev/null | sed -n 's/^ *Test *#[0-9]*: \(.*\..*\)/\1/p' | sort
}
diff <(tests_in_ctest) <(tests_in_log) || fail "the check runs not all tests of CTest (<), or more (>)"
diff <(sort "$work/pack/tests/files.txt" <(printf '%s\n' check.log tests/files.txt)) <(find . -type f -printf '%P\n' | sort) ||
    fail "the check removes files (<), or leaves some (>)"

# What has to fail, in a copy with one test, which fails, and without the list of what belongs to it.
copy="$work/to fail"
cp -r "$user" "$copy"
cd "$copy"
find tests/run -name '*.exe' ! -name 'sample_decoders*' -delete
sed -i 's/^Engineer=/Engineers=/' tests/run/data/decoders.txt

# fails_with PATTERN: the check fails, and the last line on the console but one has the pattern.
fails_with() {
    ! run_check >"$work/out.txt" || fail "the check passes where it should report: $1"
    tail -n 2 "$work/out.txt" | grep -q "$1" || { cat "$work/out.txt" >&2 && fail "the check does not report: $1"; }
}
fails_with 'files are missing, .*: tests/run/'
>tests/files.txt
rm expected/document.txt
sed -i 's/Zoë/Zoe/' expected/Songs.txt
printf 'GARBAGE' | cat - dist/XSLT/FFMetadata.xslt >garbage && mv garbage dist/XSLT/FFMetadata.xslt
sed -i 's/match="[^"]*"/match="nothing"/' dist/XSLT/Json.xslt
fails_with 'on this machine: the plug-in .*: FFMetadata.xslt, Json.xslt, Songs.xslt; Transform.js .*; tests of single parts'
grep -q '^[1-9][0-9]* passed, 6 failed, 0 skipped' check.log || fail "check.log does not count what failed"
grep -qF '     1  ne tone","Zoe Ångström; Łukasz & Żaneta","Variou | ne tone","Zoë Ångström;' check.log ||
    fail "check.log does not show the difference in what Songs.xslt makes"
[[ $(grep -B 6 -m 1 '[0-9][0-9] lines differ' check.log) == '  line  expected '* ]] ||
    fail "check.log does not show the first five differences"
grep -q 'Loading XSL failed' check.log || fail "check.log does not have the errors of programs"
rm check.log && mkdir check.log
fails_with 'unzip the archive into another'

write_sum "$zip"
