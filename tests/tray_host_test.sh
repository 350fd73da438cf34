#!/usr/bin/env bash
# The icon under a user's mouse, in a notification area of the desktop standard. Needs BUILD_DIR, WINEPREFIX and a
# screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh
# shellcheck source=tests/support/script.sh
. tests/support/script.sh
# shellcheck source=tools/tray.sh
. tools/tray.sh

kSeconds=30

WindowIsHidden() { ! WindowShows; }
MenuIsClosed() { ! FindMenu "$before"; }

StartTrayHost
TrayHasIcons 0 || Fail "There is an icon before the manager runs"
Wine 60 "$BUILD_DIR/CalvaneConfigLoader.exe" || Fail "The manager was not loaded"
WaitFor $kSeconds TrayHasIcons 1 || Fail "The icon did not appear"
WindowIsHidden || Fail "The window is shown before it is asked for"

before=$(VisibleWindows)
xdotool mousemove "${tray[@]}" click 1
WaitFor $kSeconds OpenTrayMenu || Fail "A right click opens no menu"
WindowIsHidden || Fail "A single click opens the window"
xdotool key Escape
WaitFor $kSeconds MenuIsClosed || Fail "Escape does not close the menu"

xdotool mousemove "${tray[@]}" click --repeat 2 --delay 50 1
WaitFor $kSeconds WindowShows || Fail "A double click does not open the window"

WaitFor $kSeconds OpenTrayMenu || Fail "The menu does not open a second time"
xdotool key x
WaitFor $kSeconds ManagerEnded || Fail "Exit does not end the manager"
WaitFor $kSeconds TrayHasIcons 0 || Fail "The icon is still there"
echo "The icon comes, responds to the mouse and goes."
