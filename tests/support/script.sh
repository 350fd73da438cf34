# shellcheck shell=bash
# What the test scripts have in common; to be sourced behind tools/wine.sh. Needs WINEPREFIX.

# Outside of drive_c, whose files the installer's test compares.
kWork=$WINEPREFIX/work
mkdir -p "$kWork"

# The programs are of 32 bits.
kPrograms='Program Files'
kSystem='C:\windows\system32'
if Is64Bit; then
    kPrograms='Program Files (x86)'
    kSystem='C:\windows\syswow64'
fi
# Where the product is installed, as Windows and as this system name it.
# shellcheck disable=SC2034 # for the scripts
kInstalled="C:\\$kPrograms\\Calvane" kFolder=$WINEPREFIX/drive_c/$kPrograms/Calvane

Fail() {
    echo "FAILED: $*" >&2
    exit 1
}

WindowShows() { xdotool search --onlyvisible --name '^Calvane$' >/dev/null 2>&1; }
ManagerEnded() { [[ -z $(ProcessesOf SentrelConfig.exe) ]]; }

# Version: of the source tree.
Version() {
    sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt
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

# Client SHOW_TYPE: a script that loads the manager gets its window's handle.
Client() {
    cat >"$kWork/client.vbs" <<VBS
Set control = CreateObject("SentrelConfig.ConfigControl")
Set config = control.ConfigInstance(CLng($1))
WScript.Echo "handle " & config.ConfigHwnd
VBS
    Exits 0 "$kSystem\\cscript.exe" //nologo "Z:${kWork//\//\\}\\client.vbs"
    grep -Eq '^handle [1-9][0-9]*' "$kWork/output" || { cat "$kWork/output"; Fail "the script client got no window"; }
}
