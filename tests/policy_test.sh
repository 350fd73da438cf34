#!/usr/bin/env bash
# The policy and the schema's page are what the schema makes of itself today, and the policy writes exactly what the
# manager stores. Needs BUILD_DIR, WINEPREFIX with the manager registered, and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh
# shellcheck source=tests/support/script.sh
. tests/support/script.sh

kAdmx=packaging/policy/calvane.admx
kStartupAdmx=packaging/policy/calvane-startup.admx
kDefaults=packaging/policy/calvane-defaults.reg
kSettingsKey='Software\Calvane\Settings'

# XPath EXPRESSION FILE: elements are named by e:.
XPath() {
    local expression=$1
    expression=$(sed -E 's/e:([a-zA-Z]+)/*[local-name()="\1"]/g' <<<"$expression")
    xmllint --xpath "$expression" "$2" 2>/dev/null || true
}

# Values EXPRESSION FILE: the values of attributes, one a line.
Values() {
    XPath "$1" "$2" | sed -E 's/^ *[a-zA-Z]+="(.*)"$/\1/' | sort
}

# ReadStore: a line for each value of the user's store: key, name, type, data.
ReadStore() {
    Wine 60 reg query 'HKCU\Software\Calvane' /s >"$kWork/store" 2>&1 || Fail "no store"
    tr -d '\r' <"$kWork/store" | sed -nE '/^HKEY_CURRENT_USER/ { s/^HKEY_CURRENT_USER\\//; h; d; }
        /^    / { s/^    (.*)    (REG_[A-Z_]+)    (.*)$/\1\t\2\t\3/; G; s/^(.*)\n(.*)$/\2\t\1/; p; }'
}

# FirstStart: the manager starts, hidden, and ends.
FirstStart() {
    Client 2
    Exits 0 "$BUILD_DIR/CalvaneConfigLoader.exe" /release
}

UsePrefix "$WINEPREFIX"
mkdir -p "$kWork/en-US"

# --- Current
Exits 0 "$BUILD_DIR/schema_export.exe" "Z:${kWork//\//\\}"
for file in calvane.admx en-US/calvane.adml calvane-startup.admx en-US/calvane-startup.adml calvane-defaults.reg; do
    SameLines "$file is not current: run tools/export_schema.sh" "packaging/policy/$file" "$kWork/$file"
done
SameLines "the schema's page is not current: run tools/export_schema.sh" docs/settings-schema.md "$kWork/settings-schema.md"

