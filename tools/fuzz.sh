#!/usr/bin/env bash
# Fuzzes the parts that need no Windows, for SECONDS (60) each, with AddressSanitizer and the undefined-behaviour
# sanitizer; the last line reads "N inputs, N failures".
#
#   tools/fuzz.sh [SECONDS]
#
# Starts from tests/fuzz/corpus/ and works in build/fuzz/, where an input that fails is kept.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=${1:-60}
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

inputs=0
failures=0
for name in newest_lines site_of_address byte_order; do
    "$compiler" -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined -I. \
        "tests/fuzz/${name}_fuzz.cpp" tests/fuzz/targets.cpp tests/support/plain_log.cpp lists/newest_lines.cpp \
        lists/site_of_address.cpp store/byte_order.cpp -o "$build/$name"
    mkdir -p "$build/$name.corpus"
    log=$build/$name.log
    "$build/$name" -max_total_time="$seconds" -max_len=4096 -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$build/$name." "$build/$name.corpus" "tests/fuzz/corpus/$name" >"$log" 2>&1 ||
        { ((++failures)); tail -20 "$log"; }
    count=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    echo "$name: ${count:-0} inputs"
    ((inputs += ${count:-0})) || true
done
echo "$inputs inputs, $failures failures"
((failures == 0))
