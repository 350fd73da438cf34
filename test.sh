#!/usr/bin/env bash
# Builds everything and runs the tests under Wine; the last line reads "N passed, N failed".
#
#   ./test.sh           every test program and every tests/*_test.sh
#   ./test.sh NAME...   those whose name contains a NAME; if there is none, the test cases whose name contains the first
#
# PRESET chooses the CMake preset (release), JOBS how many programs run at a time (4: most of them wait for windows and
# other processes most of their time). Each of them gets a virtual screen and a fresh prefix in which the manager and
# the stand-in engine are registered. What they print is kept in build/test-output/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

kProgramSeconds=300
kShellTestSeconds=300

# The programs that take longest start first, so that none of them runs alone at the end.
kSlowest='window_abuse long_dialogs kill_sweep fault_sweep hostile_store engine_faults engine automation engine_storm'

names=("${@:-}")
preset=${PRESET:-release}
jobs=${JOBS:-4}
export BUILD_DIR=$kBuildRoot/$preset
output=$kBuildRoot/test-output
registered=$kBuildRoot/wine-test

# Finish PASSED FAILED [REASON]
Finish() {
    [[ -z ${3:-} ]] || echo "$3"
    echo "$1 passed, $2 failed"
    (($1 > 0 && $2 == 0)) && exit 0
    exit 1
}

# RunProgram FILE LOG: runs a doctest program and sets passed, failed and note from the summary that it prints.
RunProgram() {
    local code=0 summary
    export TEST_CURRENT=Z:${2//\//\\}.current
    Wine "$kProgramSeconds" "$1" "${filter[@]}" >"$2" 2>&1 || code=$?
    summary=$(tr -d '\r' <"$2" | grep '^\[doctest\] test cases:' | tail -1) || true
    if [[ $summary =~ \|\ *([0-9]+)\ passed\ *\|\ *([0-9]+)\ failed ]]; then
        passed=${BASH_REMATCH[1]} failed=${BASH_REMATCH[2]}
    else
        failed=1 note="ended without a summary, exit code $code"
    fi
    if ((code == 124 || code == 137)); then
        note="stopped after $kProgramSeconds s"
    elif ((code != 0 && failed == 0)); then
        note="exit code $code"
    fi
    [[ -z $note ]] || ((failed > 0)) || failed=1
    [[ -z $note || ! -s $2.current ]] || note+=", in test case: $(tr -d '\r' <"$2.current")"
}

# RunShellTest FILE LOG: sets passed, failed and note from the script's exit code.
RunShellTest() {
    local code=0
    Limited "$kShellTestSeconds" bash "$1" >"$2" 2>&1 || code=$?
    case $code in
    0) passed=1 ;;
    124 | 137) failed=1 note="stopped after $kShellTestSeconds s" ;;
    *) failed=1 note="exit code $code" ;;
    esac
}

# RunTest SLOT FILE: runs one test on the slot's screen in a fresh prefix, prints how it ended and, if anything failed,
# what it said.
RunTest() {
    local slot=$1 file=$2 base log start=$SECONDS passed=0 failed=0 note=
    base=$(basename "$file")
    log=$output/$base.log
    export WINEPREFIX=$registered-$slot DISPLAY=${displays[slot]}
    MakePrefix "$WINEPREFIX" "$registered"
    case $file in
    *.sh) RunShellTest "$file" "$log" ;;
    *) RunProgram "$file" "$log" ;;
    esac
    StopWine
    {
        if ((failed)); then
            echo "FAILED $base: $passed passed, $failed failed${note:+ ($note)}"
            tr -d '\r' <"$log" | sed -e '/^\[doctest\] \(doctest version\|run with\)/d' -e 's/^/    /'
        elif ((passed)); then
            echo "ok     $base: $passed passed, $((SECONDS - start)) s"
        fi
    } >"$log.report"
    cat "$log.report"
    echo "$passed $failed" >"$log.result"
}

shopt -s nullglob
cmake --preset "$preset" >"$kBuildRoot/configure.log" 2>&1 ||
    { cat "$kBuildRoot/configure.log"; Finish 0 1 "The configuration failed."; }
cmake --build --preset "$preset" || Finish 0 1 "The build failed."

tests=()
for slow in $kSlowest; do
    tests+=("$BUILD_DIR/tests/${slow}_tests.exe")
done
for file in tests/*_test.sh "$BUILD_DIR"/tests/*_tests.exe; do
    [[ " ${tests[*]} " == *" $file "* ]] || tests+=("$file")
done
chosen=()
filter=()
for file in "${tests[@]}"; do
    for name in "${names[@]}"; do
        [[ $(basename "$file") == *"$name"* ]] || continue
        chosen+=("$file")
        break
    done
done
if ((${#chosen[@]} == 0)); then
    chosen=("$BUILD_DIR"/tests/*_tests.exe)
    filter=("--test-case=*${names[0]}*")
fi

rm -rf "$output"
mkdir -p "$output"
UsePrefix "$registered"
MakePrefix "$registered"
UseWindowManager N
RegisterServers "$BUILD_DIR" || Finish 0 1 "The servers could not be registered."
StopWine

# Free slots wait in a queue; a test takes one and puts it back.
mkfifo "$output/slots"
exec {slots}<>"$output/slots"
displays=()
for ((slot = 0; slot < jobs; slot++)); do
    StartScreen
    displays[slot]=$DISPLAY
    prefixesInUse+=("$registered-$slot")
    echo "$slot" >&"$slots"
done

workers=()
for file in "${chosen[@]}"; do
    read -r -u "$slots" slot
    (
        trap 'kill $(jobs -p) 2>/dev/null; exit 143' TERM
        trap 'echo "$slot" >&"$slots"' EXIT
        RunTest "$slot" "$file"
    ) &
    workers+=($!)
done
for worker in "${workers[@]}"; do
    wait "$worker" || true
done

passed=0
failed=0
for file in "${chosen[@]}"; do
    read -r p f <"$output/$(basename "$file").log.result" || { p=0 f=1; echo "FAILED $file: no result"; }
    ((passed += p, failed += f)) || true
done
((passed + failed)) || Finish 0 0 "No test ran."
Finish "$passed" "$failed"
