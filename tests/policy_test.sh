#!/usr/bin/env bash
# The policy and the schema's page are what the schema makes of itself today, and the policy writes exactly what the
# manager stores. Needs BUILD_DIR, WINEPREFIX with the manager registered, and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh

kAdmx=packaging/policy/calvane.admx
kAdml=packaging/policy/en-US/calvane.adml
kSettingsKey='Software\Calvane\Settings'
kWork=$WINEPREFIX/work

Fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Runs PROGRAM [ARGUMENT...]
Runs() {
    local code=0
    Wine 60 "$@" >"$kWork/output" 2>&1 || code=$?
    ((code == 0)) || { cat "$kWork/output" >&2; Fail "$* ended with $code"; }
}

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

# SameLines WHAT FILE FILE
SameLines() {
    diff "$2" "$3" >"$kWork/difference" || { cat "$kWork/difference" >&2; Fail "$1"; }
}

UsePrefix "$WINEPREFIX"
mkdir -p "$kWork/en-US"

# --- Current
Runs "$BUILD_DIR/schema_export.exe" "Z:${kWork//\//\\}"
SameLines "$kAdmx is not current: run tools/export_schema.sh" "$kAdmx" "$kWork/calvane.admx"
SameLines "$kAdml is not current: run tools/export_schema.sh" "$kAdml" "$kWork/en-US/calvane.adml"
SameLines "the schema's page is not current: run tools/export_schema.sh" docs/settings-schema.md "$kWork/settings-schema.md"

# --- Well formed, and every reference finds its text
xmllint --noout "$kAdmx" "$kAdml" || Fail "no well-formed XML"
for kind in string presentation; do
    grep -oE "\\\$\\($kind\\.[A-Za-z0-9_]+\\)" "$kAdmx" | sed -E 's/.*\.(.*)\)/\1/' | sort >"$kWork/used"
    Values "//e:${kind}Table/e:$kind/@id" "$kAdml" >"$kWork/defined"
    [[ -s $kWork/used ]] || Fail "the policy uses no $kind"
    [[ -z $(uniq -d "$kWork/used") ]] || Fail "a $kind is used twice: $(uniq -d "$kWork/used")"
    SameLines "the ${kind}s used are not those defined" "$kWork/used" "$kWork/defined"
done
Values '//e:elements/*/@id' "$kAdmx" >"$kWork/elements"
Values '//@refId' "$kAdml" >"$kWork/shown"
SameLines "the elements are not those shown" "$kWork/elements" "$kWork/shown"
[[ -z $(uniq -d "$kWork/elements") ]] || Fail "an element's id is used twice"

# --- Text and nothing else is written
[[ -z $(XPath '//e:decimal[not(@storeAsText="true")] | //e:longDecimal | //e:multiText | //e:boolean |
    //e:text[@expandable="true"] | //e:list[@expandable="true"] | //e:enabledValue/e:decimal |
    //e:disabledValue/e:decimal | //e:value/e:decimal' "$kAdmx") ]] || Fail "the policy writes something else than text"
for switch in $(Values '//e:policy[not(e:elements)]/@name' "$kAdmx"); do
    [[ -n $(XPath "//e:policy[@name=\"$switch\"]/e:enabledValue/e:string/text()" "$kAdmx") ]] ||
        Fail "the policy $switch does not say what it writes"
done

# --- The values of a first start
cat >"$kWork/first_run.vbs" <<'VBS'
Set control = CreateObject("SentrelConfig.ConfigControl")
Set config = control.ConfigInstance(CLng(2))
VBS
Runs cscript //nologo "Z:${kWork//\//\\}\\first_run.vbs"
Wine 60 reg query 'HKCU\Software\Calvane' /s >"$kWork/store" 2>&1 || Fail "no store"
tr -d '\r' <"$kWork/store" | sed -nE '/^HKEY_CURRENT_USER/ { s/^HKEY_CURRENT_USER\\//; h; d; }
    /^    / { s/^    (.*)    (REG_[A-Z_]+)    (.*)$/\1\t\2\t\3/; G; s/^(.*)\n(.*)$/\2\t\1/; p; }' >"$kWork/values"
[[ -z $(awk -F'\t' '$3 != "REG_SZ"' "$kWork/values") ]] || Fail "the manager stores something else than text"

awk -F'\t' -v key="$kSettingsKey" '$1 == key { print $2 }' "$kWork/values" | sort >"$kWork/stored"
Values "//e:policy[@key=\"$kSettingsKey\"]//@valueName" "$kAdmx" >"$kWork/settable"
(($(wc -l <"$kWork/stored") == 12)) || Fail "a first start stores $(wc -l <"$kWork/stored") options"
SameLines "the options settable by the policy are not those stored" "$kWork/stored" "$kWork/settable"

{ echo 'Software\Calvane\Exclude'; awk -F'\t' -v key="$kSettingsKey" '$1 != key { print $1 }' "$kWork/values"; } |
    sort -u >"$kWork/stored"
Values '//e:list[@explicitValue="true"]/@key' "$kAdmx" >"$kWork/settable"
SameLines "the lists settable by the policy are not those stored" "$kWork/stored" "$kWork/settable"

# --- What a first start stores can be set by the policy
while IFS=$'\t' read -r key name _ data; do
    [[ $key == "$kSettingsKey" ]] || continue
    policy="//e:policy[@key=\"$key\" and descendant-or-self::*/@valueName=\"$name\"]"
    [[ -n $(XPath "$policy//e:string[text()=\"$data\"] | $policy//e:text |
        $policy//e:decimal[@minValue <= \"$data\" and @maxValue >= \"$data\"]" "$kAdmx") ]] ||
        Fail "the policy cannot set $name to $data"
done <"$kWork/values"

# --- Beyond the user's store there is the Run value alone
Values '//e:policy[@class="Machine"]//@valueName' "$kAdmx" >"$kWork/machine"
echo 'Calvane Config Manager' >"$kWork/expected"
SameLines "the machine's values" "$kWork/expected" "$kWork/machine"
Values '//e:policy/@key' "$kAdmx" | sort -u >"$kWork/keys"
cat >"$kWork/expected" <<'KEYS'
Software\Calvane\Banners
Software\Calvane\Exclude
Software\Calvane\Search
Software\Calvane\Settings
Software\Microsoft\Windows\CurrentVersion\Run
KEYS
SameLines "the keys" "$kWork/expected" "$kWork/keys"
echo "ok: the policy and the schema's page are current and complete"
