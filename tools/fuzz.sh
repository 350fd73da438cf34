#!/usr/bin/env bash
# Fuzzes the parts that need no Windows, for SECONDS (180), with AddressSanitizer and the undefined-behaviour
# sanitizer; the last line reads "N inputs, N failures".
#
#   tools/fuzz.sh [SECONDS]
#
# Works in build/fuzz/, where an input that fails is kept.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=${1:-180}
build=build/fuzz
compiler=$(command -v clang++-14 || command -v clang++ || true)

HasRuntime() {
    [[ -n $compiler ]] && echo 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }' |
        "$compiler" -x c++ -fsanitize=fuzzer,address - -o "$build/probe" 2>/dev/null
}

AsRoot() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

mkdir -p "$build"
if ! HasRuntime; then
    command -v apt-get >/dev/null || { echo 'Missing here, by their Debian names: clang-14 libclang-rt-14-dev' >&2; exit 1; }
    AsRoot env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends clang-14 libclang-rt-14-dev
    compiler=$(command -v clang++-14)
    HasRuntime
fi

"$compiler" -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined -I. \
    tests/fuzz/fuzz.cpp tests/fuzz/targets.cpp tests/support/plain_log.cpp lists/newest_lines.cpp \
    lists/site_of_address.cpp store/byte_order.cpp -o "$build/fuzz"
mkdir -p "$build/corpus"
failures=0
"$build/fuzz" -max_total_time="$seconds" -max_len=4096 -timeout=10 -print_final_stats=1 -artifact_prefix="$build/" \
    "$build/corpus" >"$build/fuzz.log" 2>&1 || { failures=1; tail -20 "$build/fuzz.log"; }
inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/fuzz.log")
echo "${inputs:-0} inputs, $failures failures"
((failures == 0))
