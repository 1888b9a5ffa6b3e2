#!/usr/bin/env bash
# What no test sees: the formatting, the manual's markup, and what clang-tidy and cppcheck find.
#   ./tools/check-code.sh          all; some minutes a core
#   ./tools/check-code.sh quick    the formatting and the manual only
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$source_folder"

format_tools=("clang-format clang-format" "mandoc mandoc")
analysis_tools=("clang-tidy clang-tidy" "cppcheck cppcheck")

need_tools "${format_tools[@]}"
folders=(bench config controller devlib diagnostics frame instrument interactive modules protocol simulator tests)
find "${folders[@]}" -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run -Werror
mandoc -Tlint -Wwarning docs/KOV-Controller.1
[ "${1:-all}" = all ] || exit 0

need_tools "${build_tools[@]}" "${test_tools[@]}" "${analysis_tools[@]}"
build debug all # for compile_commands.json, and for what the build generates
cppcheck --quiet --std=c++20 --language=c++ --library=googletest --error-exitcode=1 \
    --enable=warning,performance,portability --inline-suppr -I. "${folders[@]}"
sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/debug/compile_commands.json | grep -v /build/ |
    sort -u | xargs -P "$(nproc)" -n 4 clang-tidy -p build/debug --quiet 2>/dev/null
echo "Nothing found."
