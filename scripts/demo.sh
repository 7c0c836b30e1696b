#!/usr/bin/env bash
# Shows the plug-in at work: converts recordings to FLAC and has the plug-in write a metadata document for each, and for
# one of them what each of its style sheets makes of it.
#
#   scripts/demo.sh [WAV…]
#
# Without arguments it takes the speech recordings of Debian's alsa-utils.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
source "$root/scripts/style-sheets.sh"

# take_recordings FILE…: the absolute paths of what is to be converted, in `recordings`.
take_recordings() {
    local file name
    local -A taken=()
    recordings=()
    for file; do
        name=$(basename -- "${file%.*}")
        [[ -f $file && -r $file ]] || wrong_arguments "there is no readable file \"$file\""
        [[ $(head -c 12 -- "$file" | tr -d '\0') == RIFF*WAVE ]] || wrong_arguments "\"$file\" is no WAVE file"
        [[ -z ${taken[$name]-} ]] || wrong_arguments "\"${taken[$name]}\" and \"$file\" have one name, \"$name\""
        taken[$name]=$file
        recordings+=("$(realpath -- "$file")")
    done
}
take_recordings "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git python3 googletest \
    wine wine64 flac ffmpeg alsa-utils libxml2-utils xsltproc jq sqlite3

if (($# == 0)); then
    take_recordings /usr/share/sounds/alsa/*.wav
fi

build mingw-release WriteMetadataFile dsphost wav flac
one_processor
start_wine wine

demo=$root/build/demo
build=$root/build/mingw-release

# convert WAV FLAC TITLE: as the converter would, with tags that put the plug-in to the test.
convert() {
    flac --silent --no-preserve-modtime --output-name "$2" \
        --tag "TITLE=$3" --tag "ARTIST=Zoë Ångström" --tag "ARTIST=Łukasz & Żaneta" --tag "ALBUM=Loudspeakers" \
        --picture "$root/tests/data/cover.png" -- "$1" || fail "flac does not convert $1"
}

title_of() {
    local name
    name=$(basename "${1%.*}")
    echo "Hörprobe „${name//_/ }“"
}

# The last demo is removed when all recordings of the new one are converted.
rm -rf "$demo.new"
mkdir -p "$demo.new"
for wav in "${recordings[@]}"; do
    convert "$wav" "$demo.new/$(basename "${wav%.*}").flac" "$(title_of "$wav")"
done
rm -rf "$demo"
mv "$demo.new" "$demo"

# check DOCUMENT TITLE: a parser accepts the document, and what was tagged is in it.
check() {
    local report
    report=$(xmllint --noout --schema "$root/docs/AudioMetadata.xsd" "$1" 2>&1) || fail "$report"
    local tags='/AudioMetadata/ConvertedFile/IDTags'
    [[ $(xmllint --xpath "string($tags/TITLE)" "$1") == "$2" ]] || fail "the title is missing in $1"
    [[ $(xmllint --xpath "count($tags/ARTIST)" "$1") == 2 ]] || fail "an artist is missing in $1"
}

count=0
for wav in "${recordings[@]}"; do
    converted=$demo/$(basename "${wav%.*}").flac
    document=${converted%.flac}.xml
    printf '[%d/%d] ' $((++count)) ${#recordings[@]}
    run_wine "$build/tools/dsphost.exe" "$(windows_path "$wav")" "$(windows_path "$converted")" </dev/null
    check "$document" "$(title_of "$wav")"
done
transform "$build" "$wav" "$converted" >/dev/null # all forms of the last one

printf '\n%s\n\n' "$document"
tr -d '\r' <"$document"

printf '\nReading back what the style sheets made of it, with xsltproc, metaflac, ffmpeg, jq and SQLite:\n'
name=$(basename "${document%.xml}")
produced=$root/build/demo-check/produced
rm -rf "$produced"
mkdir -p "$produced"
cp "$demo/$name".* "$produced/"
python3 "$root/tests/stylesheets/check_sheets.py" "$root/build/demo-check" "$produced"

cat <<END

$count documents, accepted by xmllint and the schema, lie beside their FLAC files in
$demo

What next:
  open $demo/$name.html in a browser, and look at the other forms of $name beside it
  scripts/demo.sh RECORDING.wav…   the same with recordings of your own
  scripts/package.sh               the package for Windows; docs/installing.md says where its files go
END
