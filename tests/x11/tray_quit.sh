#!/usr/bin/env bash
# With a tray host, tessera starts hidden in the tray; closing its preferences
# window leaves it running, and the tray menu's "&Quit" ends it with status 0.
# Built without ALSA, it says so once.
#   tray_quit.sh PATH/TO/tessera
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network

x11_start_in_tray "$1"
sleep 1
[[ -z $(x11_toplevels) ]] || x11_fail "a window is shown at start: $(xdotool getwindowname "$(x11_toplevels | head -n 1)")"

x11_tray_menu "$X11_ICON" s
window=$(x11_wait_toplevel Tessera) || x11_fail "\"&Show Preferences\" did not show the window"
python3 "$(dirname "$0")/close-window.py" "$window"
x11_wait_closed "$window" || x11_fail "the preferences window did not close"
kill -0 "$X11_TESSERA" 2>/dev/null || x11_fail "closing the preferences window ended the program"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
if [[ -n ${TESSERA_BUILT_WITHOUT_ALSA:-} ]]; then
    [[ $(grep -c '^Built without ALSA: ' "$X11_WORK/tessera.log") == 1 ]] ||
        x11_fail "built without ALSA, it did not say so once: $(cat "$X11_WORK/tessera.log")"
fi
echo "PASS: started hidden, survived closing its window, quit from the tray with status 0"
