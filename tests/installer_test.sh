#!/usr/bin/env bash
# The life of an installation, from the installer alone: it is installed, used, brought up to date while it runs, and
# removed, after which the machine is as it was before. Needs BUILD_DIR, WINEPREFIX, which it fills again, and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh
# shellcheck source=tests/support/script.sh
. tests/support/script.sh

kSetup=$BUILD_DIR/CalvaneSetup.exe
kViews=(32)
! Is64Bit || kViews=(32 64)
kReg=$kSystem\\reg.exe
kStartMenu=$WINEPREFIX/drive_c/ProgramData/Microsoft/Windows/Start\ Menu/Programs
kUninstallKey='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Calvane'
kSettingsKey='HKCU\Software\Calvane\Settings'
kRunKey='HKLM\Software\Microsoft\Windows\CurrentVersion\Run'
kRunValue='Calvane Config Manager'
# Where the settings are kept meanwhile.
kSettings="Z:${kWork//\//\\}\\settings.reg"

# SameFile FILE FILE
SameFile() {
    cmp "$1" "$2" || Fail "$2 is another one"
}

# InstalledPrograms: those that the build has made.
InstalledPrograms() {
    local file
    for file in SentrelConfig.exe CalvaneConfigLoader.exe Arc.wav; do
        SameFile "$BUILD_DIR/$file" "$kFolder/$file"
    done
}

# RemoveInUse: the manager runs on, so that the rest is left for the next start.
RemoveInUse() {
    # shellcheck disable=SC2086 # the folder behind _?= takes no quotes, and Wine puts them around an argument with blanks
    Exits 3010 "$kInstalled\\Uninstall.exe" /S _?=$kInstalled
}

# WaitFor SECONDS COMMAND...
WaitFor() {
    local end=$((SECONDS + $1))
    until "${@:2}"; do
        ((SECONDS < end)) || Fail "waited $1 s for: ${*:2}"
        sleep 0.1
    done
}

# Stored KEY VALUE: its data; nothing when there is none.
Stored() {
    Wine 60 "$kReg" query "$1" /v "$2" >"$kWork/query" 2>/dev/null || return 0
    tr -d '\r' <"$kWork/query" | sed -n "s/^ *$2 *REG_[A-Z]* *//p"
}

Holds() { grep -q held "$kWork/held"; }

# Keep FILE: somebody reads the file and lets nobody write it.
Keep() {
    : >"$kWork/held"
    "$wineCommand" "$BUILD_DIR/tests/hold_open.exe" "$1" >"$kWork/held" 2>/dev/null &
    WaitFor 20 Holds
}

# HaltManager: loads a manager and halts it, so that it neither replies nor ends.
HaltManager() {
    Client 2
    halted=$(ProcessesOf SentrelConfig.exe | head -1)
    kill -STOP "$halted"
}

# Reboot: Windows ends and starts.
Reboot() {
    StopWine
    Wine 60 wineboot >/dev/null 2>&1
    StopWine
}

# Restart: Windows ends, and at its next start carries out what PendingFileRenameOperations says.
Restart() {
    [[ -z ${halted:-} ]] || kill -KILL "$halted" 2>/dev/null || true
    halted=
    StopWine
    grep -q '"PendingFileRenameOperations"' "$WINEPREFIX/system.reg" || Fail "nothing is left for the next start"
    Reboot
}
IsGone() { [[ ! -e $1 ]]; }
# The uninstaller removes its own file last, from a copy of itself that nobody waits for.
UninstallerEnded() { [[ ! -e $kFolder/Uninstall.exe && -z $(ProcessesOf Un_) ]]; }

