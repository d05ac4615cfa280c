#!/usr/bin/env bash
# Without a system tray, tessera waits 30 seconds for one, then shows its
# "Systray" message once, and when the message is dismissed it ends with
# status 1 without touching the settings.
#   tray_refusal.sh PATH/TO/tessera
source "$(dirname "$0")/x11-session.sh"

x11_start_display
x11_start_tessera "$1"
started=$SECONDS

box=$(X11_TIMEOUT=45 x11_wait_toplevel Systray) || x11_fail "no \"Systray\" message box: $(cat "$X11_WORK/tessera.log")"
((SECONDS - started >= 29)) || x11_fail "the message came after $((SECONDS - started)) s, not after 30 s"
[[ $(x11_toplevels | wc -l) == 1 ]] || x11_fail "more than the message box is shown"
# The box's only button is its default one. Without a window manager nothing
# hands out the focus, so the check gives it to the box itself.
xdotool windowfocus --sync "$box" key Return
x11_expect_exit 1
[[ -z $(ls -A "$XDG_CONFIG_HOME") ]] || x11_fail "settings were written: $(find "$XDG_CONFIG_HOME" -type f)"
echo "PASS: no tray, the message was shown after $((SECONDS - started)) s and dismissed, exit status 1"
