# What run.sh, test.sh and the scripts in tools/ share: the tools that a build needs, and the build
# itself.

source_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# A tool or file, and the Debian package that brings it.
build_tools=("g++ g++" "cmake cmake" "ninja ninja-build")
test_tools=("/usr/include/gtest/gtest.h libgtest-dev" "/usr/include/gmock/gmock.h libgmock-dev"
            "/usr/include/vterm.h libvterm-dev" "pkg-config pkg-config")
package_tools=("dpkg-shlibdeps dpkg-dev" "fakeroot fakeroot" "file file")

windows_tools=("x86_64-w64-mingw32-g++-posix g++-mingw-w64-x86-64-posix"
               "/usr/src/googletest/CMakeLists.txt googletest")
wine_tools=("/usr/lib/wine/wine64 wine64")

is_there() {
    case $1 in
    /*) [ -e "$1" ] ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

# Installs the packages of the tools that are missing. False when that is not possible; says then
# which they are.
install_tools() {
    local tool packages=()
    for tool in "$@"; do
        is_there "${tool% *}" || packages+=("${tool#* }")
    done
    [ ${#packages[@]} -gt 0 ] || return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
    fi
    if ! command -v apt-get >/dev/null 2>&1 ||
        { [ ${#as_root[@]} -gt 0 ] && ! command -v sudo >/dev/null 2>&1; }; then
        echo "Please install these packages first: ${packages[*]}" >&2
        return 1
    fi
    echo "Installing ${packages[*]}..." >&2
    { "${as_root[@]}" apt-get update -qq &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -qq --no-install-recommends "${packages[@]}"; } >&2 || {
        echo "They could not be installed. Please install them first: ${packages[*]}" >&2
        return 1
    }
}

need_tools() {
    install_tools "$@" || exit 1
}

# build PRESET TARGET: configures where needed and builds; shows what was printed only when it fails.
build() {
    local folder="$source_folder/build/$1" log
    mkdir -p "$folder"
    log="$folder/build.log"
    (
        cd "$source_folder" || exit
        if [ ! -e "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
            cmake --preset "$1" || exit
        fi
        cmake --build --preset "$1" --target "$2"
    ) >"$log" 2>&1 || {
        cat "$log" >&2
        echo "The build failed; the above is in $log" >&2
        exit 1
    }
}
