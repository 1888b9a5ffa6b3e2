#!/usr/bin/env bash
# Builds and runs all tests: plainly, then under the address and undefined-behaviour sanitizers.
#   ./test.sh            both
#   ./test.sh debug      plainly
#   ./test.sh sanitize   under the sanitizers
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/tools/setup.sh"

need_tools "${build_tools[@]}" "${test_tools[@]}"
[ $# -gt 0 ] || set -- debug sanitize
for preset in "$@"; do
    build "$preset" all
    (cd "$source_folder" && ctest --preset "$preset" -j "$(nproc)")
done
