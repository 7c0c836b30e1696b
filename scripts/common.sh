# Functions that the scripts of this folder share; to be sourced. Any script answers --help with its head comment.

set -eEuo pipefail # E: the trap below also hears of what fails in a function

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Tags, file names and messages are UTF-8 whatever the user's locale.
export LC_ALL=C.UTF-8

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# wrong_arguments MESSAGE: what is wrong and what is allowed.
wrong_arguments() {
    printf '%s: %s (--help shows more)\n' "${0##*/}" "$*" >&2
    exit 2
}

# no_arguments "$@": for scripts that take none.
no_arguments() {
    (($# == 0)) || wrong_arguments "takes no arguments, but was given \"$1\""
}

for argument; do
    if [[ $argument == --help || $argument == -h ]]; then
        sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0" # from below the first line to the end of its comment
        exit
    fi
done

# Without random addresses, where the system lets us. Wine's program lies below 2 GiB and its heap somewhere in the
# GiB above: once in some two thousand starts on 0x7FFE0000, which Windows shares with all programs. Wine then ends with
# status 1 and says nothing.
if [[ $(</proc/self/personality) != *[4-7c-f]???? ]] && setarch -R true 2>/dev/null; then
    exec setarch -R bash "$0" "$@"
fi

# at_exit COMMAND: runs COMMAND when the script ends; commands run in reverse order.
exit_commands=()
at_exit() {
    exit_commands=("$1" "${exit_commands[@]}")
}
run_exit_commands() {
    local command
    for command in "${exit_commands[@]}"; do
        eval "$command"
    done
}
trap run_exit_commands EXIT
trap 'printf "%s: %s, line %d, ended with status %d: %s\n" "${0##*/}" "${BASH_SOURCE[0]##*/}" "$LINENO" "$?" \
    "$BASH_COMMAND" >&2' ERR

# install_packages PACKAGE…: installs those that are missing; without root fails with the command that installs them.
install_packages() {
    local package missing=()
    for package; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ((EUID != 0)); then
        fail "packages are missing; as root: apt-get install --no-install-recommends ${missing[*]}"
    fi
    echo "Installing ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET…]: configures and builds; shows the build's output only when it fails.
build() {
    local preset=$1 log=$root/build/$1.log
    shift
    echo "Building $preset"
    mkdir -p "$root/build"
    if ! (cd "$root" && cmake --preset "$preset" && cmake --build --preset "$preset" -j "$(nproc)" \
        ${1+--target "$@"}) >"$log" 2>&1; then
        cat "$log" >&2
        fail "the build failed"
    fi
}

# start_wine FOLDER: makes the Wine prefix in build/FOLDER, once, and keeps a server for it running until the
# script ends.
start_wine() {
    # Wine ends a program with status 1 when it cannot hand an exception to it; these say so, which "-all" would hide.
    export WINEPREFIX=$root/build/$1 WINEDEBUG=-all,err+seh,err+virtual
    at_exit 'wineserver -k || true; wineserver -w'
    if [[ ! -e $WINEPREFIX/prepared ]]; then
        echo "Preparing Wine"
        rm -rf "$WINEPREFIX"
        mkdir -p "$WINEPREFIX"
        # Without these two modules Wine offers no downloads.
        WINEDLLOVERRIDES='mscoree,mshtml=' timeout 300 wineboot -i </dev/null >/dev/null 2>&1 ||
            fail "Wine cannot make its prefix $WINEPREFIX"
        # A program that crashes ends, instead of waiting for a debugger.
        run_wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /t REG_SZ /d '' /f \
            </dev/null >/dev/null 2>&1
        wineserver -k # writes the registry to disk
        touch "$WINEPREFIX/prepared"
    fi
    # Wine's services and its desktop inherit the files that are open when they start, so they start with none: a
    # reader of such a pipe would wait for them, and such a file could not be replaced. A server may run already.
    wineserver -p </dev/null >/dev/null 2>&1 || true
    run_wine rundll32 user32.dll,MessageBeep </dev/null >/dev/null 2>&1 || fail "Wine does not start a program"
}

# one_processor: the script and what it starts run on one processor from now on. A program and Wine's server take turns:
# on two processors that have nothing else to do, each wakes the other from its sleep, which takes eight times as long.
one_processor() {
    # The first number behind the last colon in "pid 123's current affinity list: 0-3".
    if [[ $(taskset -cp $$) =~ ([0-9]+)[^:]*$ ]]; then
        taskset -cp "${BASH_REMATCH[1]}" $$ >/dev/null || true # without it, the same takes longer
    fi
}

# start_display: an X display of our own, for programs that show windows, until the script ends.
start_display() {
    local pipe number
    exec {pipe}< <(exec Xvfb -displayfd 1 -screen 0 1600x1200x24 -nolisten tcp 2>/dev/null)
    display_pid=$!
    at_exit 'kill "$display_pid" 2>/dev/null || true'
    read -r -t 30 -u "$pipe" number || fail "Xvfb does not start"
    export DISPLAY=:$number
}

# run_wine PROGRAM [ARGUMENT…]: reports a failure also where the program says nothing.
run_wine() {
    local status=0
    timeout 60 "$root/cmake/run-under-wine.sh" "$@" || status=$?
    ((status == 0)) || printf '%s: status %d%s of %s\n' "${0##*/}" "$status" \
        "$( ((status == 124)) && echo ', the time limit,')" "$*" >&2
    return "$status"
}

# commit_of FOLDER: the last commit of its sources, and whether they have changed since.
commit_of() {
    git -C "$1" describe --match= --always --abbrev=40 --dirty=', with changes'
}

# write_sum FILE: the SHA-256 in FILE.sha256, for sha256sum -c in any folder that has both; prints what was made.
write_sum() {
    (cd "${1%/*}" && sha256sum "${1##*/}" >"${1##*/}.sha256")
    printf '\n%s, %s bytes, SHA-256 %s\n' "$1" "$(stat -c %s "$1")" "$(cut -d ' ' -f 1 "$1.sha256")"
}

# windows_path PATH: an absolute path as programs under Wine see it.
windows_path() {
    printf 'Z:%s' "${1//\//\\}"
}
