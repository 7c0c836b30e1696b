#!/usr/bin/env bash
# What the scripts answer when something is wrong: check_verdicts.sh WORK
# Those that check must fail when what they check fails: copies of them run with stand-ins for the programs that they
# call, of which one fails each time. What they share says what went wrong, and wrong links and arguments are named.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$1

# Not that of the scripts, whose verdicts are checked.
fail() {
    echo "$*" >&2
    exit 1
}

rm -rf "$work"
mkdir -p "$work"/{bin,ci/scripts,build/{linux-asan/fuzz,mingw-debug,mingw-release},tests/fuzz/corpus/target}
cp -r "$root"/{scripts,cmake} "$work"
cp -r "$root/.ci" "$root/scripts/common.sh" "$work/ci"
mv "$work/ci/common.sh" "$work/ci/scripts"

cat >"$work/bin/stand-in" <<'END'
#!/bin/sh
case ${0##*/} in
dpkg-query) echo installed ;;
git) echo source.cpp ;;
Xvfb) echo 99 && exec sleep 9 ;;
wine) printf "wine $# %s\n" "$*" >&2 ;;
*) echo "${0##*/} $*" ;;
esac
case "${0##*/} $*" in
cppcheck*--error-exitcode=1* | clang-format*--Werror*) ;;
cppcheck* | clang-format*) exit 0 ;; # whatever they find
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
for preset in linux-asan mingw-{debug,release}; do
    echo "add_test(of.$preset sh -c \"test -e $work/build/$preset.log -a \$FAILING != $preset\")" \
        >"$work/build/$preset/CTestTestfile.cmake"
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
fails_with 'linux-asan mingw-debug' scripts/test.sh mingw-debug
fails_with 'target cmake' scripts/fuzz.sh
grep -q -e "-max_total_time=60 .* corpus/target $work/tests" "$work/build/linux-asan/fuzz/target.log" ||
    fail "fuzz.sh takes another time, or keeps new inputs among the sources"
fails_with 'cmake clang-format cppcheck clang-tidy' scripts/check.sh
fails_with 'test.sh check-package.sh fuzz.sh check.sh' ci/.ci/run
! FAILING=nothing PATH=$work/bin:$PATH "$work/scripts/test.sh" -R none >"$work/log" 2>&1 ||
    fail "test.sh succeeds without a test"

# says STATUS PATTERN COMMAND: a script that begins as the others do and runs COMMAND writes this, errors included.
says() {
    local status=0
    PATH=$work/bin:$PATH "$work/scripts/probe.sh" "${@:3}" >"$work/log" 2>&1 || status=$?
    [[ $status == "$1" && $(<"$work/log") == $2 ]] || fail "${*:3}: status $status, $(<"$work/log")"
}
printf '#!/usr/bin/env bash\n# Runs it.\n#\n#   probe.sh COMMAND\n\nsource "${0%%/*}/common.sh"\neval "$1"\n' \
    >"$work/scripts/probe.sh"
chmod +x "$work/scripts/probe.sh"
export FAILING=nothing
says 0 $'Runs it.\n\n  probe.sh COMMAND' false --help
says 3 $'second\nfirst' 'at_exit "echo first"; at_exit "echo second"; exit 3'
says 1 'probe.sh: probe.sh, line *, ended with status 1: false' 'f() { false; }; f'
says $((EUID != 0)) '*--no-install-recommends none-1 none-2*' \
    'PATH=${PATH#*:}; apt-get() { echo "$*" >&2; }; install_packages none-1 bash none-2'
FAILING=cmake says 1 $'Building p\ncmake --preset p\nprobe.sh: the build failed' 'build p'
says 0 $'Preparing Wine\nwineserver -k\n'"$work/build/new"$'\nwineserver -k\nwineserver -w*' \
    'start_wine new; start_wine new; echo "$WINEPREFIX"'
says 0 $'DISPLAY=:99\nended with 143' \
    'at_exit "wait \$display_pid || echo ended with \$?"; start_display; env | grep ^DISPLAY='