# --- Well formed, and every reference finds its text
for admx in "$kAdmx" "$kStartupAdmx"; do
    adml=packaging/policy/en-US/$(basename "$admx" .admx).adml
    xmllint --noout "$admx" "$adml" || Fail "no well-formed XML"
    for kind in string presentation; do
        grep -oE "\\\$\\($kind\\.[A-Za-z0-9_]+\\)" "$admx" | sed -E 's/.*\.(.*)\)/\1/' | sort >"$kWork/used"
        Values "//e:${kind}Table/e:$kind/@id" "$adml" >"$kWork/defined"
        [[ -s $kWork/used ]] || Fail "the policy uses no $kind"
        [[ -z $(uniq -d "$kWork/used") ]] || Fail "a $kind is used twice: $(uniq -d "$kWork/used")"
        SameLines "the ${kind}s used are not those defined" "$kWork/used" "$kWork/defined"
    done
    Values '//e:elements/*/@id' "$admx" >"$kWork/elements"
    Values '//@refId' "$adml" >"$kWork/shown"
    SameLines "the elements are not those shown" "$kWork/elements" "$kWork/shown"
    [[ -z $(uniq -d "$kWork/elements") ]] || Fail "an element's id is used twice"

    # Text and nothing else is written.
    [[ -z $(XPath '//e:decimal[not(@storeAsText="true")] | //e:longDecimal | //e:multiText | //e:boolean |
        //e:text[@expandable="true"] | //e:list[@expandable="true"] | //e:enabledValue/e:decimal |
        //e:disabledValue/e:decimal | //e:value/e:decimal' "$admx") ]] || Fail "the policy writes something else than text"
    for switch in $(Values '//e:policy[not(e:elements)]/@name' "$admx"); do
        [[ -n $(XPath "//e:policy[@name=\"$switch\"]/e:enabledValue/e:string/text()" "$admx") ]] ||
            Fail "the policy $switch does not say what it writes"
    done
done

# --- The values of a first start
FirstStart
ReadStore >"$kWork/values"
[[ -z $(awk -F'\t' '$3 != "REG_SZ"' "$kWork/values") ]] || Fail "the manager stores something else than text"

awk -F'\t' -v key="$kSettingsKey" '$1 == key { print $2 }' "$kWork/values" | sort >"$kWork/stored"
Values "//e:policy[@key=\"$kSettingsKey\"]//@valueName" "$kAdmx" >"$kWork/settable"
(($(wc -l <"$kWork/stored") == 12)) || Fail "a first start stores $(wc -l <"$kWork/stored") options"
# Never read by the manager.
printf '%s\n' chkStartup chkStopAds chkStopPop chkTray >"$kWork/unread"
SameLines "the options settable by the policy are not those read" <(grep -vxFf "$kWork/unread" "$kWork/stored") \
    "$kWork/settable"

{ echo 'Software\Calvane\Exclude'; awk -F'\t' -v key="$kSettingsKey" '$1 != key { print $1 }' "$kWork/values"; } |
    sort -u >"$kWork/stored"
Values '//e:list[@explicitValue="true"]/@key' "$kAdmx" >"$kWork/settable"
SameLines "the lists settable by the policy are not those stored" "$kWork/stored" "$kWork/settable"

# --- What a first start stores can be set by the policy
while IFS=$'\t' read -r key name _ data; do
    [[ $key == "$kSettingsKey" ]] || continue
    ! grep -qxF "$name" "$kWork/unread" || continue
    policy="//e:policy[@key=\"$key\" and descendant-or-self::*/@valueName=\"$name\"]"
    [[ -n $(XPath "$policy//e:string[text()=\"$data\"] | $policy//e:text |
        $policy//e:decimal[@minValue <= \"$data\" and @maxValue >= \"$data\"]" "$kAdmx") ]] ||
        Fail "the policy cannot set $name to $data"
done <"$kWork/values"

# --- The defaults to import are those of a first start, but for the folder of the sound
Exits 0 reg delete 'HKCU\Software\Calvane' /f
Exits 0 reg import "Z:${PWD//\//\\}\\${kDefaults//\//\\}"
ReadStore | sort >"$kWork/imported"
# Names are compared without regard to case.
sed 's/\(\t[0-9]*\)Url\t/\1URL\t/' "$kWork/values" | sort >"$kWork/expected"
SameLines "the defaults" <(sed 's/\t[^\t]*\(\\Arc\.wav\)$/\t\1/' "$kWork/expected") \
    <(sed 's/\tC:\\Program Files (x86)\\Calvane\(\\Arc\.wav\)$/\t\1/' "$kWork/imported")
# A start finds them complete and leaves them as they are.
FirstStart
ReadStore | sort >"$kWork/kept"
SameLines "the defaults after a start" "$kWork/imported" "$kWork/kept"

# --- "Exclude only these sites": the list by policy, everything else by the first start
Exits 0 reg delete 'HKCU\Software\Calvane' /f
for row in '0 www.example.com' '1 news.example.org'; do
    Exits 0 reg add 'HKCU\Software\Calvane\Exclude' /v "${row%% *}" /t REG_SZ /d "${row#* }" /f
done
FirstStart
ReadStore | sort >"$kWork/kept"
{
    cat "$kWork/values"
    printf 'Software\\Calvane\\Exclude\t%s\tREG_SZ\t%s\n' 0 www.example.com 1 news.example.org
} | sort >"$kWork/both"
SameLines "the first start with a list by policy" "$kWork/both" "$kWork/kept"
echo "ok: the policies, the defaults and the schema's page are current and complete"
