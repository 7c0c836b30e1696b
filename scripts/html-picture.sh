#!/usr/bin/env bash
# Makes docs/html-page.png anew: the page that Html.xslt makes of a sample document, in headless Chromium.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages chromium python3 xsltproc libxml2-utils flac ffmpeg jq sqlite3 imagemagick

work=$root/build/html-picture
rm -rf "$work"
python3 "$root/tests/stylesheets/check_sheets.py" "$work"
chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$work/profile" --hide-scrollbars \
    --window-size=1000,1366 --screenshot="$work/page.png" "file://$work/samples/speech.html" >"$work/log" 2>&1
convert "$work/page.png" +dither -colors 64 -strip "$root/docs/html-page.png"
echo "docs/html-page.png, $(stat -c %s "$root/docs/html-page.png") bytes"
