#!/usr/bin/env bash
# Makes the program's icons and logo from the drawings in app/res/icons.svg.
#
#   tools/make_art.sh             in app/res
#   tools/make_art.sh OUTPUT      in this folder
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

# shellcheck disable=SC2034 # SetUp reads it
kNeeded='
librsvg2-bin    rsvg-convert
icoutils        icotool
imagemagick     convert
'
SetUp

readonly kSheet=app/res/icons.svg kSheetWidth=292
readonly -a kLeft=([16]=0 [20]=24 [24]=52 [32]=84 [40]=124 [48]=172 [64]=228)
readonly -A kTop=([mark]=0 [tray_0]=72 [tray_1]=112 [tray_2]=152 [list_banner]=192 [list_search]=232)
# The drawing that is enlarged for sizes that have none of their own.
readonly -a kDrawing=([96]=48 [120]=48 [128]=64 [144]=48 [192]=48 [256]=64)

output=${1:-app/res}
pieces=$(mktemp -d)
trap 'rm -rf "$pieces"' EXIT
mkdir -p "$output"

# Piece PICTURE SIZE [WIDTH]: makes the PNG file, with margins up to that width, and names it.
Piece() {
    local drawing=${kDrawing[$2]:-$2} file=$pieces/$1-$2.png
    rsvg-convert --width $((kSheetWidth * $2 / drawing)) --keep-aspect-ratio "$kSheet" |
        convert png:- -crop "$2x$2+$((kLeft[drawing] * $2 / drawing))+$((${kTop[$1]} * $2 / drawing))" +repage \
            -background none -gravity center -extent "${3:-$2}x$2" -strip \
            -define png:compression-level=9 -define png:exclude-chunks=all "png32:$file"
    echo "$file"
}

# Icon NAME PICTURE SIZE...: the entries stay PNG files, a tenth of what bitmaps take.
Icon() {
    local size entries=()
    for size in "${@:3}"; do
        entries+=("--raw=$(Piece "$2" "$size")")
    done
    icotool --create "${entries[@]}" --output="$output/$1.ico"
}

# RowIcon PICTURE SIZE...: with margins that keep the picture of a row apart from its check box and its text.
RowIcon() {
    local size entries=()
    for size in "${@:2}"; do
        entries+=("--raw=$(Piece "$1" "$size" $(((size * 22 + 8) / 16)))")
    done
    icotool --create "${entries[@]}" --output="$output/$1.ico"
}

Icon calvane mark 16 20 24 32 40 48 64 128 256
Icon tray_rest mark 16 20 24 32
for picture in tray_0 tray_1 tray_2; do
    Icon "$picture" "$picture" 16 20 24 32
done
for picture in list_banner list_search; do
    RowIcon "$picture" 16 20 24 32
done

# A GIF's pixels are there or not. At the edge they keep most of the colour inside: blended as on the light ground of
# most screens they would be a bright fringe on a black one.
for size in 96 120 144 192; do
    mark=$(Piece mark "$size")
    convert \
        \( "$mark" -channel A -evaluate multiply 0.5 -evaluate add 50% +channel -background '#F8F8F8' -alpha remove \) \
        \( "$mark" -alpha extract -threshold 50% \) -compose CopyOpacity -composite "$output/logo_$size.gif"
done

convert -size 164x314 'gradient:#FFFFFF-#C5E7E9' "$(Piece mark 128)" -geometry +18+93 -composite -type TrueColor \
    "BMP3:$output/wizard.bmp"
