#!/usr/bin/env bash
# Checks what no test sees: layout, the manuals' markup, and the findings of clang-tidy and cppcheck.
#   ./tools/check-code.sh            everything; a quarter of an hour
#   ./tools/check-code.sh quick      the formatting and the manual only
#   ./tools/check-code.sh changed    clang-tidy on what was changed lately
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$source_folder"

# Other versions give other results.
format_tools=("clang-format-14 clang-format-14" "mandoc mandoc")
tidy_tools=("clang-tidy-14 clang-tidy-14")
cppcheck_tools=("cppcheck cppcheck")
folders=(bench companion config controller devlib diagnostics frame instrument interactive modules protocol simulator tests tools)

check_layout() {
    need_tools "${format_tools[@]}"
    find "${folders[@]}" -name '*.cpp' -o -name '*.h' | xargs clang-format-14 --dry-run -Werror || {
        echo "clang-format-14 -i FILE puts the layout right." >&2
        exit 1
    }
    mandoc -Tlint -Wwarning docs/KOV-Controller.1 docs/kov.1
}

# The sources that are built, as the compiler gets them.
built_sources() {
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/debug/compile_commands.json |
        grep -v /build/ | sort -u
}

run_clang_tidy() {
    xargs -r -P "$(nproc)" -n 2 clang-tidy-14 -p build/debug --quiet 2>/dev/null
}

# The commit from which changes count: where this branch left the one of the origin, or, on that
# itself, ten commits ago (or as many as there are). Empty without a history.
base_of_change() {
    local base
    base=$(git merge-base HEAD origin/HEAD 2>/dev/null || git merge-base HEAD origin/main 2>/dev/null ||
        git merge-base HEAD main 2>/dev/null || true)
    if [ -z "$base" ] || [ "$base" = "$(git rev-parse HEAD 2>/dev/null)" ]; then
        base=$(git rev-list --first-parent --max-count=11 HEAD 2>/dev/null | tail -n 1 || true)
    fi
    echo "$base"
}

# Changed sources; of a changed header the source of its name.
changed_sources() {
    local base name
    base=$(base_of_change)
    [ -n "$base" ] || return 0
    { git diff --name-only --diff-filter=d "$base" -- && git ls-files --others --exclude-standard; } |
        while read -r name; do
            case $name in
            *.cpp) echo "$source_folder/$name" ;;
            *.h) echo "$source_folder/${name%.h}.cpp" ;;
            esac
        done | sort -u
}

check_changed() {
    local most=40 sources count
    sources=$(comm -12 <(built_sources) <(changed_sources))
    count=$(grep -c . <<<"$sources" || true)
    if [ "$count" -gt "$most" ]; then
        echo "clang-tidy: $most of $count changed sources; tools/check-code.sh checks all." >&2
        sources=$(head -n "$most" <<<"$sources")
    else
        echo "clang-tidy: $count changed sources." >&2
    fi
    run_clang_tidy <<<"$sources"
}

check_all() {
    need_tools "${cppcheck_tools[@]}"
    cppcheck --quiet --std=c++20 --language=c++ --library=googletest --error-exitcode=1 \
        --enable=warning,performance,portability --inline-suppr -I. "${folders[@]}"
    built_sources | run_clang_tidy
}

# clang-tidy needs compile_commands.json, and what the build generates.
prepare_analysis() {
    need_tools "${build_tools[@]}" "${companion_tools[@]}" "${test_tools[@]}" "${tidy_tools[@]}"
    build debug all
}

case ${1:-all} in
quick)
    check_layout
    ;;
changed)
    prepare_analysis
    check_changed
    ;;
all)
    check_layout
    prepare_analysis
    check_all
    ;;
*)
    echo "Usage: tools/check-code.sh [quick|changed]" >&2
    exit 2
    ;;
esac
echo "Nothing found."
