#!/usr/bin/env bash
# Takes the pictures that the documents show: every page, every dialog and the tray menu, in each of the looks below, and
# the icon. To be run, and its result committed, whenever the window changes; tests/pictures_test.sh fails until then.
#
#   tools/pictures.sh            builds the programs and writes docs/pictures/
#   tools/pictures.sh OUTDIR     writes to OUTDIR, with the programs in BUILD_DIR
#   tools/pictures.sh --system   prints what pictures of this system depend on
#
# Two texts belong to them: system.txt says where they come from, since another Wine or another font draws other pixels,
# and layout.txt what they show, in units that are the same everywhere.
set -euo pipefail
tools=$(dirname "${BASH_SOURCE[0]}")

# Folder below OUTDIR, DPI, what sets the prefix up.
kLooks='
.              96   Plain
120-dpi        120  Plain
144-dpi        144  Plain
192-dpi        192  Plain
high-contrast  96   HighContrast
large-text     96   LargeText
'
# How many are taken at a time.
kAtATime=6

kMetrics='HKEY_CURRENT_USER\Control Panel\Desktop\WindowMetrics'

Plain() { :; }

# Black, with the theme off, as Windows has it.
HighContrast() {
    local name colour colours='
        ActiveBorder 255 255 255; ActiveTitle 128 0 128; AppWorkSpace 0 0 0; Background 0 0 0;
        ButtonAlternateFace 0 0 0; ButtonDkShadow 255 255 255; ButtonFace 0 0 0; ButtonHilight 192 192 192;
        ButtonLight 255 255 255; ButtonShadow 128 128 128; ButtonText 255 255 255; GradientActiveTitle 128 0 128;
        GradientInactiveTitle 0 0 0; GrayText 63 242 63; Hilight 26 235 255; HilightText 0 0 0;
        HotTrackingColor 255 255 0; InactiveBorder 0 255 255; InactiveTitle 0 0 0; InactiveTitleText 255 255 255;
        InfoText 255 255 0; InfoWindow 0 0 0; Menu 0 0 0; MenuBar 0 0 0; MenuHilight 26 235 255; MenuText 255 255 255;
        Scrollbar 0 0 0; TitleText 255 255 255; Window 0 0 0; WindowFrame 255 255 255; WindowText 255 255 255'
    while read -r -d ';' name colour; do
        RegistryText 'HKEY_CURRENT_USER\Control Panel\Colors' "$name" "$colour"
    done <<<"$colours;"
    RegistryText 'HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\ThemeManager' ThemeActive 0
}

# Text half as large again.
LargeText() {
    local name
    for name in Caption SmCaption Menu Status Message; do
        RegistryBytes "$kMetrics" "${name}Font" "$(LogFont 18 Tahoma)"
    done
    for name in CaptionHeight CaptionWidth SmCaptionHeight SmCaptionWidth MenuHeight MenuWidth; do
        RegistryText "$kMetrics" "$name" -405
    done
}

# RegistryText KEY NAME DATA and RegistryBytes KEY NAME BYTES: an entry of a .reg file.
RegistryText() {
    printf '\r\n[%s]\r\n"%s"="%s"\r\n' "$@"
}
RegistryBytes() {
    printf '\r\n[%s]\r\n"%s"=hex:%s\r\n' "$@"
}

# What there is to see in the lists that a first start leaves empty, a caret that does not blink, and text of the size
# that it has on Windows: Wine's own is smaller.
Examples() {
    local n=0 site
    for site in www.example.com news.example.org shop.example.net; do
        RegistryText 'HKEY_CURRENT_USER\Software\Calvane\Exclude' "$n" "$site"
        n=$((n + 1))
    done
    RegistryText 'HKEY_CURRENT_USER\Control Panel\Desktop' CursorBlinkRate 100000000
    RegistryBytes "$kMetrics" MessageFont "$(LogFont 12 Tahoma)"
}

# TakeLook FOLDER DPI SETUP
TakeLook() {
    local prefix=$kBuildRoot/wine-pictures-$1 data
    [[ $1 != . ]] || prefix=$kBuildRoot/wine-pictures
    UsePrefix "$prefix"
    MakePrefix "$prefix"
    { printf 'REGEDIT4\r\n'; Examples; "$3"; } >"$prefix/look.reg"
    Wine 60 reg import "Z:${prefix//\//\\}\\look.reg" >"$prefix/look.log" 2>&1 || { cat "$prefix/look.log" >&2; return 1; }
    data=$(echo "$prefix"/drive_c/users/*/AppData/Roaming)
    printf '%s\r\n' http://popups.example.com/win/{1..4}.html http://ads.example.net/offer.asp?id=7 \
        >"$data/Sentrel closed windows.log"
    "$tools/screenshots.sh" "$output/$1" "$2" "$prefix" >"$prefix/screenshots.log" 2>&1 ||
        { cat "$prefix/screenshots.log" >&2; echo "The pictures for $1 could not be taken." >&2; return 1; }
}

# Release, Wine, and the fonts that it may take.
System() {
    # shellcheck disable=SC1091 # not every system has it
    (. /etc/os-release && echo "$ID ${VERSION_ID:-}") || true
    "$wineCommand" --version
    dpkg-query -W -f '${Package} ${Version}\n' fonts-wine fonts-liberation || true
}

# WriteLayout: the places of the controls as the scaling suite finds them; it compares them too, here with nothing.
WriteLayout() {
    UsePrefix "$kBuildRoot/wine-pictures"
    MakePrefix "$WINEPREFIX"
    StartScreen
    touch "$output/layout.txt"
    LAYOUT_COPY="Z:$output/layout.txt" Wine 60 "$kBuildRoot/release/tests/scaling_tests.exe" \
        --test-case='the controls and their places*' >"$WINEPREFIX/layout.log" 2>&1 || true
    [[ -s $output/layout.txt ]] || { cat "$WINEPREFIX/layout.log" >&2; return 1; }
}

if [[ ${1:-} == --system ]]; then
    # shellcheck source=tools/wine.sh
    . "$tools/wine.sh"
    System 2>/dev/null
    exit
fi
if (($#)); then
    # shellcheck source=tools/wine.sh
    . "$tools/wine.sh"
    output=$1
else
    # shellcheck source=tools/setup.sh
    . "$tools/setup.sh"
    cd "$kRoot"
    cmake --preset release
    cmake --build --preset release --target SentrelConfig SentrelStandin CalvaneConfigLoader \
        scaling_tests
    output=$kRoot/docs/pictures
    rm -rf "$output"
    mkdir "$output"
    System >"$output/system.txt"
    WriteLayout
fi
export SCREEN_SIZE=1280x1024x24

workers=()
failed=0
while read -r folder dpi setup; do
    [[ -n $folder ]] || continue
    if ((${#workers[@]} >= kAtATime)); then
        wait "${workers[0]}" || failed=1
        workers=("${workers[@]:1}")
    fi
    (
        trap StopAll EXIT
        TakeLook "$folder" "$dpi" "$setup"
    ) &
    workers+=($!)
done <<<"$kLooks"
for worker in "${workers[@]}"; do
    wait "$worker" || failed=1
done
((!failed)) || exit 1
# Not before: the folder of each look is emptied first.
convert "$tools/../app/res/tray_rest.ico[3]" -strip -define png:exclude-chunks=date,time "$output/tray-icon.png"
find "$output" -name '*.png' | sort
