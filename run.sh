#!/usr/bin/env bash
# Builds the manager and opens its window under Wine.
#
#   ./run.sh              the window stays open until the manager is ended from its tray menu, or by Ctrl+C
#   ./run.sh --headless   on a virtual screen: saves a picture of each page to build/screenshots/, prints the stored
#                         settings, ends the manager and checks that it is gone. So it runs where there is no display.
#
# Settings are kept in the prefix build/wine-run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

DisplayIsUsable() {
    [[ -n ${DISPLAY:-} ]] && timeout 10 xdotool getdisplaygeometry >/dev/null 2>&1
}

case ${1:-} in
'' | --headless) ;;
*)
    echo "usage: $0 [--headless]" >&2
    exit 2
    ;;
esac

cmake --preset release
cmake --build --preset release --target SentrelConfig SentrelStandin CalvaneConfigLoader

UsePrefix "$kBuildRoot/wine-run"
[[ -d $WINEPREFIX ]] || MakePrefix "$WINEPREFIX"

if [[ ${1:-} == --headless ]] || ! DisplayIsUsable; then
    exec tools/screenshots.sh "$kBuildRoot/screenshots" 96 "$WINEPREFIX"
fi

StopWine
UseWindowManager Y
Unattended N
RegisterServers "$kBuildRoot/release"
Wine 60 "$kBuildRoot/release/CalvaneConfigLoader.exe" /show >"$kBuildRoot/loader.log" 2>&1
echo "The window is open. To end the manager, choose Exit Calvane in its tray menu, or press Ctrl+C here."
"$wineServer" -w &
wait $!
echo "The manager has ended."
