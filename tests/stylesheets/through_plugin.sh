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
for name, rate in ("awkward", 48000), ("bare", 44100):
    with wave.open(name + ".wav", "wb") as tone:
        tone.setparams((2, 2, rate, 0, "NONE", ""))
        tone.writeframes(bytes(rate))'
printf 'line %d\r\n\r\n' {1..4000} >windows.txt
flac --silent awkward.wav \
    --tag 'TITLE=Größe 😀 "quoted" \back & <tag>; #1 = 🎵' --tag 'ARTIST=Zoë, Ång' --tag 'ARTIST=مساء' \
    --tag 'ARTIST=C; D' --tag $'COMMENT=first line\nsecond\tline' --tag 'EMPTY=' --tag 'PATH=C:\music\' \
    --tag 'with space=x' --tag TRACKNUMBER=3 --tag 'ALBUMARTIST=Zoë' --tag $'ENDS=ripped with care\r\n' \
    --picture "$root/tests/data/cover.png" \
    --tag $'LYRICS=line1\r\nline2\r\n\r\nline4\r\n' --tag-from-file LONG=windows.txt
flac --silent bare.wav

for name in awkward bare; do
    run_wine "$build/tools/dsphost.exe" "$(windows_path "$work/$name.wav")" "$(windows_path "$work/$name.flac")" </dev/null
    transform "$build" "$work/$name.wav" "$work/$name.flac"
done
diff "$root/tests/stylesheets/awkward.vc" <(cut -b -200 awkward.vc) # of LONG the beginning
python3 "$root/tests/stylesheets/check_sheets.py" "$2/read" "$work"
python3 "$root/tests/stylesheets/check_prompt.py" "$2/prompt" "$work"
