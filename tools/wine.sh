# shellcheck shell=bash
# Wine prefixes and virtual screens for the scripts of this repository; to be sourced. Everything lies under build/,
# nothing touches the user's own prefix or home directory. A script that sources this file leaves no wineserver, no
# Windows program and no screen behind, however it ends.

kRoot=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
kBuildRoot=$kRoot/build
kTemplate=$kBuildRoot/wine-template
kFonts=(/usr/share/wine/fonts/{marlett,tahoma,tahomabd}.ttf)

# Without the overrides a hidden dialog of the Mono and Gecko installers blocks the first start, and the menu builder
# writes file associations into the home directory.
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
export WINEDEBUG=${WINEDEBUG:--all}
unset WINEARCH

prefixesInUse=("$kTemplate")

# Not every distribution puts Wine's commands into the PATH.
FindWine() {
    wineCommand=$(command -v wine || echo /usr/lib/wine/wine)
    wineServer=$(command -v wineserver /usr/lib/{,x86_64-linux-gnu/,i386-linux-gnu/}wine/wineserver | head -1)
    [[ -x $wineCommand && -x $wineServer ]]
}
FindWine || true

# Limited SECONDS COMMAND [ARGUMENT...]: runs a command and returns its exit code, or 124 when the time is over. It
# runs in the background so that a signal to the script is served at once.
Limited() {
    timeout -k 5 "$@" </dev/null &
    wait $!
}

# Wine SECONDS PROGRAM [ARGUMENT...]: runs a Windows program in $WINEPREFIX, limited likewise. Never read its output
# through a pipe: the servers that it starts inherit the pipe and keep it open.
Wine() {
    Limited "$1" "$wineCommand" "${@:2}"
}

# StopWine [PREFIX]: ends every process of the prefix and waits until its registry is written.
StopWine() {
    local prefix=${1:-$WINEPREFIX}
    [[ -d $prefix && -x $wineServer ]] || return 0
    WINEPREFIX=$prefix timeout 30 "$wineServer" -k >/dev/null 2>&1 || true
    WINEPREFIX=$prefix timeout 30 "$wineServer" -w >/dev/null 2>&1 || true
}

# KeepServer [PREFIX]: starts the server of the prefix, which waits for programs until StopWine. By itself it ends three
# seconds after the last program, and one that starts at that moment fails.
KeepServer() {
    WINEPREFIX=${1:-$WINEPREFIX} "$wineServer" -p >/dev/null 2>&1 </dev/null || true
}

# UsePrefix DIR: makes DIR the prefix of the following calls; it is stopped when the script ends.
UsePrefix() {
    export WINEPREFIX=$1
    prefixesInUse+=("$1")
}

# Is64Bit: whether the Windows in $WINEPREFIX has 64 bits. Programs of 32 bits have folders and registry keys of their own
# there.
Is64Bit() { [[ -d $WINEPREFIX/drive_c/windows/syswow64 ]]; }

# Fills $WINEPREFIX and says whether a 32-bit program runs in it.
FillPrefix() {
    local system=system32 code=0
    Wine 180 wineboot -i || true
    ! Is64Bit || system=syswow64
    Wine 60 "C:\\windows\\$system\\cmd.exe" /c exit 42 || code=$?
    ((code != 42)) || Unattended Y
    StopWine
    ((code == 42))
}

# TemplateState: what the template depends on: Wine, its fonts, and how it is made.
TemplateState() {
    "$wineCommand" --version 2>/dev/null || true
    stat -Lc '%n %s %Y' "${kFonts[@]}" 2>/dev/null || true
    declare -f MakeTemplate FillPrefix Is64Bit Unattended SetRegistryValue OwnUserFolders OwnFonts | cksum
}

# Makes the template that prefixes are copied from, unless there is one from the same Wine and fonts. Wine without a
# wine32 of its own knows win64 prefixes only.
MakeTemplate() {
    local arch state lock
    FindWine || return 1
    mkdir -p "$kBuildRoot"
    state=$(TemplateState)
    exec {lock}>"$kTemplate.lock"
    flock "$lock"
    if [[ ! -e $kTemplate.complete || $(<"$kTemplate.complete") != "$state" ]]; then
        rm -f "$kTemplate.complete"
        for arch in win32 win64; do
            StopWine "$kTemplate"
            rm -rf "$kTemplate"
            WINEPREFIX=$kTemplate WINEARCH=$arch DISPLAY='' FillPrefix >"$kTemplate.log" 2>&1 || continue
            OwnUserFolders "$kTemplate"
            OwnFonts "$kTemplate"
            echo "$state" >"$kTemplate.complete"
            break
        done
    fi
    exec {lock}>&-
    [[ -e $kTemplate.complete ]]
}

# Debian puts Wine's own fonts where Wine does not look: without them dialogs are measured in another font, and window
# buttons show letters instead of symbols.
OwnFonts() {
    local font
    for font in "${kFonts[@]}"; do
        [[ ! -e $font ]] || cp "$font" "$1/drive_c/windows/Fonts/"
    done
}

