#!/usr/bin/env bash
# The check kit as it is sent: unpacked in a prefix in which nothing is registered, or somebody else's manager is, it runs
# by Wine's own cmd, reports, and leaves settings and registration as they were, also after a run that was interrupted.
# Its list has every test. Needs BUILD_DIR, WINEPREFIX and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

kKit=$WINEPREFIX/drive_c/check\ kit
kSaved=$WINEPREFIX/drive_c/users/$(id -un)/AppData/Local/CalvaneCheck
# In process, with a skipped one among them, and one that drives the programs.
kSuites=(platform_tests server_security_tests loader_tests)

Fail() {
    echo "FAILED: $*" >&2
    [[ ! -e $kKit/report.txt ]] || cat "$kKit/report.txt" >&2
    exit 1
}

# Check [ARGUMENT...]: runs check.cmd; its exit code.
Check() {
    Wine 400 cmd /c 'C:\check kit\check.cmd' "$@" >"$WINEPREFIX/check.log" 2>&1
}

# Registry: all of it but for the times of changes and what Wine itself writes of its devices and windows.
Registry() {
    StopWine
    sed -E 's/^(\[.*\]) [0-9]+$/\1/' "$WINEPREFIX"/{system,user}.reg |
        awk '/^\[/ { skip = /^\[(System|Software\\\\Wine)/ } !skip && !/^#/'
}

# SameRegistry FILE WHEN
SameRegistry() {
    Registry >"$WINEPREFIX/now"
    diff "$1" "$WINEPREFIX/now" >&2 || Fail "the registry is another one $2"
}

# Reported PATTERN
Reported() {
    tr -d '\r' <"$kKit/report.txt" | grep -qE "$1" || Fail "the report has no line $1"
}

# --- The zip
cmake --build "$BUILD_DIR" --target check_kit >"$WINEPREFIX/check.log" 2>&1 || { tail "$WINEPREFIX/check.log" >&2; Fail "no kit"; }
zip=$(echo "$BUILD_DIR"/Calvane-*-check.zip)
unzip -q "$zip" -d "$kKit"
# Every test that CTest knows, but for the prefix that they share, is run or has a reason.
diff <(ctest --test-dir "$BUILD_DIR" -N | sed -n 's/^ *Test *#[0-9]*: //p' | grep -vx registered_prefix | sort) \
    <(sed -E 's/ ([0-9]+|- .+)$//' "$kKit/tests/suites.txt" | sort) >&2 || Fail "the kit's list is not CTest's"
while read -r suite limit _; do
    [[ $limit == - || -e $kKit/tests/$suite.exe ]] || Fail "$suite is not in the kit"
done <"$kKit/tests/suites.txt"
# A program that counts its lines has to know where its counts belong.
[[ ${BUILD_DIR##*/} == coverage ]] || ! LC_ALL=C grep -rqF "$PWD/" "$kKit" ||
    Fail "the kit names a folder of this machine: $(grep -rlF "$PWD/" "$kKit")"
! grep -qv $'\r$' "$kKit/check.cmd" || Fail "check.cmd has lines that do not end as Windows' do"
echo "ok: the zip is complete"

# --- A run beside settings and a registration of the user's own
Wine 60 reg add 'HKCU\Software\Calvane\Settings' /v txtPause /d 7000 /f >/dev/null
Wine 60 reg add 'HKCU\Software\Calvane\Exclude' /v 0 /d 'http://my.own/ "site"' /f >/dev/null
Wine 60 reg add 'HKCU\Software\Classes\SentrelConfig.ConfigControl' /ve /d 'my own' /f >/dev/null
Wine 60 reg add 'HKCU\Control Panel\International' /v sDecimal /d , /f >/dev/null
Registry >"$WINEPREFIX/before"
Check "${kSuites[@]}" || Fail "check.cmd ended with $?: $(cat "$WINEPREFIX/check.log")"
Reported '^Calvane: [0-9.]+$'
Reported '^System: Windows [0-9.]+.*Wine [0-9.]+'
Reported '^Registered: for the machine'
Reported '^Scale: 100 % \(96 dpi\)$'
for suite in "${kSuites[@]}"; do
    Reported "^$suite: [1-9][0-9]* passed, 0 failed, 0 skipped\$"
done
Reported '^Total: [1-9][0-9]* passed, 0 failed, 0 skipped$'
SameRegistry "$WINEPREFIX/before" "after a run"
[[ ! -e $kSaved ]] || Fail "something stays saved"
echo "ok: a run reports and leaves no trace"

# --- A suite that crashes is told of, and so are tests that are left out
cp "$BUILD_DIR/tests/faulty.exe" "$kKit/tests/faulty_tests.exe"
printf '%s\r\n' 'faulty_tests 20' >>"$kKit/tests/suites.txt"
! Check faulty_tests dist_test.sh || Fail "a failure is not in the exit code"
Reported '^faulty_tests: 0 passed, 1 failed, 1 skipped \(ended without a summary, .*, in test case: a fault in .+\)$'
Reported '^    skipped: left out: it would not pass$'
Reported '^CRASHED with exception C0000005'
Reported '^dist_test.sh: skipped: it builds'
Reported '^Total: 0 passed, 1 failed, 2 skipped$'
! Check no_such_tests || Fail "a name that is wrong is not in the exit code"
SameRegistry "$WINEPREFIX/before" "after a failed run"
echo "ok: failures are reported"

# --- A run that is interrupted: the next one puts back first
Check walk_tests &
run=$!
for ((i = 0; i < 600; i++)); do
    [[ ! -s $kKit/logs/walk_tests.txt.current ]] || break
    sleep 0.1
done
[[ -s $kKit/logs/walk_tests.txt.current ]] || Fail "the run did not begin"
StopWine
wait $run || true
[[ -e $kSaved/complete ]] || Fail "nothing is saved during a run"
Registry >"$WINEPREFIX/now"
! diff -q "$WINEPREFIX/before" "$WINEPREFIX/now" >/dev/null || Fail "the interrupted run has changed nothing"
Check /putback || Fail "putting back ended with $?"
SameRegistry "$WINEPREFIX/before" "after an interrupted run"
echo "ok: the next start puts back what an interrupted run has left"
