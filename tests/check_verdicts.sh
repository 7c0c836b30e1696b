#!/usr/bin/env bash
# What the scripts answer when something is wrong: check_verdicts.sh WORK
# Those that check must fail when what they check fails: copies of them run with stand-ins for the programs that they
# call, of which one fails each time. Broken links are found, and wrong arguments refused.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$1

# Not that of the scripts, whose verdicts are checked.
fail() {
    echo "$*" >&2
    exit 1
}

rm -rf "$work"
mkdir -p "$work"/{bin,ci/scripts,build/{linux-asan/fuzz,mingw-release},tests/fuzz/corpus/target}
cp -r "$root"/{scripts,cmake} "$work"
cp -r "$root/.ci" "$root/scripts/common.sh" "$work/ci"
mv "$work/ci/common.sh" "$work/ci/scripts"

cat >"$work/bin/stand-in" <<'END'
#!/bin/sh
case ${0##*/} in
dpkg-query) echo installed ;;
git) echo source.cpp ;;
Xvfb) echo 99 ;;
esac
[ "${0##*/}" != "$FAILING" ]
END
chmod +x "$work/bin/stand-in"
for name in dpkg-query git cmake Xvfb wine wineboot wineserver clang-format cppcheck clang-tidy; do
    ln -s stand-in "$work/bin/$name"
done
for name in "$work"/build/linux-asan/fuzz/target "$work"/ci/scripts/{test,check-package,fuzz,check}.sh; do
    ln -s "$work/bin/stand-in" "$name"
done
for preset in linux-asan mingw-release; do
    echo "add_test(of.$preset sh -c \"test \$FAILING != $preset\")" >"$work/build/$preset/CTestTestfile.cmake"
done

# fails_with "NAME…" SCRIPT [ARGUMENT…]: the script succeeds, but not when one of these fails.
fails_with() {
    local name names=$1 script=$work/$2
    shift 2
    for name in nothing $names; do
        if FAILING=$name PATH=$work/bin:$PATH "$script" "$@" >"$work/log" 2>&1; then
            [[ $name == nothing ]] || fail "$script succeeds although $name fails"
        elif [[ $name == nothing ]]; then
            cat "$work/log" >&2
            fail "$script fails although nothing else does"
        fi
    done
}
fails_with 'linux-asan mingw-release cmake wine' scripts/test.sh
fails_with 'target cmake' scripts/fuzz.sh 1
fails_with 'cmake clang-format cppcheck clang-tidy' scripts/check.sh
fails_with 'test.sh check-package.sh fuzz.sh check.sh' ci/.ci/run
! FAILING=nothing PATH=$work/bin:$PATH "$work/scripts/test.sh" -R none >"$work/log" 2>&1 ||
    fail "test.sh succeeds without a test"

# Broken links are named, each with its fault.
cd "$work"
printf '# Title\n\n[here](#title) [nowhere](#nowhere) [no file](none.md) ![no picture](none.png)\n' >page.md
status=0
"$root/scripts/pages.py" check page.md >log 2>&1 || status=$?
"$root/scripts/pages.py" check none.md >>log 2>&1 || status=$status$?
diff - <(echo "status $status" && sed "s,$work/,," log) <<'END' || fail "pages.py finds other links"
status 12
page.md: #nowhere: there is no such heading in the pages given
page.md: none.md: there is no such file
page.md: none.png: there is no such file
1 pages, 4 links and pictures, 3 wrong
there is no file none.md
END

# A page made as HTML names its own link as the current one.
printf '# Other\n' >other.md
"$root/scripts/pages.py" make out page.md other.md
for name in page other; do
    diff - <(grep -o '<a [^>]* aria-current=page>' "out/$name.html") <<<"<a href=\"$name.html\" aria-current=page>" ||
        fail "another link is current"
done

# refuses MESSAGE SCRIPT [ARGUMENT…]: with that message, before anything is built.
refuses() {
    local status=0
    "$work/scripts/$2" "${@:3}" >log 2>&1 || status=$?
    [[ $status == 2 && $(<log) == *"$1"* ]] || fail "$2 does not refuse ${*:3}: $(<log)"
}
printf 'RIFF....AVI ' >film.wav
printf 'RIFF....WAVE' | tee song.1.wav >song.2.wav
refuses '"film.wav" is no WAVE file' demo.sh film.wav
refuses 'there is no readable file "none"' demo.sh song.1.wav song.2.wav none
refuses '"0" is no number of seconds' fuzz.sh 0
