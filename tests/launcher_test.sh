#!/usr/bin/env bash
# Whatever becomes of a test case, the launcher says so, and not only when its time is over: it passes, fails, crashes or
# waits for ever. Needs BUILD_DIR with a registered prefix.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# More than the start of a test takes on a busy machine; what ends by itself ends within seconds.
kSeconds=60

TEST_OUTPUT=$(mktemp -d)
export TEST_OUTPUT
trap 'kill $(jobs -p) 2>/dev/null || true; wait; rm -rf "$TEST_OUTPUT"' EXIT
trap 'exit 143' TERM
failed=0

# Expect CODE PATTERN TEST_CASE: the launcher's exit code, and what its first line contains.
Expect() {
    local code=0 said
    TEST_CASE=$3 tests/launch.sh "$BUILD_DIR" "$kSeconds" "$BUILD_DIR/tests/faulty.exe" >"$TEST_OUTPUT/said" 2>&1 &
    wait $! || code=$?
    said=$(head -1 "$TEST_OUTPUT/said")
    if ((code == $1)) && [[ $said == "faulty: "*"$2"* ]]; then
        echo "ok: $said"
    else
        echo "FAILED: \"$3\" ended with $code, not $1, or not with $2:"
        cat "$TEST_OUTPUT/said"
        failed=1
    fi
}

Expect 0 '1 passed, 0 failed' passing
Expect 1 '0 passed, 1 failed' failing
for crash in 'a fault in a call from another apartment' 'a call to nowhere'; do
    Expect 1 "0 passed, 1 failed (ended without a summary, exit code 3, in test case: $crash)" "$crash"
    grep -q "^CRASHED with exception C0000005 at .*, in: $crash\$" "$TEST_OUTPUT/said" ||
        { echo "FAILED: the crash is not in the log"; failed=1; }
done
Expect 1 '1 passed, 1 failed (a program crashed: wine: Unhandled page fault' 'a crash of another program'
kSeconds=20
Expect 1 '0 passed, 1 failed (stopped after 20 s, in test case: waiting for ever)' 'waiting for ever'
exit "$failed"
