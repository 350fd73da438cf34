# shellcheck shell=bash
# The tray as its user sees it: an icon in a notification area of the desktop standard, and its menu; to be sourced
# after wine.sh. Without such an area Wine shows icons in a window of its own, which differs from release to release.

# WaitFor SECONDS COMMAND...: repeats the command until it succeeds.
WaitFor() {
    local end=$((SECONDS + $1))
    until "${@:2}"; do
        ((SECONDS < end)) || return 1
        sleep 0.2
    done
}

# StartTrayHost: puts a notification area into the upper left corner of the screen, as wide as its icons. The number of
# desktops is what tint2 waits a quarter of a minute for, since a window manager would tell it.
StartTrayHost() {
    xprop -root -f _NET_NUMBER_OF_DESKTOPS 32c -set _NET_NUMBER_OF_DESKTOPS 1
    tint2 -c "$(dirname "${BASH_SOURCE[0]}")/tray.tint2rc" >/dev/null 2>&1 &
    WaitFor 30 FindTray || { echo "tint2 did not start" >&2; return 1; }
}

# FindTray: sets tray to the middle of the notification area, and says whether there is one.
FindTray() {
    local panel X=0 Y=0 WIDTH=0 HEIGHT=0
    panel=$(xdotool search --onlyvisible --class '^tint2$' 2>/dev/null | head -1)
    [[ -n $panel ]] || return 1
    eval "$(xdotool getwindowgeometry --shell "$panel" 2>/dev/null | grep -E '^(X|Y|WIDTH|HEIGHT)=')"
    tray=("$((X + WIDTH / 2))" "$((Y + HEIGHT / 2))")
    trayIcons=$((WIDTH / 16))
}

# TrayHasIcons COUNT
TrayHasIcons() {
    FindTray && ((trayIcons == $1))
}

# VisibleWindows: their ids, one a line, sorted.
VisibleWindows() {
    xdotool search --onlyvisible --name '' 2>/dev/null | sort
}

# FindMenu BEFORE: sets menu to a window that was not among those of BEFORE and is higher than a tool tip.
FindMenu() {
    local height
    for menu in $(comm -13 <(echo "$1") <(VisibleWindows)); do
        height=$(xdotool getwindowgeometry --shell "$menu" 2>/dev/null | sed -n 's/^HEIGHT=//p')
        ((${height:-0} < 60)) || return 0
    done
    return 1
}

# OpenTrayMenu: clicks on the icon, and sets menu to the window of the menu. The manager may be busy with what went
# before; Escape takes a menu away that came too late, since another click would only close it.
OpenTrayMenu() {
    local before
    TrayHasIcons 1 || return 1
    before=$(VisibleWindows)
    xdotool mousemove "${tray[@]}" click 3
    WaitFor 5 FindMenu "$before" || { xdotool key Escape; return 1; }
}
