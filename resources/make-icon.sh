#!/bin/sh
# Draws WriteMetadataFile.ico: a page of text with a music note, as one PNG image of 48 x 48 pixels. Lines are
# two pixels wide and begin at even pixels, so that they stay sharp at half that size. The page stands at the left
# edge: in the settings panel the icon's right edge is the panel's, or lies beyond it.
# Needs ImageMagick. Takes no arguments.
set -eu
if [ $# -gt 0 ]; then
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
    [ "$1" = --help ] && exit 0 || exit 2
fi
cd "$(dirname "$0")"
png=$(mktemp)
trap 'rm -f "$png"' EXIT

# Drawn at eight times the size and averaged down; right and bottom edges are inclusive.
convert -size 384x384 xc:none \
    -fill '#2f5d8c' -draw 'polygon 0,0 207,0 303,96 303,383 0,383' \
    -fill white -draw 'polygon 16,16 191,16 191,112 287,112 287,367 16,367' \
    -fill '#bcd3ea' -draw 'polygon 208,22 208,95 281,95' \
    -fill '#7f8fa0' \
    -draw 'rectangle 48,80 159,95' -draw 'rectangle 48,128 159,143' -draw 'rectangle 48,176 127,191' \
    -draw 'rectangle 48,224 111,239' -draw 'rectangle 48,272 95,287' \
    -fill '#c8420a' \
    -draw 'polygon 192,160 255,192 255,239 207,216 207,320 192,320' \
    -draw 'translate 163,316 rotate -18 ellipse 0,0 44,34 0,360' \
    -filter Box -resize 48x48 -strip -depth 8 "png32:$png"

# One entry: 48 x 48, 32 bits, the image following the 22 bytes of header.
le32() { printf "\\$(printf %o $(($1 & 255)))\\$(printf %o $(($1 >> 8 & 255)))\\000\\000"; }
{
    printf '\0\0\1\0\1\0\60\60\0\0\1\0\40\0'
    le32 "$(wc -c < "$png")"
    le32 22
    cat "$png"
} > WriteMetadataFile.ico
