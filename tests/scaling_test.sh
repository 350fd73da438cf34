#!/usr/bin/env bash
# The scaling suite at the resolutions other than 96 dpi, and in fonts other than Wine's own, which is as narrow as
# Windows': a process learns both when it starts. Needs BUILD_DIR, WINEPREFIX and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

kSubstitutes='HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes'
# DPI and the font of dialogs.
kRuns='
120 Tahoma
144 Tahoma
192 Tahoma
96 Liberation Sans
96 DejaVu Sans
'

output=$(mktemp)
failed=0
while read -r dpi font; do
    [[ -n $dpi ]] || continue
    SetRegistryValue "$kSubstitutes" 'MS Shell Dlg' REG_SZ "$font"
    SetDpi "$dpi"
    code=0
    EXPECTED_DPI=$dpi EXPECTED_FONT=$font Wine 90 "$BUILD_DIR/tests/scaling_tests.exe" >"$output" 2>&1 || code=$?
    if ((code == 0)) && grep -q '^\[doctest\] Status: SUCCESS' "$output"; then
        echo "$dpi dpi, $font: ok"
    else
        failed=1
        echo "$dpi dpi, $font: exit code $code"
        cat "$output"
    fi
done <<<"$kRuns"
rm -f "$output"
exit "$failed"
