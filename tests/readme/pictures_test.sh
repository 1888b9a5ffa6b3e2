#!/usr/bin/env bash
# The pictures in docs/pictures show what the programs show today: made anew they have the same texts
# in the same colours, except for numbers, the turning mark and plotted curves.
#   pictures_test.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

texts() {
    grep -o '<text[^<]*</text>' "$1" | sed -E -e 's/ (x|y|textLength)="[^"]*"//g' \
        -e 's/[-+]?[0-9]+(\.[0-9]+)?(e[-+][0-9]+)?/#/g' -e 's/>[-\\|\/]</>#</'
}
"$1/tools/make-pictures.sh" "$2" "$folder"
failed=0 count=0
for picture in "$folder"/*.svg; do
    count=$((count + 1))
    diff <(texts "$1/docs/pictures/${picture##*/}") <(texts "$picture") || {
        echo "docs/pictures/${picture##*/} is out of date: tools/make-pictures.sh" >&2
        failed=1
    }
done
echo "$count pictures"
[ "$failed" -eq 0 ] && [ "$count" -gt 3 ]
