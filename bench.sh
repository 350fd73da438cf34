#!/usr/bin/env bash
# Builds the benchmarks and runs them under Wine; takes a few minutes, 2 GB of disk space, and wants a machine that does
# nothing else. The table goes to the terminal and to build/bench/table.md.
#
#   ./bench.sh          all
#   ./bench.sh NAME     those whose name contains NAME
#   ./bench.sh long     lists of 30,000 and 100,000 rows, which take minutes of their own
#
# Every row compares two ways to do the same work, timed by turns in one run: what counts is their ratio.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

kProgramSeconds=600
kPrograms='log_refresh settings_transfer duplicate_check window activation notice footprint'
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

RegisterServers "$kBuildDir"

# Run PROGRAM [ARGUMENT]: its rows go to a file of their own.
Run() {
    Wine "$kProgramSeconds" "$kBuildDir/bench/$1_bench.exe" "Z:${kOutput//\//\\}\\files" "${@:2}" \
        >"$kOutput/$1.md" 2>"$kOutput/$1.errors" ||
        { echo "$1 failed:" >&2; tail -5 "$kOutput/$1.errors" >&2; return 1; }
}

selected=()
arguments=()
if [[ ${1:-} == long ]]; then
    selected=(settings_transfer)
    arguments=(long)
fi
for program in $kPrograms; do
    [[ $program != *"${1:-}"* ]] || selected+=("$program")
done

failed=0
for program in "${selected[@]}"; do
    echo "$program ..." >&2
    Run "$program" "${arguments[@]}" || failed=1
done

cat >"$kOutput/table.md" <<'HEADER'
| Work | Size | Measured | | Beside | | Least ratio | Median ratio | Most | Wanted |
|---|---|---|---|---|---|---|---|---|---|
HEADER
for program in "${selected[@]}"; do
    tr -d '\r' <"$kOutput/$program.md" >>"$kOutput/table.md"
done

cat "$kOutput/table.md"
exit "$failed"
