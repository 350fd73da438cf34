#!/usr/bin/env bash
# What the documents name is there: files, pictures and sections behind links, files of the source tree, and the examples,
# which the automation guide shows as they are.
set -euo pipefail
shopt -s nullglob
cd "$(dirname "${BASH_SOURCE[0]}")/.."

failed=0
links=0
paths=0

# Report TEXT...
Report() {
    echo "FAILED: $*"
    failed=1
}

# Text DOCUMENT: without its blocks of code.
Text() {
    sed '/^    /d' "$1"
}

# Sections DOCUMENT: the names that links give its headings.
Sections() {
    Text "$1" | sed -nE 's/^#+ +//p' | tr '[:upper:]' '[:lower:]' | sed -E 's/[^a-z0-9 _-]//g; s/ /-/g'
}

# CheckLink DOCUMENT TARGET: a file, a section of the document (#name) or of another one (file#name).
CheckLink() {
    local folder file=$1
    folder=$(dirname "$1")
    [[ $2 == \#* ]] || file=$folder/${2%%#*}
    [[ -e $file ]] || { Report "$1 links $2, which is not there"; return; }
    [[ $2 != *\#* ]] || grep -qxF "${2#*#}" <<<"$(Sections "$file")" || Report "$1 links $2, a section that is not there"
}

documents=(*.md docs/*.md)
for document in "${documents[@]}"; do
    while IFS= read -r target; do
        ((links += 1))
        [[ $target == *:* ]] || CheckLink "$document" "$target"
    done < <(Text "$document" | tr '\n' ' ' | grep -oE '\]\([^)]+\)' | sed -E 's/^..(.*).$/\1/')
    # A path of the source tree, or a pattern of such paths.
    # shellcheck disable=SC2016 # the backticks are those of the documents
    while IFS= read -r path; do
        ((paths += 1))
        # shellcheck disable=SC2206 # patterns are meant
        found=($path)
        [[ ${#found[@]} -gt 0 && -e ${found[0]} ]] || Report "$document names $path, which is not there"
    done < <(grep -oE '`(\./)?(app|bench|cmake|docs|lists|options|packaging|platform|standin|store|tests|tools|tray)/[^` ]*`' \
        "$document" | tr -d '`')
done
((links > 20 && paths > 10)) || Report "only $links links and $paths paths were found"

# From the README every document can be reached by links.
reached=(README.md)
for ((i = 0; i < ${#reached[@]}; i++)); do
    for document in "${documents[@]}"; do
        [[ " ${reached[*]} " != *" $document "* ]] || continue
        ! grep -qE "\]\((docs/)?$(basename "$document")[)#]" <<<"$(Text "${reached[i]}")" || reached+=("$document")
    done
done
((${#reached[@]} == ${#documents[@]})) || Report "no link leads to every document, but only to ${reached[*]}"

# Block FIRST_LINE: the block of code in the automation guide that begins so.
Block() {
    awk -v first="    $1" '
        $0 == first { inside = 1 }
        inside && !/^    / && !/^$/ { exit }
        inside { print substr($0, 5) }' docs/automation.md
}

examples=0
for example in docs/examples/*; do
    ((examples += 1))
    difference=$(diff -B "$example" <(Block "$(head -1 "$example")")) ||
        Report "the automation guide shows another $example (< is the file):"$'\n'"$difference"
done
((examples > 0)) || Report "there is no example"

((!failed)) || exit 1
echo "ok: $links links, $paths paths and $examples examples in ${#documents[@]} documents"
