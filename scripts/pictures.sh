#!/usr/bin/env bash
# Makes the pictures of the pages anew: docs/settings-panel.png, the settings panel in the stand-in's window at 192 dots
# per inch, and docs/html-page.png, the page that Html.xslt makes of a sample document, in headless Chromium. Look at
# them before they are committed.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git python3 googletest wine wine64 \
    xvfb xdotool imagemagick chromium xsltproc libxml2-utils flac ffmpeg jq sqlite3

work=$root/build/pictures
rm -rf "$work"
mkdir -p "$work"

# finish PICTURE NAME: puts it into docs/ with few colours, and without the time and other facts about the file.
finish() {
    convert "$1" +dither -colors 64 -strip "$root/docs/$2"
    echo "docs/$2, $(identify -format '%w x %h' "$root/docs/$2"), $(stat -c %s "$root/docs/$2") bytes"
}

build mingw-release WriteMetadataFile dsphost
start_display
start_wine wine-pictures # of its own, for its resolution
run_wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 192 /f </dev/null >/dev/null 2>&1
# It waits for OK, and ends with Wine's server at the end of this script.
timeout 60 "$root/cmake/run-under-wine.sh" "$root/build/mingw-release/tools/dsphost.exe" --panel \
    --settings '-xsltfile="C:\Style sheets\Html.xslt" -ext=".html"' </dev/null >"$work/dsphost.log" 2>&1 &
window=$(timeout 30 xdotool search --sync --onlyvisible --name '^DSP settings$') || fail "no panel is shown"
# Without a window manager the window is its client area. It is drawn when it stays the same for a second.
until [[ -s $work/before.png ]] && compare -metric AE "$work/before.png" "$work/panel.png" null: 2>/dev/null; do
    [[ ! -e $work/panel.png ]] || mv "$work/panel.png" "$work/before.png"
    sleep 1
    import -window "$window" "$work/panel.png"
done
finish "$work/panel.png" settings-panel.png

python3 "$root/tests/stylesheets/check_sheets.py" "$work/sheets"
chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$work/profile" --hide-scrollbars \
    --window-size=1000,1366 --screenshot="$work/page.png" "file://$work/sheets/samples/speech.html" >"$work/log" 2>&1
finish "$work/page.png" html-page.png
