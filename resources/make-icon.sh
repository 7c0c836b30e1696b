#!/bin/sh
# Draws WriteMetadataFile.ico: a page of text with a music note, as one PNG image of 48 x 48 pixels. Lines are
# two pixels wide and begin at even pixels, so that they stay sharp at half that size.
# Needs ImageMagick.
set -eu
cd "$(dirname "$0")"
png=$(mktemp)
trap 'rm -f "$png"' EXIT

# Drawn at eight times the size and averaged down; right and bottom edges are inclusive.
convert -size 384x384 xc:none \
    -fill '#2f5d8c' -draw 'polygon 48,0 255,0 351,96 351,383 48,383' \
    -fill white -draw 'polygon 64,16 239,16 239,112 335,112 335,367 64,367' \
    -fill '#bcd3ea' -draw 'polygon 256,22 256,95 329,95' \
    -fill '#7f8fa0' \
    -draw 'rectangle 96,80 207,95' -draw 'rectangle 96,128 207,143' -draw 'rectangle 96,176 175,191' \
    -draw 'rectangle 96,224 159,239' -draw 'rectangle 96,272 143,287' \
    -fill '#c8420a' \
    -draw 'polygon 240,160 303,192 303,239 255,216 255,320 240,320' \
    -draw 'translate 211,316 rotate -18 ellipse 0,0 44,34 0,360' \
    -filter Box -resize 48x48 -strip -depth 8 "png32:$png"

# One entry: 48 x 48, 32 bits, the image following the 22 bytes of header.
le32() { printf "\\$(printf %o $(($1 & 255)))\\$(printf %o $(($1 >> 8 & 255)))\\000\\000"; }
{
    printf '\0\0\1\0\1\0\60\60\0\0\1\0\40\0'
    le32 "$(wc -c < "$png")"
    le32 22
    cat "$png"
} > WriteMetadataFile.ico
