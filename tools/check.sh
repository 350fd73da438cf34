#!/usr/bin/env bash
# Looks through the code without running it: its format, what clang-tidy, cppcheck and shellcheck have to say. Nothing
# is changed; the exit code is 0 when there is nothing to complain about.
#
#   tools/check.sh           everything
#   tools/check.sh FILE...   clang-tidy for these files alone, for example platform/text.cpp
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

# shellcheck disable=SC2034 # SetUp reads it
kNeeded='
clang-format    clang-format
clang-tidy      clang-tidy
cppcheck        cppcheck
shellcheck      shellcheck
'
SetUp

kLayers=(app options lists tray store platform standin)
kFileSeconds=300
database=$kBuildRoot/release
findings=0

# Report NAME CODE
Report() {
    if (($2 == 0)); then
        echo "$1: nothing to complain about"
    else
        echo "$1: see above" >&2
        findings=1
    fi
}

# What clang takes from GCC: the target and its headers, which it does not find under Debian's names.
ClangArguments() {
    local folder
    echo --extra-arg=--target=i686-w64-mingw32
    for folder in "$(i686-w64-mingw32-g++-posix -print-file-name=include)"/{c++,c++/i686-w64-mingw32} \
        /usr/i686-w64-mingw32/include; do
        echo "--extra-arg=-isystem$folder"
    done
}

# TidyFile FILE CLANG_ARGUMENT...: a file's findings are printed in one piece.
# shellcheck disable=SC2317 # xargs calls it
TidyFile() {
    local said code=0
    said=$(timeout "$kFileSeconds" clang-tidy --quiet -p "$database" "${@:2}" "$1" 2>&1) || code=$?
    ((code == 0)) || grep -v '^[0-9]* warnings\? generated\.$' <<<"$said"
    return "$code"
}

Tidy() {
    local arguments code=0
    mapfile -t arguments < <(ClangArguments)
    export -f TidyFile
    export database kFileSeconds
    printf '%s\0' "$@" | xargs -0 -P "$(nproc)" -I{} bash -c 'TidyFile "$@"' bash {} "${arguments[@]}" || code=1
    Report clang-tidy "$code"
}

# The headers that are made at build time must be there.
MakeHeaders() {
    cmake --preset release &&
        cmake --build --preset release \
            --target app_resources shell_notification_idl sentrel1_idl standin_idl picture_box_idl
}

MakeHeaders >"$kBuildRoot/check.log" 2>&1 || {
    cat "$kBuildRoot/check.log" >&2
    exit 1
}

if (($#)); then
    Tidy "$@"
    exit "$findings"
fi

mapfile -t sources < <(find "${kLayers[@]}" tests bench -name '*.cpp' -o -name '*.h' | sort)
code=0
clang-format --dry-run -Werror "${sources[@]}" || code=$?
Report clang-format "$code"

mapfile -t sources < <(find "${kLayers[@]}" -name '*.cpp' | sort)
Tidy "${sources[@]}"

code=0
cppcheck --quiet --error-exitcode=1 --library=windows --platform=win32A --std=c++20 -j "$(nproc)" \
    --enable=warning,style,performance,portability --suppressions-list=tools/cppcheck-suppressions.txt \
    -I . -I "$database/idl" -I "$database/generated" -DUNICODE -D_UNICODE "${kLayers[@]}" || code=$?
Report cppcheck "$code"

mapfile -t scripts < <(find . -path ./build -prune -o -name '*.sh' -print | sort)
code=0
shellcheck --external-sources "${scripts[@]}" .ci/run || code=$?
Report shellcheck "$code"
exit "$findings"
