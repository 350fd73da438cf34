#!/usr/bin/env bash
# What is published: the folder's files and checksums, the symbols' fit to the programs, and a build with SIGN_COMMAND, all of
# whose programs, the uninstaller too, bear a valid signature. Needs BUILD_DIR, WINEPREFIX and a screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/wine.sh
. tools/wine.sh
# shellcheck source=tests/support/script.sh
. tests/support/script.sh

kTarget=i686-w64-mingw32
kSigned="$kWork/signed build"

# Runs COMMAND...
Runs() {
    "$@" >"$kWork/output" 2>&1 || { tail -40 "$kWork/output" >&2; Fail "$*"; }
}

# --- A build that signs, with a certificate made here
Runs openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj '/CN=Calvane test' -addext extendedKeyUsage=codeSigning \
    -keyout "$kWork/key.pem" -out "$kWork/certificate.pem"
cat >"$kWork/sign.sh" <<SIGN
#!/bin/sh
# The key's folder, then the file.
osslsigncode sign -certs "\$1/certificate.pem" -key "\$1/key.pem" -h sha256 -in "\$2" -out "\$2.signed" &&
    mv "\$2.signed" "\$2"
SIGN
chmod +x "$kWork/sign.sh"
Runs cmake -S . -B "$kSigned" -G Ninja --toolchain cmake/mingw-i686.cmake -DCMAKE_BUILD_TYPE=MinSizeRel \
    "-DSIGN_COMMAND=$kWork/sign.sh;$kWork" -DPUBLISH_CHECK_KIT=OFF
Runs cmake --build "$kSigned" --target dist
Runs Wine 60 "$kSigned/CalvaneSetup.exe" /S
for file in "$kSigned"/{SentrelConfig,CalvaneConfigLoader,CalvaneSetup}.exe "$kSigned"/dist/CalvaneSetup-*.exe \
    "$kFolder"/{SentrelConfig,CalvaneConfigLoader,Uninstall}.exe; do
    Runs osslsigncode verify -CAfile "$kWork/certificate.pem" -in "$file"
    grep -q '^Signature verification: ok' "$kWork/output" || Fail "$file bears no valid signature"
done
echo "ok: signed"

# --- The folder
version=$(Version)
cd "$kSigned/dist"
sha256sum --quiet -c SHA256SUMS || Fail "the checksums are wrong"
SameLines "not every file has a checksum" <(find . -type f ! -name SHA256SUMS -printf '%f\n' | sort) \
    <(sed 's/^[^ ]*  //' SHA256SUMS | sort)
for program in SentrelConfig CalvaneConfigLoader; do
    ! grep -qaF "$OLDPWD/" "$kSigned/$program.exe" || Fail "$program.exe names a folder of this machine"
    cmp <(unzip -p "Calvane-$version-portable.zip" $program.exe) "$kSigned/$program.exe" || Fail "$program.exe is another one"
done
SameLines "the portable zip has not what is installed" \
    <(cd "$kFolder" && find . -type f ! -name Uninstall.exe -printf '%P\n' | sort) \
    <(unzip -Z1 "Calvane-$version-portable.zip" | sort)
SameLines "the symbols" <(printf '%s.exe.debug\n' CalvaneConfigLoader SentrelConfig) <(unzip -Z1 "Calvane-$version-symbols.zip")
echo "ok: the folder is complete"

# --- The symbols fit the programs, which have none themselves
# Sections FILE: name, size and address of the code and the data.
Sections() {
    $kTarget-objdump -h "$1" | awk '$2 ~ /^\.(text|data|rdata|bss|idata|rsrc)$/ { print $2, $3, $4 }'
}
for program in SentrelConfig CalvaneConfigLoader; do
    symbols=$kSigned/symbols/$program.exe.debug
    Sections "$kSigned/$program.exe" >"$kWork/shipped"
    [[ -s $kWork/shipped ]] || Fail "$program has no sections"
    SameLines "the symbols of $program are another program's" "$kWork/shipped" <(Sections "$symbols")
    ! $kTarget-objdump -h "$kSigned/$program.exe" | grep debug >/dev/null || Fail "$program carries its symbols"
    address=$($kTarget-nm "$symbols" | awk '$3 == "_wWinMain@16" { print $1 }')
    line=$($kTarget-addr2line -e "$symbols" "0x$address")
    [[ $line == *main.cpp:[1-9]* && $line != *"$PWD"* && $line != *"$kWork"* ]] || Fail "wWinMain of $program is at \"$line\""
done
# The manager's functions check their stack before they return.
checks=$($kTarget-objdump -d "$kSigned/symbols/SentrelConfig.exe" | grep -c 'call .*<___stack_chk_fail>') || true
((checks > 100)) || Fail "only $checks functions of the manager check their stack"
echo "ok: the symbols fit"
