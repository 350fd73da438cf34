#!/usr/bin/env bash
# Installs what building and testing need, and only what is missing. Run it, or source it from another script.
# On Debian and Ubuntu it uses apt, with sudo when not root; elsewhere it names what is missing and fails.
set -euo pipefail
# shellcheck source=tools/wine.sh
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"

# One line per package: its name, then the command or the file that shows it is there.
kNeeded='
cmake                       cmake
ninja-build                 ninja
g++-mingw-w64-i686-posix    i686-w64-mingw32-g++-posix
mingw-w64-tools             i686-w64-mingw32-widl
libwine-dev                 /usr/include/wine/wine/windows/oaidl.idl
doctest-dev                 /usr/include/doctest/doctest.h
procps                      pgrep
xvfb                        Xvfb
xauth                       xauth
fluxbox                     fluxbox
xdotool                     xdotool
x11-utils                   xprop
tint2                       tint2
imagemagick                 import
fonts-liberation            /usr/share/fonts/truetype/liberation
fonts-dejavu-core           /usr/share/fonts/truetype/dejavu
wine                        wine
fonts-wine                  /usr/share/wine/fonts/marlett.ttf
nsis                        makensis
pandoc                      pandoc
libxml2-utils               xmllint
osslsigncode                osslsigncode
openssl                     openssl
zip                         zip
unzip                       unzip
'

Have() {
    case $1 in
    wine) FindWine ;;
    /*) [[ -e $1 ]] ;;
    *) command -v "$1" >/dev/null ;;
    esac
}

# Lists the missing packages in `missing`.
FindMissing() {
    local package proof
    missing=()
    while read -r package proof; do
        [[ -z $package ]] || Have "$proof" || missing+=("$package")
    done <<<"$kNeeded"
}

AsRoot() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# Install PACKAGE...: where the amd64 and i386 candidates differ in version a plain install fails; those of the release
# itself match. apt never replaces a package by an older one here, for it would have to be told to.
Install() {
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends) release
    if ! command -v apt-get >/dev/null; then
        echo "Missing here, by their Debian names: $*" >&2
        return 1
    fi
    echo "Installing: $*"
    [[ $* != *:i386* ]] || AsRoot dpkg --add-architecture i386
    AsRoot apt-get update || echo "apt-get update failed with exit code $?; going on with the indexes that it got" >&2
    AsRoot "${install[@]}" "$@" && return
    release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    if [[ -n $release && $(apt-cache policy) == *",n=$release,"* ]] && AsRoot "${install[@]}" -t "$release" "$@"; then
        return
    fi
    echo "apt-get could not install: $*" >&2
    return 1
}

# SetUp: all packages come first, since Wine's prefixes depend on its fonts. Whether 32-bit programs run is found out by
# running one: some distributions need wine32 for that and some do not.
SetUp() {
    local missing
    FindMissing
    if ((${#missing[@]})); then
        Install "${missing[@]}"
        FindMissing
        ((${#missing[@]} == 0)) || {
            echo "Still missing after the installation: ${missing[*]}" >&2
            return 1
        }
    fi
    MakeTemplate && return
    echo "Wine does not run 32-bit programs yet."
    Install wine32:i386
    MakeTemplate || {
        cat "$kTemplate.log" >&2
        echo "wineboot, or a 32-bit program in the prefix that it made, failed under $("$wineCommand" --version)." >&2
        return 1
    }
}

SetUp
