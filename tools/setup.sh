# Shared by run.sh, test.sh and the scripts in tools/: installing the tools of a build, and building.

# What ends a script without a message of its own is told with its place.
set -E
trap 'echo "${BASH_SOURCE[0]##*/}, line $LINENO: this failed with status $?" >&2' ERR

source_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Each entry is a command or file, and the Debian package that has it.
build_tools=("g++ g++" "cmake cmake" "ninja ninja-build")
# The companion's libraries; the utility does not need them.
companion_tools=("/usr/include/CLI/CLI.hpp libcli11-dev"
                 "/usr/include/nlohmann/json.hpp nlohmann-json3-dev")
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

# Installs the packages of missing tools. If that is not possible, names them and returns false.
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

# Progress on standard error: on a terminal in one line that is rewritten and finally erased, elsewhere
# in lines that stay.
if [ -t 2 ] && [ "${TERM:-dumb}" != dumb ]; then
    tell() { printf '\r\033[K%s' "$*" >&2; }
    told() { printf '\r\033[K' >&2; }
else
    tell() { printf '%s\n' "$*" >&2; }
    told() { :; }
fi

# show_progress WHAT: turns the output of CMake and Ninja into progress; silent if there is nothing to
# do.
show_progress() {
    local line last=-1 share
    while IFS= read -r line; do
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]] && [ "${BASH_REMATCH[2]}" -gt 1 ]; then
            share=$((100 * BASH_REMATCH[1] / BASH_REMATCH[2]))
            # A log has a line for each fifth.
            if [ -t 2 ] || [ $((share / 20)) -gt $((last / 20)) ] || [ $last -lt 0 ]; then
                tell "Building $1: ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} ($share %)"
            fi
            last=$share
        elif [[ $line == "-- The CXX compiler"* || $line == *"Re-running CMake"* ]]; then
            tell "Configuring $1..."
        fi
    done
    told
}

# run_logged WHAT LOG COMMAND...: shows the progress of a build, and its whole output if it fails.
run_logged() {
    local what=$1 log=$2
    shift 2
    mkdir -p "$(dirname "$log")"
    if "$@" 2>&1 | tee "$log" | show_progress "$what"; then # pipefail is on in all scripts
        return 0
    fi
    cat "$log" >&2
    echo "Building $what failed; the output above is in $log" >&2
    return 1
}

configure_and_build() { # PRESET TARGET
    cd "$source_folder" || return
    if [ ! -e "build/$1/build.ninja" ] || [ CMakePresets.json -nt "build/$1/build.ninja" ]; then
        cmake --preset "$1" || return
    fi
    cmake --build --preset "$1" --target "$2"
}

# build PRESET TARGET: configures if necessary, and builds.
build() {
    run_logged "$1" "$source_folder/build/$1/build.log" configure_and_build "$@" || exit 1
}
