#!/usr/bin/env bash
# Runs the examples of the automation guide against the registered manager, but for those in PowerShell, which Wine does
# not have. Needs BUILD_DIR.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
output=$(mktemp)
trap 'rm -f "$output"' EXIT

# Expect PATTERN PROGRAM [ARGUMENT...]: it ends with 0 and prints a line that matches. To a file: the manager inherits a
# pipe.
Expect() {
    local code=0
    timeout 60 wine "${@:2}" >"$output" 2>&1 </dev/null || code=$?
    ((code == 0)) && grep -Eq "$1" "$output" && return
    echo "${*:2} ended with $code and did not print $1 but:"
    cat "$output"
    exit 1
}

# Script NAME PATTERN [ARGUMENT...]
Script() {
    Expect "$2" cscript //nologo "Z:$PWD/docs/examples/$1" "${@:3}"
}

Script show.vbs '^Window [0-9]+, visible: True' once
Script tooltip.vbs '^Sentrel since [0-9]'
Expect '^Window [0-9]+, caption: Calvane' "$BUILD_DIR/tests/client_example.exe"
Script end.vbs '^The manager has ended'
Expect '^Window [0-9]+, caption: Calvane' "$BUILD_DIR/tests/client_example.exe" end
for example in docs/examples/*.vbs; do
    grep -q "^Script ${example##*/} " "$0" || { echo "$example is not run by $0"; exit 1; }
done