FAILING=wine says 0 $'wine 1 Z:\\\\a\\\\b c\nprobe.sh: status 1 of Z:\\\\a\\\\b c\nfuzz' \
    'export TMPDIR=$root/tests; run_wine "$(windows_path "/a/b c")" >/dev/null || ls "$TMPDIR"'
sum=01ba4719c80b6fe911b091a7c05124b64eeece964e09c058ef8f9805daca546b
says 0 $'\n'"$work/line, 1 bytes, SHA-256 $sum"$'\n'"$sum  line" \
    'echo >"$root/line"; write_sum "$root/line"; cat "$root/line.sha256"'
says 0 "$(printf '?%.0s' {1..40}), with changes" 'PATH=${PATH#*:}; cd "$root" && git init -q sources 2>"$root/log" && cd sources &&
    git -c user.name=n -c user.email=e commit -q --allow-empty -m m && touch file && git add file && commit_of .'
says 124 '*status 124, the time limit, of a'$'\n*' 'timeout() { return 124; }; run_wine a'

# Broken links are named, each with its fault, and wrong arguments refused.
cd "$work"
cat >page.md <<'END'
# A & b_c, d
[this](#a--b_c-d) [second](#same-1) [other](other.md#other)
[nowhere](#nowhere) [no file](none.md) [web](https://none.md)
![picture](a%20picture.png) ![no picture](none.png)
## *Same*
## Same
| a |
|---|
END
printf '# Other\n' >other.md
touch 'a picture.png'
: >log
statuses=
for arguments in 'check page.md other.md' 'check other.md' 'check none.md' 'make out none.md' 'make out' --help; do
    "$root/scripts/pages.py" $arguments >>log 2>&1 && statuses+=0 || statuses+=$?
done
diff - <(echo "status $statuses" && sed "s,$work/,,; /^The pages/,\$d" log) <<'END' || fail "pages.py finds other links"
status 112220
page.md: #nowhere: there is no such heading in the pages given
page.md: none.md: there is no such file
page.md: none.png: there is no such file
2 pages, 7 links and pictures, 3 wrong
1 pages, 0 links and pictures, 0 wrong
there is no file none.md
there is no file none.md
END

# A page made as HTML names its own link as the current one, and leads to HTML.
"$root/scripts/pages.py" make out page.md other.md
diff - <(grep -e '<a ' -e '<h[12]' -e div out/page.html | sed 's/\r$/~/') <<'END' ||
<a href="page.html" aria-current=page>A &amp; b_c, d</a>~
<a href="other.html">Other</a>~
<h1 id="a--b_c-d">A &amp; b_c, d</h1>~
<p><a href="#a--b_c-d">this</a> <a href="#same-1">second</a> <a href="other.html#other">other</a>~
<a href="#nowhere">nowhere</a> <a href="none.html">no file</a> <a href="https://none.md">web</a>~
<h2 id="same"><em>Same</em></h2>~
<h2 id="same-1">Same</h2>~
<div class="table">~
</div>~
END
    fail "pages.py makes another page"

# refuses MESSAGE SCRIPT [ARGUMENT…]: with that message, before anything is built.
refuses() {
    local status=0
    PATH=$work/bin:$PATH "$work/scripts/$2" "${@:3}" >log 2>&1 || status=$?
    [[ $status == 2 && $(<log) == *"$1"* ]] || fail "$2 does not refuse ${*:3}: $(<log)"
}
printf 'RIFF....AVI ' >film.wav
printf 'RIFF....WAVE' | tee song.1.wav >song.2.wav
refuses '"film.wav" is no WAVE file' demo.sh film.wav
refuses 'there is no readable file "none"' demo.sh song.1.wav song.2.wav none
refuses '"0" is no number of seconds' fuzz.sh 0
refuses 'have one name, "song.1"' demo.sh song.1.wav ./song.1.wav
refuses 'takes one argument, SECONDS, but was given 2' fuzz.sh 1 2
refuses 'the preset is mingw-release' test.sh none
refuses 'the one argument is --accept, not "--accept x"' check-package.sh --accept x
refuses 'needs the name of a Debian release' fresh.sh
for script in {bench,check,package,pictures,spreadsheet}.sh ../ci/.ci/run; do
    refuses 'takes no arguments, but was given "x"' "$script" x
done