# Snapshot NAME: the registry without times (of writing, of the screen's driver) and what Wine stores for consoles and for
# its debugger whenever it comes to it; and the names of all files. A restart comes first: Windows deletes the uninstaller's
# copy then.
Snapshot() {
    local hive
    Reboot
    for hive in system user userdef; do
        sed -e '/^#time=/d' -e '/^"DriverDateData"=/d' -e 's/^\(\[.*\]\) [0-9]*$/\1/' "$WINEPREFIX/$hive.reg" |
            awk -v "hive=$hive: " '/^\[/ { skip = /^\[(Console|Software\\\\Wine\\\\WineDbg)\]/ } !skip { print hive $0 }'
    done >"$kWork/$1"
    (cd "$WINEPREFIX/drive_c" && find . | sort) >>"$kWork/$1"
}

# Page TEXT: the page of the installer or uninstaller that is open shows this text.
Page() {
    Wine 20 "$BUILD_DIR/tests/window_texts.exe" Calvane >"$kWork/page" 2>/dev/null
    tr -d '\r&' <"$kWork/page" | grep -qF "$1"
}

# Next TEXT: goes on to the page that shows this text, and to no further one.
Next() {
    xdotool key Return
    WaitFor 30 Page "$1"
}

# Described TEXT: the mouse goes down over the components until the page describes one in these words.
Described() {
    local x y top
    eval "$(xdotool search --onlyvisible --name '^Calvane Uninstall' getwindowgeometry --shell | sed 's/^/local /')"
    x=$((X + WIDTH / 2)) top=$((Y + HEIGHT / 3))
    for ((y = top; y < Y + HEIGHT; y += 8)); do
        xdotool mousemove $x $y
        ! Page "$1" || return 0
    done
    return 1
}

# WriteRunValue PATH: as the manager does it, without a NUL at the end of the text.
WriteRunValue() {
    {
        printf 'REGEDIT4\r\n\r\n[%s]\r\n' "${kRunKey/HKLM/HKEY_LOCAL_MACHINE}"
        printf '"%s"=hex(1):%s\r\n' "$kRunValue" \
            "$(printf '%s' "$1" | od -An -v -tx1 | tr -s ' \n' ',' | sed 's/^,//; s/,$//')"
    } >"$kWork/run.reg"
    Exits 0 "$kReg" import "Z:${kWork//\//\\}\\run.reg"
}

MakePrefix "$WINEPREFIX"
UsePrefix "$WINEPREFIX"
mkdir "$kWork"
UseWindowManager N
Exits 1 "$kReg" query 'HKCR\SentrelConfig.ConfigControl'
# What Wine itself stores with the first script and the first window.
echo 'WScript.Echo "ready"' >"$kWork/ready.vbs"
Exits 0 "$kSystem\\cscript.exe" //nologo "Z:${kWork//\//\\}\\ready.vbs"
Exits 0 "$BUILD_DIR/CalvaneConfigLoader.exe" /release
Snapshot before

# --- A silent installation
Exits 0 "$kSetup" /S
while read -r value text; do
    Equal "$value" "$(Stored "$kUninstallKey" "$value")" "$text"
