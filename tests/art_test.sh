#!/usr/bin/env bash
# The icons and the logo in app/res are what tools/make_art.sh makes of the drawings, and icons are drawn for each size
# that they have at 96, 120, 144 and 192 dpi. Another version of the rasteriser may shade an edge a little differently, and
# a logo's pixel at an edge may be there or not.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kCommitted=app/res
kShade=4%
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
failed=0

tools/make_art.sh "$made" >"$made/log" 2>&1 </dev/null || { cat "$made/log"; exit 1; }

# Different FILE: the number of pixels, from ImageMagick 7.1.2 on the sum of their differences and one more; a text where
# the sizes differ.
Different() {
    local said
    convert "$kCommitted/$1" -background none +append "png32:$made/committed.png"
    convert "$made/$1" -background none +append "png32:$made/made.png"
    said=$(compare -metric AE -fuzz "$kShade" "$made/committed.png" "$made/made.png" null: 2>&1) || true
    echo "${said%% (*}"
}

for icon in "$kCommitted"/*.ico; do
    [[ $icon == */list_* ]] && widths='22 28 33 44' || widths='16 20 24 32'
    [[ $(identify -format '%w ' "$icon") == "$widths "* ]] || { echo "FAILED: $icon is not drawn for $widths"; failed=1; }
done

count=0
for file in "$made"/*.{ico,gif,bmp}; do
    name=${file##*/}
    pixels=$(Different "$name")
    allowed='0'
    [[ $name != *.gif ]] || allowed='[0-8](\.[0-9]+)?'
    if ! [[ $pixels =~ ^$allowed$ ]]; then
        echo "FAILED: $name differs: $pixels"
        failed=1
    fi
    ((count += 1))
done
diff <(cd "$made" && ls -- *.{ico,gif,bmp}) <(cd "$kCommitted" && ls -- *.{ico,gif,bmp}) || failed=1
((!failed)) || { echo "Run tools/make_art.sh, look at what has changed, and commit it."; exit 1; }
echo "ok: all $count pictures are those of the drawings"
