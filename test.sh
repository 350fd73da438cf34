#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the tests under Wine; the last line reads "N passed, N failed".
#
#   ./test.sh           every test
#   ./test.sh NAME...   those whose name contains a NAME; if there is none, the test cases whose name contains the first
#
# PRESET chooses the CMake preset (release), JOBS how many tests run at a time (4: most of them wait for windows and
# other processes most of their time). CTest runs them, and can be asked for more: ctest --preset release --rerun-failed.
# What they print is kept in build/PRESET/test-output/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

preset=${PRESET:-release}
build=$kBuildRoot/$preset
output=$build/test-output

# Finish PASSED FAILED [REASON]
Finish() {
    [[ -z ${3:-} ]] || echo "$3"
    echo "$1 passed, $2 failed"
    (($1 > 0 && $2 == 0)) && exit 0
    exit 1
}

# Launchers end by themselves when CTest has gone, which takes a moment.
# shellcheck disable=SC2317 # the trap calls it
WaitForLaunchers() {
    for ((i = 0; i < 300; i++)); do
        pgrep -s 0 -f '/tests/launch.sh' >/dev/null || return 0
        sleep 0.1
    done
}
trap 'StopAll; WaitForLaunchers' EXIT

# Quoted TEXT: as a regular expression that matches nothing else.
# shellcheck disable=SC2001 # a class of characters is easier to read in sed
Quoted() {
    sed 's/[][\\.*^$+?(){}|]/\\&/g' <<<"$1"
}

# Matching NAME...: the registered tests whose name contains one.
Matching() {
    local name
    for name in "$@"; do
        ctest --preset "$preset" -N -R "$(Quoted "$name")" 2>/dev/null | sed -n 's/^ *Test *#[0-9]*: //p'
    done | sort -u
}

# WithCase TEXT: the doctest programs that contain the text, whatever its case, since it may name one of their test cases.
WithCase() {
    local program
    for program in "$build"/tests/*_tests.exe; do
        ! grep -qaiF -- "$1" "$program" || basename "$program" .exe
    done
}

mkdir -p "$kBuildRoot"
cmake --preset "$preset" >"$kBuildRoot/configure.log" 2>&1 ||
    { cat "$kBuildRoot/configure.log"; Finish 0 1 "The configuration failed."; }
cmake --build --preset "$preset" || Finish 0 1 "The build failed."

chosen=()
if (($#)); then
    names=$(Matching "$@")
    if [[ -z $names ]]; then
        names=$(WithCase "$1")
        export TEST_CASE="*$1*"
    fi
    [[ -n $names ]] || Finish 0 0 "No test has that name."
    chosen=(-R "^($(Quoted "$names" | paste -sd '|'))\$")
fi

rm -rf "$output"
code=0
exec {lines}> >(grep --line-buffered -v '^ *Start ')
filter=$!
setpriv --pdeathsig TERM ctest --preset "$preset" -j "${JOBS:-4}" "${chosen[@]}" </dev/null >&"$lines" {lines}>&- &
wait $! || code=$?
exec {lines}>&-
wait "$filter" || true

passed=0
failed=0
shopt -s nullglob
for result in "$output"/*.result; do
    read -r p f note <"$result"
    ((passed += p, failed += f)) || true
    ((f == 0)) || echo "FAILED $(basename "$result" .result): $p passed, $f failed${note:+ ($note)}"
done
((code == 0 || failed > 0)) || failed=1
Finish "$passed" "$failed"
