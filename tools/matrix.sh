#!/usr/bin/env bash
# Tries the README's two commands, as a new user would, on bare systems of several Debian releases, one after the other.
#
#   tools/matrix.sh [RELEASE...]    bookworm, trixie and sid (Debian 12, 13 and unstable) when none is given
#
# Each system gets a clone of the commit that is checked out here, and runs ./run.sh --headless and ./test.sh in it; a
# table of the results is printed, and an exit code of 0 says that all is well. The logs, the table and the downloaded
# packages are kept in build/matrix/. It takes half an hour a release and needs root, debootstrap, the network and five
# gigabytes in $TMPDIR. What it mounts is seen by its own processes alone and goes with them, however they end.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kRoot=$PWD
kResults=$kRoot/build/matrix

# The Debian mirror that this system itself installs from; MIRROR names another one.
Mirror() {
    [[ -z ${MIRROR:-} ]] || { echo "$MIRROR"; return; }
    # shellcheck disable=SC2016 # apt's own notation
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' |
        sed '/-security/d' | sort -u | head -1
}

# Attempt LOG COMMAND...: runs a command in process and mount namespaces of its own and sets `outcome`, "ok" or how it
# failed. It runs in the background so that a signal is served at once.
Attempt() {
    local code=0
    unshare --mount --pid --fork --kill-child --propagation private "${@:2}" >>"$1" 2>&1 </dev/null &
    child=$!
    wait "$child" || code=$?
    child=
    outcome=ok
    ((code == 0)) || outcome="failed ($code)"
}

# AttemptInside LOG COMMAND: the same with a shell command in the bare system. The repository lies there in /mnt.
# shellcheck disable=SC2016 # the shell in the namespaces expands it
AttemptInside() {
    Attempt "$1" bash -euc '
        mount -t proc proc "$1/proc"
        mount --rbind /dev "$1/dev"
        mount --rbind /sys "$1/sys"
        mount --bind "$2" "$1/var/cache/apt/archives"
        mount --bind "$3" "$1/mnt"
        exec chroot "$1" env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin bash -euc "$4"
    ' - "$system" "$packages" "$kRoot" "$2"
}

# MakeSystem RELEASE LOG: makes what every Debian has, git, and a clone in /srv/calvane. Names of hosts are found there
# as they are here.
MakeSystem() {
    system=$(mktemp -d "${TMPDIR:-/tmp}/calvane-$1.XXXXXX")
    chmod 755 "$system"
    Attempt "$2" debootstrap --variant=minbase --include=ca-certificates,git --cache-dir="$packages" \
        "$1" "$system" "$mirror"
    [[ $outcome == ok ]] || return 0
    cp /etc/resolv.conf /etc/hosts "$system/etc/"
    AttemptInside "$2" 'git config --global --add safe.directory "*"; git clone -q /mnt /srv/calvane'
}

RemoveSystem() {
    [[ -z $system ]] || rm -rf --one-file-system "$system"
    system=
}

# TryRelease RELEASE: sets `row`, its line of the table.
# shellcheck disable=SC2016 # the shell in the bare system expands it
TryRelease() {
    local log=$kResults/$1 build run tests counts versions start
    packages=$kResults/packages/$1
    rm -rf "$log"
    mkdir -p "$log" "$packages"

    MakeSystem "$1" "$log/system.log"
    row="| $1 | | | no system: $outcome | | | |"
    if [[ $outcome == ok ]]; then
        start=$SECONDS
        AttemptInside "$log/run.log" 'cd /srv/calvane; ./run.sh --headless'
        run=$outcome
        AttemptInside "$log/test.log" 'cd /srv/calvane; ./test.sh'
        tests=$outcome
        start=$((SECONDS - start))
        # After both there is nothing left to build, unless that failed.
        AttemptInside "$log/build.log" 'cd /srv/calvane; cmake --build --preset release'
        build=$outcome
        AttemptInside "$log/versions" 'echo "GCC $(i686-w64-mingw32-g++-posix -dumpfullversion) | $(wine --version)"'
        versions=$(tail -1 "$log/versions")
        counts=$(grep -E '^[0-9]+ passed, [0-9]+ failed$' "$log/test.log" | tail -1) || counts=$tests
        cp -r "$system/srv/calvane/build/release/test-output" "$log/" 2>/dev/null || true
        row="| $1 | $versions | $build | $run | $counts | $(((start + 30) / 60)) |"
        [[ "$build $run $tests" != 'ok ok ok' ]] || ((++green))
    fi
    RemoveSystem
}

# shellcheck disable=SC2317 # the trap calls it
CleanUp() {
    trap '' INT TERM HUP
    if [[ -n $child ]]; then
        kill -KILL "$child" 2>/dev/null || true
        wait "$child" 2>/dev/null || true
    fi
    RemoveSystem
}

((EUID == 0)) || { echo "$0 makes whole systems: run it as root." >&2; exit 1; }
for tool in debootstrap unshare git; do
    command -v "$tool" >/dev/null || { echo "$tool is missing." >&2; exit 1; }
done
mirror=$(Mirror)
[[ -n $mirror ]] || { echo "The apt sources of this system name no Debian mirror: set MIRROR." >&2; exit 1; }

child=''
system=''
green=0
trap CleanUp EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

releases=("$@")
(($#)) || releases=(bookworm trixie sid)
rows=('| release | compiler | Wine | build | run | tests | minutes |' '|---|---|---|---|---|---|---|')
for release in "${releases[@]}"; do
    TryRelease "$release"
    rows+=("$row")
    echo "$row"
done
mkdir -p "$kResults"
printf '%s\n' "${rows[@]}" | tee "$kResults/table.md"
((green == ${#releases[@]}))
