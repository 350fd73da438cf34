#!/usr/bin/env bash
# The documents show every picture in docs/pictures; and on the system that these come from they are what the programs
# show today, pixel by pixel. That the layout is the one in the pictures is proved everywhere, by the scaling suite.
# Needs BUILD_DIR.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kCommitted=docs/pictures
taken=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; wait; rm -rf "$taken"' EXIT
trap 'exit 143' TERM
failed=0

# Report TEXT...
Report() {
    echo "FAILED: $*"
    failed=1
}

Pictures() {
    (cd "$1" && find . -name '*.png' | sort)
}

Compare() {
    local picture pixels
    tools/pictures.sh "$taken" >"$taken/log" 2>&1 </dev/null &
    wait $! || { cat "$taken/log"; exit 1; }
    diff <(Pictures "$kCommitted") <(Pictures "$taken") || Report "the pictures are not the same ones (< is in $kCommitted)"
    for picture in $(Pictures "$taken"); do
        [[ -e $kCommitted/$picture ]] || continue
        # Pictures of different size make compare fail, with a text for a number.
        pixels=$(compare -metric AE "$kCommitted/$picture" "$taken/$picture" null: 2>&1) || true
        [[ $pixels == 0 ]] || Report "$picture differs in $pixels pixels"
    done
    ((!failed)) || echo "Run tools/pictures.sh, look at what has changed, and commit it."
}

count=0
for picture in $(Pictures "$kCommitted"); do
    grep -rqF "pictures/${picture#./}" --include='*.md' README.md docs || Report "no document shows $picture"
    ((count += 1))
done
((count >= 10)) || Report "there are only $count pictures"

compared='current, too'
if tools/pictures.sh --system | diff "$kCommitted/system.txt" - >"$taken/other"; then
    Compare
else
    cat "$taken/other"
    compared='not compared, for they come from another system (< above)'
fi
((!failed)) || exit 1
echo "ok: documents show all $count pictures; they are $compared"
