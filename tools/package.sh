#!/usr/bin/env bash
# Builds the Debian package in build/package and prints its name. The same sources give the same bytes:
# all times are that of the last commit (without a repository, of the changelog), unless
# SOURCE_DATE_EPOCH is set.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

need_tools "${build_tools[@]}" "${companion_tools[@]}" "${package_tools[@]}"
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(git -C "$source_folder" log -1 --format=%ct 2>/dev/null) ||
        SOURCE_DATE_EPOCH=$(date -d "$(sed -n 's/^ -- .*>  //p' \
            "$source_folder/packaging/debian/changelog" | head -n 1)" +%s)
fi
export SOURCE_DATE_EPOCH
folder=$source_folder/build/package
umask 022
make_package() {
    cmake -S "$source_folder" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKOV_TESTS=OFF \
        -DCMAKE_INSTALL_PREFIX=/usr &&
        cmake --build "$folder" &&
        cd "$folder" && rm -f ./*.deb && cpack -G DEB
}
run_logged "the Debian package" "$folder/package.log" make_package
ls "$folder"/*.deb
