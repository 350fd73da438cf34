#!/usr/bin/env bash
# What CTest starts for each test. It runs the test in a fresh Wine prefix, in which the manager and the stand-in engine
# are registered, and on a virtual screen of its own, and leaves nothing of it running.
#
#   tests/launch.sh BUILD_DIR                 makes the prefix that those of the tests are copied from
#   tests/launch.sh BUILD_DIR SECONDS FILE    runs a doctest program or a shell script for SECONDS at most
#
# BUILD_DIR/test-output/NAME.log keeps what the test printed, NAME.result how many test cases passed and failed, and
# why; TEST_OUTPUT names another folder. TEST_CASE chooses the test cases of a doctest program, in doctest's way of writing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

export BUILD_DIR=$1
registered=$BUILD_DIR/test-prefixes/registered
output=${TEST_OUTPUT:-$BUILD_DIR/test-output}
mkdir -p "$output" "${registered%/*}"

# Prepare: the template as well, for those who start ctest without test.sh.
Prepare() {
    MakeTemplate || { echo "Wine has no prefix for 32-bit programs: tools/setup.sh installs what is missing." >&2; exit 1; }
    UsePrefix "$registered"
    MakePrefix "$registered"
    UseWindowManager N
    RegisterServers "$BUILD_DIR"
}

# RunProgram: runs a doctest program and sets passed and failed from the summary that it prints.
RunProgram() {
    local summary
    export TEST_CURRENT=Z:${log//\//\\}.current
    Wine "$seconds" "$file" ${TEST_CASE:+"--test-case=$TEST_CASE"} >"$log" 2>&1 || code=$?
    summary=$(tr -d '\r' <"$log" | grep '^\[doctest\] test cases:' | tail -1) || true
    if [[ $summary =~ \|\ *([0-9]+)\ passed\ *\|\ *([0-9]+)\ failed ]]; then
        passed=${BASH_REMATCH[1]} failed=${BASH_REMATCH[2]}
    else
        note="ended without a summary, exit code $code"
    fi
}

# RunShellTest: a script counts as one test case.
RunShellTest() {
    Limited "$seconds" bash "$file" >"$log" 2>&1 || code=$?
    ((code)) || passed=1
}

# RunTest: runs the test, prints how it ended and, if it failed, what it said.
RunTest() {
    local code=0 passed=0 failed=0 note='' crash
    case $file in
    *.sh) RunShellTest ;;
    *) RunProgram ;;
    esac
    crash=$(tr -d '\r' <"$log" | grep -m1 '^wine: Unhandled ') || true
    if ((code == 124 || code == 137)); then
        note="stopped after $seconds s"
    elif [[ -n $crash ]]; then
        note="a program crashed: $crash"
    elif [[ -z $note ]] && ((code != 0 && failed == 0)); then
        note="exit code $code"
    fi
    if [[ -n $note ]]; then
        ((failed > 0)) || failed=1
        [[ ! -s $log.current ]] || note+=", in test case: $(tr -d '\r' <"$log.current")"
    fi
    echo "$passed $failed $note" >"$output/$name.result"
    echo "$name: $passed passed, $failed failed${note:+ ($note)}"
    ((failed == 0)) || tr -d '\r' <"$log" | sed '/^\[doctest\] \(doctest version\|run with\)/d'
    return $((failed > 0))
}

if (($# == 1)); then
    Prepare
    exit
fi

seconds=$2
file=$3
name=$(basename "$file" .exe)
log=$output/$name.log
echo '0 1 ended by force' >"$output/$name.result"
rm -f "$log" "$log.current"

trap 'StopAll; rm -rf "$WINEPREFIX"' EXIT
UsePrefix "${registered%/*}/$name"
MakePrefix "$WINEPREFIX" "$registered"
StartScreen
# Wine's own services start with the first program of a prefix, and what they say is none of the test's.
Wine 60 cmd /c exit >/dev/null 2>&1 || true
RunTest
