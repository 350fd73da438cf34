#!/usr/bin/env bash
# Writes what is made from store/settings_schema.h into the source tree: the policies, the defaults and the schema's page. To be run, and
# its result committed, whenever the schema changes; tests/policy_test.sh fails until then.
set -euo pipefail
# shellcheck source=tools/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

cd "$kRoot"
cmake --preset release
cmake --build --preset release --target schema_export

output=$kBuildRoot/schema
mkdir -p "$output/en-US"
UsePrefix "$kBuildRoot/wine-schema"
MakePrefix "$WINEPREFIX"
Wine 60 "$kBuildRoot/release/schema_export.exe" "Z:${output//\//\\}"
cp "$output"/*.{admx,reg} packaging/policy/
cp "$output"/en-US/*.adml packaging/policy/en-US/
cp "$output/settings-schema.md" docs/
