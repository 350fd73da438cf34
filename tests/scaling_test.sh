#!/usr/bin/env bash
# The scaling suite at the resolutions other than 96 dpi, in fonts other than Wine's own, which is as narrow as
# Windows', and with text that the user has made half as large again and twice as large: a process learns them when it
# starts. Needs BUILD_DIR, WINEPREFIX and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

# DPI, the height of the letters of messages in pixels of 96 dpi, 11 unless the user wants them larger, and their font.
kRuns='
120 11 Tahoma
144 11 Tahoma
192 11 Tahoma
96 11 Liberation Sans
96 11 DejaVu Sans
96 17 Tahoma
96 22 Tahoma
96 22 DejaVu Sans
144 22 Liberation Sans
'

output=$(mktemp)
failed=0
while read -r dpi height font; do
    [[ -n $dpi ]] || continue
    SetMessageFont "$height" "$font"
    SetDpi "$dpi"
    code=0
    EXPECTED_DPI=$dpi EXPECTED_FONT=$font EXPECTED_HEIGHT=$height \
        Wine 180 "$BUILD_DIR/tests/scaling_tests.exe" >"$output" 2>&1 || code=$?
    if ((code == 0)) && grep -q '^\[doctest\] Status: SUCCESS' "$output"; then
        echo "$dpi dpi, $height pixels of $font: ok"
    else
        failed=1
        echo "$dpi dpi, $height pixels of $font: exit code $code"
        cat "$output"
    fi
done <<<"$kRuns"
rm -f "$output"
exit "$failed"
