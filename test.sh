#!/usr/bin/env bash
# Builds and runs all tests: without, then with the address and undefined-behaviour sanitizers.
#   ./test.sh            both
#   ./test.sh debug      without sanitizers
#   ./test.sh sanitize   with sanitizers
#   ./test.sh windows    the program for Windows, under Wine
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/tools/setup.sh"

# run_tests PRESET [OPTION...]: on a terminal in one line, in a log each test in its own.
run_tests() {
    echo "Testing $1..." >&2
    (cd "$source_folder" && ctest --preset "$@" --progress)
}

# The unit tests as a Windows program, and the Windows program beside that of this system.
test_windows() {
    need_tools "${windows_tools[@]}" "${wine_tools[@]}"
    (cd "$source_folder" && cmake --preset windows -DKOV_TESTS=ON >/dev/null) # Wine may be there only now
    build windows all
    build debug windows_tests
    export KOV_WINE=${wine_tools[0]% *}
    export KOV_WINDOWS_PROGRAM=$source_folder/build/windows/bin/KOV-Controller.exe
    # A Wine of our own: nobody's settings are touched, and it is there until the tests are over.
    export WINEPREFIX=$source_folder/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=
    local server=${KOV_WINE%/*}/wineserver64
    trap '"'"$server"'" -k || true' EXIT
    echo "Starting Wine..." >&2
    mkdir -p "$WINEPREFIX"
    "$server" -p
    timeout 120 "$KOV_WINE" cmd /c exit 2>/dev/null || {
        echo "Wine does not start. Remove $WINEPREFIX and try again; without the tests, tools/check-zip.sh builds for Windows." >&2
        return 1
    }
    run_tests windows
    echo "Testing the Windows program in its console..." >&2
    timeout 600 "$source_folder/build/debug/tests/windows_tests" --gtest_brief=1
    "$server" -k || true
    trap - EXIT
}

need_tools "${build_tools[@]}" "${companion_tools[@]}" "${test_tools[@]}"
for preset in "$@"; do
    case $preset in
    debug | sanitize | windows) ;;
    *)
        echo "Usage: ./test.sh [debug] [sanitize] [windows]" >&2
        exit 2
        ;;
    esac
done
[ $# -gt 0 ] || set -- debug sanitize
for preset in "$@"; do
    if [ "$preset" = windows ]; then
        test_windows
        continue
    fi
    build "$preset" all
    run_tests "$preset" -j "$(nproc)"
done
