#!/usr/bin/env bash
# Builds the benchmarks and runs them under Wine, one after the other; takes a few minutes, 2 GB of disk space, and
# wants a machine that does nothing else. The table goes to the terminal and to build/bench/table.md.
#
#   ./bench.sh          all
#   ./bench.sh NAME     those whose name contains NAME
#
# Every row compares two ways to do the same work, timed by turns in one run: what counts is their ratio.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

kProgramSeconds=300
kBuildDir=$kBuildRoot/release
kOutput=$kBuildRoot/bench

cmake --preset release >"$kBuildRoot/configure.log" 2>&1 || { cat "$kBuildRoot/configure.log"; exit 1; }
cmake --build --preset release --target bench

mkdir -p "$kOutput/files"
trap 'rm -rf "$kOutput/files"; StopAll' EXIT

UsePrefix "$kBuildRoot/wine-bench"
MakePrefix "$WINEPREFIX"
StartScreen
UseWindowManager N

cat >"$kOutput/table.md" <<'HEADER'
| Work | Size | Measured | ms | Beside | ms | Least ratio | Median ratio | Most | Wanted |
|---|---|---|---|---|---|---|---|---|---|
HEADER
failed=0
for program in log_refresh repeated_line settings_transfer duplicate_check; do
    [[ $program == *"${1:-}"* ]] || continue
    echo "$program ..." >&2
    Wine "$kProgramSeconds" "$kBuildDir/bench/${program}_bench.exe" "Z:${kOutput//\//\\}\\files" \
        >"$kOutput/$program.md" 2>"$kOutput/$program.errors" ||
        { failed=1; echo "$program failed:" >&2; tail -5 "$kOutput/$program.errors" >&2; }
    tr -d '\r' <"$kOutput/$program.md" >>"$kOutput/table.md"
done

cat "$kOutput/table.md"
exit "$failed"
