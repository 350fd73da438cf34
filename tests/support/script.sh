# shellcheck shell=bash
# What the test scripts have in common; to be sourced behind tools/wine.sh. Needs WINEPREFIX.

# Outside of drive_c, whose files the installer's test compares.
kWork=$WINEPREFIX/work

Fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Equal WHAT FOUND EXPECTED
Equal() {
    [[ $2 == "$3" ]] || Fail "$1 is \"$2\", not \"$3\""
}

# SameLines WHAT FILE FILE
SameLines() {
    diff "$2" "$3" >&2 || Fail "$1"
}

# Exits CODE PROGRAM [ARGUMENT...]: a Windows program, which leaves what it says in $kWork/output; of a code above 255 this
# system knows the lowest byte alone.
Exits() {
    local code=0
    Wine 60 "${@:2}" >"$kWork/output" 2>&1 || code=$?
    ((code == $1 % 256)) || { cat "$kWork/output" >&2; Fail "${*:2} ended with $code, not $1"; }
}
