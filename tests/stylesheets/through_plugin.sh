#!/usr/bin/env bash
# Every style sheet by the plug-in under Wine, from a FLAC file with awkward tags, read back by the programs that take
# its output: through_plugin.sh BUILD WORK

source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"
source "$root/scripts/style-sheets.sh"

build=$1 work=$2/plugin
rm -rf "$work"
mkdir -p "$work"
cd "$work"

python3 -c 'import wave
with wave.open("tone.wav", "wb") as tone:
    tone.setparams((2, 2, 44100, 0, "NONE", ""))
    tone.writeframes(bytes(44100))'
printf 'line %d\r\n\r\n' {1..5000} >windows.txt
flac --silent --output-name awkward.flac tone.wav \
    --tag 'TITLE=Größe 😀 "quoted" \back & <tag>; #1 = 🎵' --tag 'ARTIST=Zoë, Ång' --tag 'ARTIST=مساء' \
    --tag 'ARTIST=C; D' --tag $'COMMENT=first line\nsecond\tline' --tag 'EMPTY=' --tag 'PATH=C:\music\' \
    --tag 'with space=x' --tag TRACKNUMBER=3 --tag 'ALBUMARTIST=Zoë' --tag $'ENDS=ripped with care\r\n' \
    --picture "$root/tests/data/cover.png" \
    --tag $'LYRICS=line1\r\nline2\r\n\r\nline4\r\n' --tag-from-file LONG=windows.txt
flac --silent --output-name bare.flac tone.wav

dsphost=$build/tools/dsphost.exe
for name in awkward bare; do
    run_wine "$dsphost" "$(windows_path "$work/tone.wav")" "$(windows_path "$work/$name.flac")" </dev/null
    transform "$build" "$work/tone.wav" "$work/$name.flac"
done
python3 "$root/tests/stylesheets/check_sheets.py" "$2/read" "$work"

python3 "$root/tests/stylesheets/check_prompt.py" "$2/prompt" "$work"
