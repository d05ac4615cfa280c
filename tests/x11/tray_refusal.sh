#!/usr/bin/env bash
# Without a system tray, tessera shows its "Systray" message once, and when the
# message is dismissed it ends with status 1 without touching the settings.
#   tray_refusal.sh PATH/TO/tessera
source "$(dirname "$0")/x11-session.sh"

x11_start_display
x11_start_tessera "$1"

box=$(x11_wait_toplevel Systray) || x11_fail "no \"Systray\" message box"
[[ $(x11_toplevels | wc -l) == 1 ]] || x11_fail "more than the message box is shown"
# The box's only button is its default one. Without a window manager nothing
# hands out the focus, so the check gives it to the box itself.
xdotool windowfocus --sync "$box" key Return
x11_expect_exit 1
[[ -z $(ls -A "$XDG_CONFIG_HOME") ]] || x11_fail "settings were written: $(find "$XDG_CONFIG_HOME" -type f)"
echo "PASS: no tray, the message was shown and dismissed, exit status 1"
