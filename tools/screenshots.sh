#!/usr/bin/env bash
# Takes a picture of each page of the configuration window, of its dialogs and of the tray menu on a virtual screen,
# then ends the manager and checks that it is gone. Needs the programs of the release build.
#
#   tools/screenshots.sh OUTDIR [DPI [PREFIX]]
#
# The settings of PREFIX show; without it the pictures are taken in a fresh prefix.
set -euo pipefail
# shellcheck source=tools/wine.sh
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"

kPages=(1-settings 2-exclude 3-log 4-banners 5-search 6-about)
# Picture, page, access key of the button that opens the dialog, title of the dialog.
kDialogs='
add-url          2  alt+u  Add Web Site URL
add-banner-size  4  alt+n  New Banner Height and Width
add-search       5  alt+s  Add Search Address
'
kBuildDir=$kBuildRoot/release
kOutput=${1:?OUTDIR is missing}
kDpi=${2:-96}

# Two pages differ in more pixels than this, a blinking caret or a focus rectangle in fewer.
kPixelsOfAnotherPage=300

Fail() {
    echo "$*" >&2
    exit 1
}

# WaitFor SECONDS COMMAND...: repeats the command until it succeeds.
WaitFor() {
    local end=$((SECONDS + $1))
    until "${@:2}"; do
        ((SECONDS < end)) || return 1
        sleep 0.2
    done
}

# Differ PICTURE PICTURE: whether they show different pages. Pictures of different size make compare fail: no number.
Differ() {
    local count
    count=$(compare -metric AE "$1" "$2" null: 2>&1) || true
    awk -v count="$count" -v limit="$kPixelsOfAnotherPage" 'BEGIN { exit !(count + 0 >= limit) }'
}

FindWindow() {
    window=$(xdotool search --onlyvisible --name '^Calvane$' 2>/dev/null | head -1)
    [[ -n $window ]]
}

# PageIsDrawn FILE [BEFORE]: takes a picture, and says whether it is finished: unlike the page before, and like the one
# taken a moment later.
PageIsDrawn() {
    import -silent -window "$window" "$1"
    [[ -z ${2:-} ]] || Differ "$1" "$2" || return 1
    sleep 0.3
    import -silent -window "$window" "$1.again.png"
    ! Differ "$1" "$1.again.png"
}

FindDialog() {
    dialog=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1)
    [[ -n $dialog ]]
}

DialogIsGone() {
    ! FindDialog "$1"
}

# The About page is shown; a step further is the first page again.
TakeDialogs() {
    local name page key title shown=0
    while read -r name page key title; do
        [[ -n $name ]] || continue
        for (( ; shown < page; shown++)); do
            xdotool key ctrl+Tab
            sleep 0.3
        done
        xdotool key "$key"
        WaitFor 10 FindDialog "$title" || Fail "The dialog $title did not open"
        sleep 0.3
        import -silent -window "$dialog" "$kOutput/$name.png"
        xdotool windowfocus "$dialog" key Escape
        WaitFor 10 DialogIsGone "$title" || Fail "The dialog $title did not close"
        xdotool windowfocus "$window"
        echo "$kOutput/$name.png"
    done <<<"$kDialogs"
}

# Where there is no taskbar Wine shows the icon in a window of its own, in the corner of the screen and above the menu:
# it is moved away once the menu is open. The icon may not be there yet, or be busy with what went before.
MenuIsOpen() {
    local tray
    tray=$(xdotool search --onlyvisible --name '^Wine System Tray$' 2>/dev/null | head -1)
    [[ -n $tray ]] || return 1
    xdotool windowmove "$tray" 0 0 mousemove 12 32 click 3
    sleep 1
    xdotool windowmove "$tray" 500 0
    sleep 0.3
    import -silent -window root -crop 190x112+11+31 +repage "$kOutput/tray-menu.png"
    xdotool key Escape
    (($(identify -format %k "$kOutput/tray-menu.png") > 2))
}

TakeMenu() {
    WaitFor 20 MenuIsOpen || Fail "The tray menu did not open"
    echo "$kOutput/tray-menu.png"
}

# A window without anything on it has one or two colours.
CheckPictures() {
    local i j colours
    for ((i = 0; i < ${#kPages[@]}; i++)); do
        colours=$(identify -format %k "$kOutput/${kPages[i]}.png")
        ((colours >= 8)) || Fail "${kPages[i]}.png is blank: $colours colours"
        for ((j = 0; j < i; j++)); do
            Differ "$kOutput/${kPages[i]}.png" "$kOutput/${kPages[j]}.png" ||
                Fail "${kPages[i]}.png shows the same as ${kPages[j]}.png"
        done
    done
}

TakePictures() {
    local page before=
    for page in "${kPages[@]}"; do
        [[ -z $before ]] || xdotool key ctrl+Tab
        WaitFor 10 PageIsDrawn "$kOutput/$page.png" "$before" || Fail "The page $page did not appear"
        rm -f "$kOutput/$page.png.again.png"
        before=$kOutput/$page.png
        echo "$before"
    done
}

ManagerEnded() {
    [[ -z $(ProcessesOf SentrelConfig.exe) ]]
}

# Loader SWITCH
Loader() {
    Wine 60 "$kBuildDir/CalvaneConfigLoader.exe" "$1" >"$kBuildRoot/loader.log" 2>&1 ||
        { cat "$kBuildRoot/loader.log" >&2; Fail "CalvaneConfigLoader.exe $1 failed"; }
}

mkdir -p "$kOutput"
for page in "${kPages[@]}"; do
    rm -f "$kOutput/$page.png"
done

UsePrefix "${3:-$kBuildRoot/wine-screenshots}"
if [[ -z ${3:-} ]]; then
    MakePrefix "$WINEPREFIX"
fi
StopWine
StartScreen
UseWindowManager N
SetDpi "$kDpi"
RegisterServers "$kBuildDir"

Loader /show
WaitFor 30 FindWindow || Fail "The window did not open"
xdotool mousemove 0 0 windowfocus "$window"
TakePictures
CheckPictures
TakeDialogs
# At another resolution the corner looks different.
((kDpi != 96)) || TakeMenu

Wine 60 reg query 'HKCU\Software\Calvane' /s >"$kBuildRoot/store.txt" 2>&1 || Fail "The store is empty"
cat "$kBuildRoot/store.txt"

[[ -n $(ProcessesOf SentrelConfig.exe) ]] || Fail "The manager ended too early"
Loader /release
WaitFor 10 ManagerEnded || Fail "The manager still runs after its release"
echo "The manager has ended."
