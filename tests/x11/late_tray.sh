#!/usr/bin/env bash
# A tray that appears after Tessera, as at login: Tessera waits, showing
# nothing, and when a tray host starts three seconds later its icon goes
# there, with no message, and it quits from its menu with status 0.
#   late_tray.sh PATH/TO/tessera
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network

x11_start_display
x11_start_tessera "$1"
sleep 3
kill -0 "$X11_TESSERA" 2>/dev/null || x11_fail "tessera ended without a tray: $(cat "$X11_WORK/tessera.log")"
[[ -z $(x11_toplevels) ]] || x11_fail "a window is shown while there is no tray: $(xdotool getwindowname "$(x11_toplevels | head -n 1)")"

x11_start_tray
X11_ICON=$(x11_wait_tray_icon) || x11_fail "the tray icon was not embedded"
sleep 1
[[ -z $(x11_toplevels) ]] || x11_fail "a window is shown: $(xdotool getwindowname "$(x11_toplevels | head -n 1)")"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
echo "PASS: waited for the tray, then ran in it with no message and quit with status 0"
