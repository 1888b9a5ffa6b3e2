#!/usr/bin/env bash
# Builds the Debian package twice, in folders of different names and without a compiler cache, and
# compares the bytes.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$source_folder" log -1 --format=%ct)}
export SOURCE_DATE_EPOCH CCACHE_DISABLE=1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

packages=()
for copy in "$folder/one" "$folder/another/one/further/down"; do
    mkdir -p "$copy"
    git -C "$source_folder" ls-files -z --cached --others --exclude-standard |
        tar -C "$source_folder" --null -T - -c | tar -C "$copy" -x
    packages+=("$("$copy/tools/package.sh")")
done
sha256sum "${packages[@]}"
cmp "${packages[@]}" || {
    echo "The packages differ: a file holds a time or the path of its folder." >&2
    exit 1
}
echo "Both packages are identical."
