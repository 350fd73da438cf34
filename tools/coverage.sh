#!/usr/bin/env bash
# Runs the whole test suite in the coverage preset and prints, for each file of the program, how many of its lines ran
# and which did not. The exit code is that of the tests.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

# shellcheck disable=SC2034 # SetUp reads it
kNeeded='
gcovr    gcovr
'
SetUp

build=$kBuildRoot/coverage
mkdir -p "$build"
find "$build" -name '*.gcda' -delete

# The counts are written under the path that the compiler saw, which is one of drive Z: there.
code=0
GCOV_PREFIX=Z: PRESET=coverage ./test.sh "$@" || code=$?

gcovr --root . --object-directory "$build" --gcov-executable i686-w64-mingw32-gcov-posix \
    --filter '(app|options|lists|tray|store|platform)/' --sort-percentage "$build"
exit "$code"
