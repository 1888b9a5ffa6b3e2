#!/usr/bin/env bash
# Builds the Debian package, installs it in a clean root, runs it there and removes it.
#   tools/check-package.sh [PACKAGE]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

need_tools "${build_tools[@]}" "${companion_tools[@]}" "${package_tools[@]}"
package=${1:-$("$source_folder/tools/package.sh")}
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
unset KOV_DEVICE_LIBRARY LD_LIBRARY_PATH KOV_SIMULATOR_SCENARIO
export KOV_SIMULATOR_STATE=none

fail() {
    echo "check-package: $*" >&2
    exit 1
}

# Nothing is in the root but what dpkg keeps there, so what the package depends on is missing.
mkdir -p "$root/var/lib/dpkg/"{info,updates}
touch "$root/var/lib/dpkg/"{status,available}
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(fakeroot)
dpkg_there() {
    "${as_root[@]}" dpkg --root="$root" --force-depends --force-script-chrootless \
        --log=/dev/null "$@" >"$root/dpkg.log" 2>&1 || {
        cat "$root/dpkg.log" >&2
        fail "dpkg $* failed"
    }
}

dpkg_there --install "$package"
program=$root/usr/bin/KOV-Controller

# Compiled and linked with what makes a fault harder to exploit.
for file in "$program" "$root/usr/bin/kov" "$root"/usr/lib/kov-controller/{simulator,tap,replay}/libCOM-KOV-CTRL.so; do
    elf=$(readelf --wide --file-header --segments --dynamic --dyn-syms "$file")
    for sign in 'Type: *DYN' GNU_RELRO BIND_NOW __stack_chk_fail '__[a-z]*_chk\b'; do
        grep -q "$sign" <<<"$elf" || fail "$file was built without $sign"
    done
    # A stack that can be executed, or a segment that can be written and executed.
    ! grep -q 'GNU_STACK.*RWE\|LOAD.*RWE' <<<"$elf" || fail "$file can execute what it writes"
done
readelf --wide --dynamic "$program" | grep -q 'FLAGS_1.*PIE' || fail "the program is not a PIE"

# The system's libraries, and nothing else of the system, for a run inside the root. The program needs
# /proc to find the folder in which it stands.
libraries=$(ldd "$program" | grep -o ' /[^ ]*\|^[[:space:]]*/[^ ]*' | grep -v "$root")
run_inside='mount --rbind /proc "$0/proc" && exec chroot "$0" /usr/bin/KOV-Controller "$@"'
mkdir "$root/proc"
run_there() {
    if unshare --map-root-user --mount true 2>/dev/null; then
        unshare --map-root-user --mount sh -c "$run_inside" "$root" "$@"
    else # this machine does not let us go there
        "$program" "$@"
    fi
}
for library in $libraries; do
    install -D "$library" "$root$library"
done

output=$(run_there 3 -p -T) || fail "the installed program ended with status $?"
grep -q '^Product identification: KOV-CTRL, .*, simulated$' <<<"$output" ||
    fail "the installed program printed: $output"
verdict=$("$root/usr/bin/kov" report check "$source_folder/tests/protocol/expected_report.txt" || true)
grep -q 'slot3/steps  *The device type does not fit the slot' <<<"$verdict" ||
    fail "the installed companion printed: $verdict"
"$root/usr/bin/kov" log stats "$source_folder/tests/fuzz/seeds/recording/voltage_tuning" >"$root/statistics" ||
    fail "kov log stats failed"
"$root/usr/bin/kov" tap -o "$root/journal" -- "$program" 3 -p -T >"$root/tapped" || fail "kov tap failed"
"$root/usr/bin/kov" replay "$root/journal" -- "$program" 3 -p -T | cmp - "$root/tapped" ||
    fail "the replayed program printed something else"
for name in KOV-Controller kov-controller; do
    zcat "$root/usr/share/man/man1/$name.1.gz" | grep -q '^\.Sh EXIT STATUS' ||
        fail "no manual page $name"
done

# Whatever stands in the place of the maker's library, the simulated instrument does not answer for it.
maker=/usr/lib/kov-controller/maker
for name in libCOM-KOV-CTRL.so libCOM-KOV-CTRL.so.1; do
    echo 'no library' >"$root$maker/$name"
    output=$(run_there 3 -p -T)
    grep -q "^The device library '.*$maker/libCOM-KOV-CTRL.so' cannot be used: " <<<"$output" ||
        fail "with $name in $maker the installed program printed: $output"
    rm "$root$maker/$name"
done

for library in $libraries; do
    rm "$root$library"
done
dpkg_there --purge kov-controller
left=$(find "$root/usr" -type f -o -name '*[Kk][Oo][Vv]*' 2>/dev/null || true)
[ -z "$left" ] || fail "left behind: $left"
echo "The package can be installed, run and removed."
