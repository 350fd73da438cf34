#!/usr/bin/env bash
# Proves that a commit makes the same bytes wherever and whenever it is built: builds it twice, in clones whose paths
# differ in name and length, and compares the programs, the type libraries and what is published. Takes some minutes.
#
#   tools/check_reproducible.sh [COMMIT]      HEAD when not given
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kFiles=(SentrelConfig.exe CalvaneConfigLoader.exe SentrelStandin.exe CalvaneSetup.exe
    dist/SHA256SUMS dist/Calvane-*-portable.zip dist/Calvane-*-symbols.zip dist/Calvane-*-check.zip
    idl/sentrel_config.tlb idl/calvane_forms.tlb idl/sentrel1.tlb idl/standin.tlb)

commit=$(git rev-parse --verify "${1:-HEAD}^{commit}")
work=$(mktemp -d "${TMPDIR:-/tmp}/reproducible.XXXXXX")
trap 'rm -rf "$work"' EXIT
clones=("$work/a" "$work/another folder/with a longer name")

# Another umask and time zone as well: neither may show.
Build() {
    local log=$work/build.log
    (
        umask "$2"
        export TZ=$3
        git clone -q --no-checkout . "$1" &&
            cd "$1" &&
            git checkout -q "$commit" &&
            cmake --preset release &&
            cmake --build --preset release --target SentrelConfig CalvaneConfigLoader SentrelStandin dist
    ) >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
}

Build "${clones[0]}" 022 UTC
Build "${clones[1]}" 077 Asia/Tokyo

differ=0
cd "${clones[0]}/build/release"
# shellcheck disable=SC2068 # the patterns are meant
for file in ${kFiles[@]}; do
    cmp "$file" "${clones[1]}/build/release/$file" && echo "same $file" || differ=1
done
if ((differ)); then
    echo "The builds of ${commit:0:12} differ."
    exit 1
fi
echo "Both builds of ${commit:0:12} are equal."
