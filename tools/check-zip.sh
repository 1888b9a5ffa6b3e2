#!/usr/bin/env bash
# Makes the Windows zip (build/windows) and checks it: its files, that the programs need only the
# system's libraries, and, if Wine is installed, a run of the unpacked program.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

need_tools "${build_tools[@]}" "${companion_tools[@]}" "${windows_tools[@]}"
build windows all
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    echo "check-zip: $*" >&2
    exit 1
}

zips=$source_folder/build/windows
rm -f "$zips"/*.zip
(cd "$zips" && cpack) >"$zips/zip.log" 2>&1 || {
    cat "$zips/zip.log" >&2
    fail "cpack failed"
}
zip=$(ls "$zips"/*.zip)
(cd "$folder" && cmake -E tar xf "$zip")
cd "$folder"/*/

present=$(find . -type f | sort)
pages=$(cd "$source_folder" && find ./docs -name '*.md' -o -name '*.svg')
scenarios=$(cd "$source_folder/simulator" && find scenarios -type f -printf './%p\n')
expected=$(printf '%s\n' ./KOV-Controller.exe ./COM-KOV-CTRL.dll ./kov.exe ./README.md \
    ./tap/COM-KOV-CTRL.dll ./replay/COM-KOV-CTRL.dll \
    ./docs/kov-report.schema.json "$pages" "$scenarios" | sort)
[ "$present" = "$expected" ] ||
    fail "the zip contains other files: $(diff <(echo "$expected") <(echo "$present") || true)"

for file in KOV-Controller.exe {.,tap,replay}/COM-KOV-CTRL.dll kov.exe; do
    needs=$(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/.*DLL Name: //p')
    others=$(grep -viE '^(kernel32|msvcrt|ntdll|user32|advapi32|shell32|COM-KOV-CTRL)\.dll$' \
        <<<"$needs" || true)
    [ -z "$others" ] || fail "$file needs $others"
done

wine=${wine_tools[0]% *}
if is_there "$wine"; then
    output=$(WINEPREFIX=$source_folder/build/windows/wine WINEDEBUG=-all KOV_SIMULATOR_STATE=none \
        WINEDLLOVERRIDES=mscoree,mshtml= timeout 120 "$wine" KOV-Controller.exe 3 -p -T </dev/null 2>/dev/null) ||
        fail "the unpacked program ended with status $?"
    grep -q '^Product identification: KOV-CTRL, ' <<<"$output" ||
        fail "the unpacked program printed: $output"
    verdict=$(WINEPREFIX=$source_folder/build/windows/wine WINEDEBUG=-all timeout 120 "$wine" kov.exe report \
        check "Z:$source_folder/tests/protocol/expected_report.txt" 2>/dev/null || true)
    grep -q 'slot3/steps  *The device type does not fit the slot' <<<"$verdict" ||
        fail "the unpacked companion printed: $verdict"
fi
echo "The zip is complete: $(basename "$zip")"
