#!/usr/bin/env bash
# Takes a picture of each page of the configuration window, of its dialogs and of the tray menu on a virtual screen,
# then ends the manager and checks that it is gone. Needs the programs, of the release build or in BUILD_DIR.
#
#   tools/screenshots.sh OUTDIR [DPI [PREFIX]]
#
# The settings and colours of PREFIX show; without it the pictures are taken in a fresh prefix. The pictures of the
# documents are made by tools/pictures.sh.
set -euo pipefail
# shellcheck source=tools/wine.sh
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"
# shellcheck source=tools/tray.sh
. "$kRoot/tools/tray.sh"

kPages=(1-settings 2-exclude 3-log 4-banners 5-search 6-about)
# Picture, page, access key of the button that opens the dialog, title of the dialog.
kDialogs='
add-url          2-exclude  alt+u  Add Web Site URL
add-banner-size  4-banners  alt+n  New Banner Height and Width
add-search       5-search   alt+s  Add Search Address
'
kBuildDir=${BUILD_DIR:-$kBuildRoot/release}
kOutput=${1:?OUTDIR is missing}
kDpi=${2:-96}

# Two pages differ in more pixels than this, a blinking caret or a focus rectangle in fewer.
kPixelsOfAnotherPage=300
kSeconds=60

# Beside everything that is taken.
kPointerPlace=(1 700)

Fail() {
    echo "$*" >&2
    exit 1
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

# PageIsDrawn: takes a picture, and says whether it is finished: unlike the page before, and like the one taken a
# moment later.
PageIsDrawn() {
    import -silent -window "$window" "$scratch/page.ppm"
    [[ ! -e $scratch/before.ppm ]] || Differ "$scratch/page.ppm" "$scratch/before.ppm" || return 1
    sleep 0.3
    import -silent -window "$window" "$scratch/again.ppm"
    ! Differ "$scratch/page.ppm" "$scratch/again.ppm"
}

# Activate: a busy screen may give the window the focus before Wine takes any; then it takes a click on the title.
Activate() {
    xdotool mousemove --window "$window" $((kDpi * 2 / 3)) $((kDpi / 8)) click 1
    xdotool mousemove "${kPointerPlace[@]}" windowfocus "$window"
    sleep 0.5
}

# TakePage PAGE: its picture is in the scratch folder then, as that of the page before the next one. A key that comes late
# must not be taken for one that was lost: pressed twice it would skip a page.
TakePage() {
    local tries=0
    until WaitFor $kSeconds PageIsDrawn; do
        ((++tries < 3)) || Fail "The page $1 did not appear"
        [[ ! -e $scratch/before.ppm ]] || { Activate; NextPage; }
    done
    mv "$scratch/page.ppm" "$scratch/before.ppm"
}

NextPage() {
    xdotool key ctrl+Tab
}

FindDialog() {
    dialog=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1)
    [[ -n $dialog ]]
}

DialogIsGone() {
    ! FindDialog "$1"
}

# TakeDialogs PAGE: those that the page opens.
TakeDialogs() {
    local name page key title
    while read -r name page key title; do
        [[ $page == "$1" ]] || continue
        xdotool key "$key"
        WaitFor $kSeconds FindDialog "$title" || Fail "The dialog $title did not open"
        sleep 0.3
        import -silent -window "$dialog" -strip "$kOutput/$name.png"
        xdotool windowfocus "$dialog" key Escape
        WaitFor $kSeconds DialogIsGone "$title" || Fail "The dialog $title did not close"
        xdotool windowfocus "$window"
        echo "$kOutput/$name.png"
    done <<<"$kDialogs"
}

# TakeMenu: the pointer goes away from the menu, where it would mark an item.
TakeMenu() {
    WaitFor $kSeconds OpenTrayMenu || Fail "The tray menu did not open"
    xdotool mousemove "${kPointerPlace[@]}"
    WaitFor $kSeconds MenuIsDrawn || Fail "The tray menu was not drawn"
    xdotool key Escape
    echo "$kOutput/tray-menu.png"
}

# MenuIsDrawn: takes a picture of the menu, and keeps it if there is text on it and a moment later it looks the same.
MenuIsDrawn() {
    local picture
    for picture in menu again; do
        sleep 0.3
        import -silent -window "$menu" "$scratch/$picture.ppm" || return 1
    done
    cmp -s "$scratch/menu.ppm" "$scratch/again.ppm" || return 1
    (($(identify -format %k "$scratch/menu.ppm") > 2)) || return 1
    convert "$scratch/menu.ppm" -strip "$kOutput/tray-menu.png"
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

# Two rounds: under Wine the title is that of a window in use only after a dialog has given the focus back. A dialog that
# was cancelled counts as a change, which is stored in between.
TakePictures() {
    local page
    for page in "${kPages[@]}"; do
        TakePage "$page"
        TakeDialogs "$page"
        NextPage
    done
    TakePage "${kPages[0]}"
    xdotool key alt+a
    rm "$scratch/before.ppm"
    for page in "${kPages[@]}"; do
        TakePage "$page"
        convert "$scratch/before.ppm" -strip "$kOutput/$page.png"
        echo "$kOutput/$page.png"
        NextPage
    done
}

ManagerEnded() {
    [[ -z $(ProcessesOf SentrelConfig.exe) ]]
}

# Loader SWITCH
Loader() {
    Wine 60 "$kBuildDir/CalvaneConfigLoader.exe" "$1" >"$WINEPREFIX/loader.log" 2>&1 ||
        { cat "$WINEPREFIX/loader.log" >&2; Fail "CalvaneConfigLoader.exe $1 failed"; }
}

# Pictures that are only compared take less time without compression.
scratch=$(mktemp -d "$kBuildRoot/scratch.XXXXXX")
trap 'rm -rf "$scratch"; StopAll' EXIT
mkdir -p "$kOutput"
rm -f "$kOutput"/*.png

UsePrefix "${3:-$kBuildRoot/wine-screenshots}"
if [[ -z ${3:-} ]]; then
    MakePrefix "$WINEPREFIX"
fi
StopWine
StartScreen
StartTrayHost
UseWindowManager N
SetDpi "$kDpi"
RegisterServers "$kBuildDir"

Loader /show
WaitFor 30 FindWindow || Fail "The window did not open"
xdotool mousemove "${kPointerPlace[@]}" windowfocus "$window"
TakePictures
CheckPictures
TakeMenu

Wine 60 reg query 'HKCU\Software\Calvane' /s >"$WINEPREFIX/store.txt" 2>&1 || Fail "The store is empty"
cat "$WINEPREFIX/store.txt"

[[ -n $(ProcessesOf SentrelConfig.exe) ]] || Fail "The manager ended too early"
Loader /release
WaitFor $kSeconds ManagerEnded || Fail "The manager still runs after its release"
echo "The manager has ended."
