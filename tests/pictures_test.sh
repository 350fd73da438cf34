#!/usr/bin/env bash
# The pictures in docs/pictures are those that the programs give today, pixel by pixel, and the documents show them all.
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

tools/pictures.sh "$taken" >"$taken/log" 2>&1 </dev/null &
wait $! || { cat "$taken/log"; exit 1; }

diff <(Pictures "$kCommitted") <(Pictures "$taken") || Report "the pictures are not the same ones (< is in $kCommitted)"
count=0
for picture in $(Pictures "$taken"); do
    [[ -e $kCommitted/$picture ]] || continue
    # Pictures of different size make compare fail, with a text for a number.
    pixels=$(compare -metric AE "$kCommitted/$picture" "$taken/$picture" null: 2>&1) || true
    [[ $pixels == 0 ]] || Report "$picture differs in $pixels pixels"
    grep -rqF "pictures/${picture#./}" --include='*.md' README.md docs || Report "no document shows $picture"
    ((count += 1))
done
((count >= 10)) || Report "there are only $count pictures"
((!failed)) || { echo "Run tools/pictures.sh, look at what has changed, and commit it."; exit 1; }
echo "ok: $count pictures are current"
