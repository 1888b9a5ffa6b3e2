# Shared by test scripts that have what was written read by the programs for which it is meant, as far
# as they are installed: to be sourced. They work in a folder of their own, which is removed at the end,
# and end with `exit "$failed"`.

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit
unset LC_ALL LC_CTYPE NO_COLOR CLICOLOR_FORCE
export LANG=C.UTF-8 TZ=UTC
failed=0

fail() {
    echo "$*" >&2
    failed=1
}

# is_there PROGRAM; says so if it is not.
is_there() {
    command -v "$1" >/dev/null && return
    echo "not installed, left out: $1"
    return 1
}

browser=$(command -v chromium || command -v chromium-browser || true)
has_browser() {
    [ -n "$browser" ] && return
    echo "not installed, left out: chromium"
    return 1
}
# in_browser OPTION... PAGE: what it logs is in browser.log, what it asked of the network in net.json.
in_browser() {
    rm -f net.json
    timeout 60 "$browser" --headless --no-sandbox --disable-gpu --user-data-dir="$folder/profile" \
        --enable-logging=stderr --log-net-log="$folder/net.json" "$@" 2>browser.log
}
# expect_silent PAGE, which was opened last: it says and asks nothing.
expect_silent() {
    ! grep CONSOLE browser.log || fail "$1 has something to say on the browser's console"
    [ -s net.json ] || fail "$1 could not be opened: $(cat browser.log)"
    ! grep -o '"url":"https\{0,1\}://[^"]*"' net.json | grep -v 'google\|gvt' ||
        fail "$1 asks for something outside"
}