# Wine links Desktop, Documents and the like to the home directory; in here they become directories of their own.
OwnUserFolders() {
    find "$1/drive_c/users" -type l | while IFS= read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

# MakePrefix DIR [SOURCE]: replaces DIR by a fresh copy of SOURCE, the template when not given. Windows' own files are
# linked, since half a gigabyte is never written to; what programs do write, the registry and the .ini files, is copied.
MakePrefix() {
    local dir=$1 source=${2:-$kTemplate}
    StopWine "$dir"
    rm -rf "$dir"
    cp -al "$source" "$dir"
    (cd "$source" && cp -a --parents --remove-destination -t "$dir" ./*.reg drive_c/windows/*.ini)
    KeepServer "$dir"
}

# SetRegistryValue KEY NAME TYPE DATA, in $WINEPREFIX.
SetRegistryValue() {
    Wine 60 reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null 2>&1
}

# UseWindowManager Y|N: without a window manager each managed window would wait for one, up to two seconds.
UseWindowManager() {
    SetRegistryValue 'HKCU\Software\Wine\X11 Driver' Managed REG_SZ "$1"
}

# Unattended Y|N: whether there is nobody to hear or to reply. No sound card is looked for then, since libraries print
# hundreds of lines about a missing one, and a program that crashes ends at once: Wine would ask whether to debug it, and
# the program would wait for the reply. Prefixes are unattended from the start.
Unattended() {
    local debugger='HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug'
    if [[ $1 == Y ]]; then
        SetRegistryValue 'HKCU\Software\Wine\Drivers' Audio REG_SZ ''
        SetRegistryValue "$debugger" Debugger REG_SZ none
    else
        Wine 60 reg delete 'HKCU\Software\Wine\Drivers' /v Audio /f >/dev/null 2>&1 || true
        SetRegistryValue "$debugger" Debugger REG_SZ 'winedbg --auto %ld %ld'
    fi
}

# LogFont PIXELS FACE: the bytes of a LOGFONTW, in hexadecimal numbers separated by commas.
LogFont() {
    {
        # Negative: the height of the letters, not of the line.
        printf '%b' "\\x$(printf %02x $((256 - $1)))\\xff\\xff\\xff"
        printf '\0\0\0\0\0\0\0\0\0\0\0\0\x90\x01\0\0\0\0\0\0\0\0\0\0'
        printf '%s' "$2" | iconv -t UTF-16LE
        head -c $((64 - 2 * ${#2})) /dev/zero
    } | od -An -v -tx1 | tr -s ' \n' ',' | sed 's/^,//; s/,$//'
}

# SetMessageFont PIXELS FACE: the user's font for messages, with letters of so many pixels of 96 dpi; it is read when the
# prefix starts.
SetMessageFont() {
    SetRegistryValue 'HKCU\Control Panel\Desktop\WindowMetrics' MessageFont REG_BINARY "$(LogFont "$@" | tr -d ,)"
    StopWine
    KeepServer
}

# SetDpi DPI: the resolution that programs see from now on; it is read when the prefix starts.
SetDpi() {
    SetRegistryValue 'HKCU\Control Panel\Desktop' LogPixels REG_DWORD "$1"
    StopWine
    KeepServer
}

# RegisterServers BUILD_DIR: registers the manager and the stand-in engine in $WINEPREFIX.
RegisterServers() {
    local server
    for server in SentrelConfig SentrelStandin; do
        Wine 60 "$1/$server.exe" /RegServer >"$WINEPREFIX/register.log" 2>&1 || {
            echo "$server.exe /RegServer failed with exit code $?" >&2
            cat "$WINEPREFIX/register.log" >&2
            return 1
        }
    done
}

# ProcessesOf PROGRAM: prints the ids of the processes in $WINEPREFIX that run this program.
ProcessesOf() {
    local pid
    for pid in $(pgrep -f "$1" || true); do
        if grep -qzFx "WINEPREFIX=$WINEPREFIX" "/proc/$pid/environ" 2>/dev/null &&
            tr '\0' '\n' <"/proc/$pid/cmdline" 2>/dev/null | head -1 | grep -qF "$1"; then
            echo "$pid"
        fi
    done
}

# StartScreen: starts a virtual screen of $SCREEN_SIZE on a free display number and sets DISPLAY. Two that start at the
# same moment can choose the same number: the one that fails tries again.
StartScreen() {
    TryScreen || TryScreen || TryScreen || { echo "Xvfb did not start" >&2; return 1; }
}

TryScreen() {
    local report pid number
    mkdir -p "$kBuildRoot"
    report=$(mktemp "$kBuildRoot/display.XXXXXX")
    Xvfb -displayfd 3 -screen 0 "${SCREEN_SIZE:-1100x800x24}" -nolisten tcp -noreset 3>"$report" >/dev/null 2>&1 &
    pid=$!
    for ((i = 0; i < 300; i++)); do
        read -r number <"$report" && break
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.1
    done
    rm -f "$report"
    [[ -n ${number:-} ]] || return 1
    export DISPLAY=:$number
}

# Ends what the script started; runs when it ends, by itself or by a signal.
StopAll() {
    local prefix pid
    trap '' INT TERM HUP
    for pid in $(jobs -p); do
        kill "$pid" 2>/dev/null || true
    done
    for prefix in "${prefixesInUse[@]}"; do
        StopWine "$prefix"
    done
    wait
}
trap StopAll EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
