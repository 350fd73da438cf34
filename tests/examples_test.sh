#!/usr/bin/env bash
# Runs the VBScript examples of the automation guide against the registered manager.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
output=$(mktemp)
trap 'rm -f "$output"' EXIT

# Expect PATTERN SCRIPT [ARGUMENT...]: the script prints a line that matches. To a file: the manager inherits a pipe.
Expect() {
    timeout 60 wine cscript //nologo "Z:$PWD/docs/examples/$2" "${@:3}" >"$output" 2>&1 </dev/null || true
    grep -Eq "$1" "$output" && return
    echo "$2 did not print $1 but:"
    cat "$output"
    exit 1
}

Expect '^Window [0-9]+, visible: True' show.vbs once
Expect '^Sentrel since [0-9]' tooltip.vbs
Expect '^The manager has ended' end.vbs
for script in docs/examples/*.vbs; do
    grep -q "${script##*/}" "$0" || { echo "$script is not run by $0"; exit 1; }
done
