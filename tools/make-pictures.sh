#!/usr/bin/env bash
# Makes the pictures of the documents from runs of the programs on the simulated instrument.
#   tools/make-pictures.sh                 in docs/pictures, with what is built in build/debug
#   tools/make-pictures.sh BUILD FOLDER    in that folder, with what is there already
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

if [ $# -eq 0 ]; then
    need_tools "${build_tools[@]}" "${companion_tools[@]}" "${test_tools[@]}"
    build debug all
fi
build_folder=$(realpath "${1:-$source_folder/build/debug}")
pictures=$(realpath "${2:-$source_folder/docs/pictures}")
program=$build_folder/bin/KOV-Controller
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
unset KOV_DEVICE_LIBRARY LD_LIBRARY_PATH NO_COLOR CLICOLOR_FORCE
export KOV_SIMULATOR_STATE=$work/state KOV_SIMULATOR_SCENARIO=$work/scenario LC_ALL=C.UTF-8

# An instrument at work: some values are out of tolerance, one module is off.
cat >scenario <<'SCENARIO'
psu.temperature 41
slot2.cpu_temperature 44
slot3.voltage18 16.9
SCENARIO
"$program" 3 -q -UY -HT120 -MA0 y -VV1 1250 -MA1 y -VV2 1500 -MA2 y -T >/dev/null

# screen NAME WINDOW SECONDS PROGRAM ARGUMENTS
screen() {
    "$build_folder/tests/screen_picture" "$2" "$3" "$build_folder/bin/$4" "$5" "$pictures/$1.svg"
}
screen live-display 120x12 6 KOV-Controller "3 -HM -T"
screen narrow-display 80x24 3 KOV-Controller "3 -VT1 -T"
screen full-screen 132x60 12 KOV-Controller "3"
sleep 10 | "$program" 3 -q -HT85 -HS heater.txt -T >/dev/null
screen plot 100x30 2 kov "log plot --only Theat,Iout heater.txt"

# Two diagrams of the companion's page on an acceptance test, with the page's own style.
echo 'slot1.load 8e9' >scenario
"$build_folder/tests/quick_controller" 3 -q -R report.txt -T >/dev/null
"$build_folder/bin/kov" report check --simulated --html page.html report.txt >/dev/null
{
    echo '<svg xmlns="http://www.w3.org/2000/svg" width="640" height="505" viewBox="0 0 640 505">'
    sed -n '/<style>/,/<\/style>/p' page.html | sed 's/.*<style>/<style>/; s/<\/style>.*/<\/style>/'
    echo '<rect width="640" height="505" style="fill: var(--paper)"/>'
    top=0
    grep -m 2 -o '<svg class="diagram".*</svg>' page.html | while IFS= read -r diagram; do
        echo "<g class=\"diagram\" transform=\"translate(0 $top)\">$(
            sed 's/<svg[^>]*>/<g>/; s/<\/svg>/<\/g>/' <<<"$diagram")</g>"
        top=240
    done
    echo '</svg>'
} >"$pictures/report-diagrams.svg"
