# Helpers for driving the real tessera executable on a private X server.
# Sourced by the checks in this folder, not run. Each check gets its own Xvfb
# display, an empty settings store and, if it asks for one, a tray host; all
# of it is torn down when the check ends, however it ends.

set -uo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

X11_TIMEOUT=${X11_TIMEOUT:-20}
X11_WORK=$(mktemp -d)
X11_PIDS=()

x11_cleanup() {
    local pid
    for pid in "${X11_PIDS[@]}"; do
        kill "$pid" 2>/dev/null
    done
    wait 2>/dev/null
    rm -rf "$X11_WORK"
}
trap x11_cleanup EXIT

# Tessera searches the network for mixers as soon as it runs in a tray: a
# check that lets it get that far calls this first.
x11_require_private_network() {
    tessera_require_private_network "$(basename "$0")"
}

x11_fail() {
    echo "FAIL: $*" >&2
    exit 1
}

# The program under test talks to this display only, of X11_SCREEN's size
# (1024x768x24 unless set) and white like a desktop; a fresh configuration
# folder keeps the user's own settings out of the check and the check's out of
# the user's. Leak checking is off for the program: a sanitized build would
# otherwise fail at exit on what the X and font libraries keep until then.
x11_start_display() {
    local displayfd=$X11_WORK/display
    Xvfb -displayfd 3 -screen 0 "${X11_SCREEN:-1024x768x24}" -wr -nolisten tcp 3>"$displayfd" 2>"$X11_WORK/xvfb.log" &
    X11_PIDS+=($!)
    local waited=0
    until [[ -s $displayfd ]]; do
        ((waited++ < X11_TIMEOUT * 10)) || x11_fail "Xvfb did not start: $(cat "$X11_WORK/xvfb.log")"
        sleep 0.1
    done
    export DISPLAY=:$(head -n 1 "$displayfd")
    export QT_QPA_PLATFORM=xcb
    export XDG_CONFIG_HOME=$X11_WORK/config
    export XDG_RUNTIME_DIR=$X11_WORK/runtime
    export ASAN_OPTIONS=detect_leaks=0
    mkdir -p "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR"
    chmod 700 "$XDG_RUNTIME_DIR"
}

# Prints the id of the first window matching the xdotool search arguments,
# waiting for it to appear.
x11_wait_window() {
    timeout "$X11_TIMEOUT" xdotool search --sync --limit 1 "$@" 2>/dev/null | head -n 1
}

x11_start_tray() {
    trayer --edge bottom --align right --widthtype pixel --width 120 --height 24 \
        >"$X11_WORK/trayer.log" 2>&1 &
    X11_PIDS+=($!)
    X11_TRAY=$(x11_wait_window --onlyvisible --class trayer)
    [[ -n $X11_TRAY ]] || x11_fail "trayer did not start: $(cat "$X11_WORK/trayer.log")"
}

# Starts tessera in the background; its standard output goes to
# $X11_WORK/tessera.log, its pid to X11_TESSERA.
x11_start_tessera() {
    "$1" >"$X11_WORK/tessera.log" 2>&1 &
    X11_TESSERA=$!
    X11_PIDS+=($X11_TESSERA)
}

# Waits for tessera to end and checks its exit status.
x11_expect_exit() {
    local expected=$1 waited=0 status
    while kill -0 "$X11_TESSERA" 2>/dev/null; do
        ((waited++ < X11_TIMEOUT * 10)) || x11_fail "tessera still runs; its output: $(cat "$X11_WORK/tessera.log")"
        sleep 0.1
    done
    wait "$X11_TESSERA"
    status=$?
    [[ $status == "$expected" ]] ||
        x11_fail "tessera ended with status $status, expected $expected; its output: $(cat "$X11_WORK/tessera.log")"
}

# Whether a window hangs directly below the root window: tessera's preferences
# window, menus and message boxes do; its tray icon does not, because the tray
# host embeds it in a window of its own.
x11_is_toplevel() {
    xwininfo -children -id "$1" | grep -q "Parent window id: $(xwininfo -root | awk '/Window id:/ {print $4}')"
}

# Lists tessera's visible top-level windows: with "menus", only its open
# menus (they bypass the window manager: override-redirect), otherwise only
# its other windows.
x11_toplevels() {
    local want=${1:-windows} window kind
    for window in $(xdotool search --onlyvisible --class Tessera 2>/dev/null); do
        x11_is_toplevel "$window" || continue
        kind=windows
        xwininfo -id "$window" | grep -q 'Override Redirect State: yes' && kind=menus
        [[ $kind == "$want" ]] && echo "$window"
    done
}

# Waits until tessera shows a top-level window with the given title and prints
# its id.
x11_wait_toplevel() {
    local title=$1 waited=0 window
    while ((waited++ < X11_TIMEOUT * 10)); do
        for window in $(x11_toplevels); do
            [[ $(xdotool getwindowname "$window") == "$title" ]] && echo "$window" && return 0
        done
        sleep 0.1
    done
    return 1
}

# Waits until the command given succeeds; fails after the timeout.
x11_wait_until() {
    local waited=0
    until "$@"; do
        ((waited++ < X11_TIMEOUT * 10)) || return 1
        sleep 0.1
    done
}

# Waits until a window is no longer shown.
x11_wait_closed() {
    local waited=0
    while x11_toplevels | grep -qx "$1"; do
        ((waited++ < X11_TIMEOUT * 10)) || return 1
        sleep 0.1
    done
}

# Prints the id of tessera's tray icon once the tray host has embedded it.
x11_wait_tray_icon() {
    local waited=0 window
    while ((waited++ < X11_TIMEOUT * 10)); do
        for window in $(xdotool search --onlyvisible --class Tessera 2>/dev/null); do
            x11_is_toplevel "$window" || { echo "$window"; return 0; }
        done
        sleep 0.1
    done
    return 1
}

# Starts the program on a fresh display with a tray host and waits for its
# icon in the tray; the icon's window id goes to X11_ICON.
x11_start_in_tray() {
    x11_start_display
    x11_start_tray
    x11_start_tessera "$1"
    X11_ICON=$(x11_wait_tray_icon) || x11_fail "the tray icon was not embedded"
}

# Opens the tray icon's context menu and picks an entry by its mnemonic
# ("s" for "&Show Preferences", "h" for "&Help", "q" for "&Quit"), or by
# arrow keys for an entry without one ("Up Up Up Up Return": the fourth from
# the bottom). The pointer leaves the menu first, so that the arrows start
# from no highlighted entry. A menu that is still closing holds the pointer
# and would swallow the click, so the click waits for it to be gone; and while
# the tray host is still placing a new icon a click can land beside it, so an
# unanswered click is repeated, as a user would. A tray host that announces
# itself after the icon was made has Qt make the icon anew: the click goes to
# the icon that is there then.
x11_tray_menu() {
    local icon=$1 waited=0 attempt
    shift
    while [[ -n $(x11_toplevels menus) ]]; do
        ((waited++ < X11_TIMEOUT * 10)) || x11_fail "a menu stays open"
        sleep 0.1
    done
    for ((attempt = 0; attempt < X11_TIMEOUT / 2; attempt++)); do
        xwininfo -id "$icon" >/dev/null 2>&1 || icon=$(x11_wait_tray_icon) || x11_fail "the tray icon is gone"
        xdotool mousemove --window "$icon" 4 4 click 3
        for ((waited = 0; waited < 30; waited++)); do
            if [[ -n $(x11_toplevels menus) ]]; then
                xdotool mousemove --sync 0 0 key "$@"
                return
            fi
            sleep 0.1
        done
    done
    x11_fail "the tray menu did not open"
}
