#!/usr/bin/env bash
# The scaling suite at the resolutions other than the 96 dpi that it runs at by itself: a process learns its resolution
# when it starts. Needs BUILD_DIR, WINEPREFIX and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

output=$(mktemp)
failed=0
for dpi in 120 144 192; do
    SetDpi "$dpi"
    code=0
    EXPECTED_DPI=$dpi Wine 60 "$BUILD_DIR/tests/scaling_tests.exe" >"$output" 2>&1 || code=$?
    if ((code == 0)) && grep -q '^\[doctest\] Status: SUCCESS' "$output"; then
        echo "$dpi dpi: ok"
    else
        failed=1
        echo "$dpi dpi: exit code $code"
        cat "$output"
    fi
done
rm -f "$output"
exit "$failed"