done <<VALUES
DisplayVersion $(Version)
DisplayName Calvane
UninstallString "$kInstalled\\Uninstall.exe"
QuietUninstallString "$kInstalled\\Uninstall.exe" /S
DisplayIcon $kInstalled\\SentrelConfig.exe,0
InstallLocation $kInstalled
VALUES
size=$(($(Stored "$kUninstallKey" EstimatedSize)))
bytes=$(find "$kFolder" -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum }')
((size >= bytes / 1024 - 1 && size <= bytes / 1024 + 1)) || Fail "EstimatedSize is $size, the files have $bytes bytes"
InstalledPrograms
for page in users-guide deployment settings-schema automation windows-check; do
    file=$kFolder/docs/$page.html
    xmllint --html --noout "$file" 2>"$kWork/complaints" || Fail "$page.html is not there"
    [[ ! -s $kWork/complaints ]] || { cat "$kWork/complaints" >&2; Fail "$page.html is no proper page"; }
    Equal "the number of rows in $page.html" "$(grep -c '^<tr' "$file")" "$(grep -cE '^\| ' "docs/$page.md")"
    # What a page links and shows is installed too, and sections are there.
    while IFS= read -r target; do
        [[ $target != *:* ]] || continue
        linked=$file
        [[ $target == \#* ]] || linked=$kFolder/docs/${target%%#*}
        [[ -e $linked ]] || Fail "$page.html leads to $target, which is not installed"
        [[ $target != *\#* ]] || grep -q "id=\"${target#*#}\"" "$linked" || Fail "$page.html leads to no section $target"
    done < <(grep -oE '(src|href)="[^"]+"' "$file" | sed -E 's/^[a-z]+="(.*)"$/\1/')
done
grep -q '<img ' "$kFolder/docs/users-guide.html" || Fail "the user's guide has no pictures"
for file in docs/pictures/*.png; do
    SameFile "$file" "$kFolder/$file"
done
for file in docs/examples/*; do
    SameFile <(sed 's/$/\r/' "$file") "$kFolder/$file" # with the line ends of Windows
done
SameFile <(tr -d '\r' <"$kFolder/docs/examples/sentrel_config.h") "$BUILD_DIR/idl/sentrel_config.h"
! grep -F "$PWD" "$kFolder/docs/examples/sentrel_config.h" || Fail "sentrel_config.h names a folder of the build machine"
for file in policy/calvane{,-startup}.admx policy/en-US/calvane{,-startup}.adml; do
    SameFile "packaging/$file" "$kFolder/$file"
done
SameFile <(sed 's/$/\r/' packaging/policy/calvane-defaults.reg) "$kFolder/policy/calvane-defaults.reg"
for shortcut in 'Calvane' "Calvane user's guide"; do
    [[ -e $kStartMenu/$shortcut.lnk ]] || Fail "\"$shortcut\" is not in the Start menu"
done
grep -qF users-guide.html <(tr -d '\0' <"$kStartMenu/Calvane user's guide.lnk") || Fail "the guide's shortcut leads elsewhere"
[[ -n $(Stored "$kUninstallKey" HelpLink) && -n $(Stored "$kUninstallKey" URLInfoAbout) ]] || Fail "there are no links"
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" ''
[[ -z $(find "$kFolder" -iname '*standin*') ]] || Fail "the stand-in engine is installed"
echo "ok: installed"

# --- It works
Client 1
WaitFor 10 WindowShows
tr '\0' ' ' <"/proc/$(ProcessesOf SentrelConfig.exe | head -1)/cmdline" | grep -qF "$kInstalled\\SentrelConfig.exe" ||
    Fail "the manager runs from another folder"
Equal SoundFile "$(Stored "$kSettingsKey" SoundFile)" "$kInstalled\\Arc.wav"
echo "ok: a script client works and the window shows"

# --- An upgrade over a running manager, with a document that somebody else put there
SetRegistryValue "$kSettingsKey" txtPause REG_SZ 7000
WriteRunValue "$kInstalled\\CalvaneConfigLoader.exe"
echo mine >"$kFolder/docs/mine.html"
! ManagerEnded || Fail "the manager ended too early"
Exits 0 "$kSetup" /S '/D=C:\Elsewhere'
ManagerEnded || Fail "the manager runs on after the upgrade"
[[ ! -e $WINEPREFIX/drive_c/Elsewhere ]] || Fail "the upgrade made a second copy"
Equal "somebody's document" "$(cat "$kFolder/docs/mine.html")" mine
rm "$kFolder/docs/mine.html"
Equal txtPause "$(Stored "$kSettingsKey" txtPause)" 7000
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" "$kInstalled\\CalvaneConfigLoader.exe"
Client 2
echo "ok: upgraded"

# --- An upgrade while a manager does not end and somebody reads the sound
HaltManager
echo old >"$kFolder/Arc.wav"
Keep "$kInstalled\\Arc.wav"
former=$(stat -c %i "$kFolder/SentrelConfig.exe")
Exits 3010 "$kSetup" /S
kill -0 "$halted" || Fail "the manager ended, so that nothing was in use"
(($(stat -c %i "$kFolder/SentrelConfig.exe") != former)) || Fail "the manager's file is the former one"
SameFile "$BUILD_DIR/SentrelConfig.exe" "$kFolder/SentrelConfig.exe"
(($(stat -c %i "$kFolder/SentrelConfig.exe.1.old") == former)) || Fail "the former file is not aside"
Equal "the sound in use" "$(cat "$kFolder/Arc.wav")" old
SameFile "$BUILD_DIR/Arc.wav" "$kFolder/Arc.wav.new"
# Once more before the restart: the same again, the whole exit code seen from Windows.
printf '@"%s" /S\r\n@echo code %%ERRORLEVEL%%\r\n' "Z:${kSetup//\//\\}" >"$kWork/exit.cmd"
Exits 3010 cmd /c "Z:${kWork//\//\\}\\exit.cmd"
grep -q '^code 3010' "$kWork/output" || { cat "$kWork/output" >&2; Fail "the exit code is not 3010"; }
Restart
Equal "what is left of the former files" "$(cd "$kFolder" && find . -name '*.old' -o -name '*.new')" ''
SameFile "$BUILD_DIR/Arc.wav" "$kFolder/Arc.wav"
Client 2
echo "ok: upgraded while files were in use, the rest at the restart"

# --- A removal likewise
HaltManager
Keep "$kInstalled\\docs\\users-guide.html"
RemoveInUse
kill -0 "$halted" || Fail "the manager ended, so that nothing was in use"
Equal UninstallString "$(Stored "$kUninstallKey" UninstallString)" ''
[[ ! -e $kFolder/SentrelConfig.exe ]] || Fail "the manager's file still has its name"
rm "$kFolder/Uninstall.exe"
Restart
IsGone "$kFolder" || { find "$kFolder"; Fail "the folder is still there"; }
echo "ok: removed while files were in use, the rest at the restart"

# --- Installed before the restart that a removal wants: nothing of it is lost then
Exits 0 "$kSetup" /S
HaltManager
RemoveInUse
Exits 0 "$kSetup" /S
Restart
InstalledPrograms
echo "ok: installed between a removal and the restart"

# --- Start with Windows, and what points at a folder where the program no longer is
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" ''
Exits 0 "$kSetup" /S /STARTUP
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" "$kInstalled\\CalvaneConfigLoader.exe"
WriteRunValue 'C:\Moved\CalvaneConfigLoader.exe'
SetRegistryValue "$kSettingsKey" SoundFile REG_SZ 'C:\Moved\Arc.wav'
Exits 0 "$kSetup" /S
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" "$kInstalled\\CalvaneConfigLoader.exe"
Equal SoundFile "$(Stored "$kSettingsKey" SoundFile)" "$kInstalled\\Arc.wav"
SetRegistryValue "$kSettingsKey" SoundFile REG_SZ 'C:\Moved\mine.wav'
Exits 0 "$kSetup" /S
Equal "a sound of the user's own" "$(Stored "$kSettingsKey" SoundFile)" 'C:\Moved\mine.wav'
echo "ok: starts with Windows"

# --- Removed while it runs; the settings stay
Client 2
Exits 0 "$kInstalled\\Uninstall.exe" /S
WaitFor 20 UninstallerEnded
ManagerEnded || Fail "the manager runs on after its removal"
Equal txtPause "$(Stored "$kSettingsKey" txtPause)" 7000
Exits 0 "$kReg" export 'HKCU\Software\Calvane' "$kSettings" /y
Exits 0 "$kReg" delete 'HKCU\Software\Calvane' /f
Snapshot removed
SameLines "not as before" "$kWork/before" "$kWork/removed"
echo "ok: removed but for the settings"

# --- Installed again with the settings of before, and removed with them; what is not ours stays
mkdir "$WINEPREFIX/drive_c/Other"
touch "$WINEPREFIX/drive_c/Other/CalvaneConfigLoader.exe"
WriteRunValue 'C:\Other\CalvaneConfigLoader.exe'
Exits 0 "$kReg" import "$kSettings"
Exits 0 "$kSetup" /S
Client 2
Equal txtPause "$(Stored "$kSettingsKey" txtPause)" 7000
echo mine >"$kFolder/mine.txt"
Exits 0 "$kInstalled\\Uninstall.exe" /S /PURGE
WaitFor 20 UninstallerEnded
Equal "the rest of the folder" "$(ls "$kFolder")" mine.txt
rm -r "$kFolder"
Equal "$kRunValue" "$(Stored "$kRunKey" "$kRunValue")" 'C:\Other\CalvaneConfigLoader.exe'
Exits 0 "$kReg" delete "$kRunKey" /v "$kRunValue" /f
rm -r "$WINEPREFIX/drive_c/Other"
Snapshot purged
SameLines "not as before" "$kWork/before" "$kWork/purged"
echo "ok: removed with the settings"

# --- With its pages
"$wineCommand" "$kSetup" </dev/null >/dev/null 2>&1 &
setup=$!
WaitFor 30 Page "Setup installs Calvane for everybody who uses this computer."
Next "$kInstalled"
Next "Check the components you want to install"
Next "Completing Calvane Setup"
Page "Open the configuration window" || Fail "the last page does not offer the window"
Page "Read the user's guide" || Fail "the last page does not offer the guide"
WindowShows && Fail "the window came before it was asked for"
xdotool key Return
wait "$setup"
WaitFor 30 WindowShows
"$wineCommand" "$kInstalled\\Uninstall.exe" "_?=$kInstalled" </dev/null >/dev/null 2>&1 &
setup=$!
WaitFor 30 Page "Calvane will be uninstalled from the following folder."
Next "Check the components you want to uninstall"
WaitFor 30 Described "The lists and options of the user whose account the uninstaller runs under."
Next "Uninstallation Complete"
xdotool key Return
wait "$setup"
ManagerEnded || Fail "the manager runs on after its removal"
IsGone "$kFolder/SentrelConfig.exe" || Fail "the manager's file is still there"
rm -rf "$kFolder"
echo "ok: installed and removed page by page"

# --- Folders that users may change are refused; an empty one is protected
mkdir -p "$WINEPREFIX/drive_c/Open/Calvane" "$WINEPREFIX/drive_c/Closed/Used" "$WINEPREFIX/drive_c/Closed/Empty"
chmod 777 "$WINEPREFIX/drive_c/Open" "$WINEPREFIX/drive_c/Closed/"{Used,Empty}
touch "$WINEPREFIX/drive_c/Closed/Used/planted.dll"
for folder in 'Open\Calvane' 'Open\Other' 'Closed\Used'; do
    Exits 6 "$kSetup" /S "/D=C:\\$folder"
    [[ ! -e $WINEPREFIX/drive_c/${folder//\\//}/SentrelConfig.exe ]] || Fail "$folder was taken"
done
Equal UninstallString "$(Stored "$kUninstallKey" UninstallString)" ''
for folder in 'Closed\Empty' 'Closed\New\Calvane'; do
    Exits 0 "$kSetup" /S "/D=C:\\$folder"
    unix=$WINEPREFIX/drive_c/${folder//\\//}
    [[ -e $unix/SentrelConfig.exe ]] || Fail "$folder was not taken"
    [[ $(stat -c %A "$unix") != ????????w? ]] || Fail "$folder is not protected"
    # A policy's value is in quotes, and on a 64-bit system not in the view that the manager writes; it goes too.
    for view in "${kViews[@]}"; do
        Exits 0 "$kReg" add "$kRunKey" /v "$kRunValue" /d "\"C:\\$folder\\CalvaneConfigLoader.exe\"" /f "/reg:$view"
    done
    Exits 0 "C:\\$folder\\Uninstall.exe" /S "_?=C:\\$folder"
    for view in "${kViews[@]}"; do
        Exits 1 "$kReg" query "$kRunKey" /v "$kRunValue" "/reg:$view"
    done
done
echo "ok: folders that users may change are refused or protected"
