#!/usr/bin/env bash
# Takes the preferences window's pictures for the README and the manual: one in
# MIDI Ports mode (as a fresh installation shows it) and one in TCP/IP mode.
# Needs ImageMagick's import besides what the checks here need.
#   screenshots.sh PATH/TO/tessera OUTPUT_FOLDER
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network
output=$2
mkdir -p "$output"

x11_start_in_tray "$1"
x11_tray_menu "$X11_ICON" s
window=$(x11_wait_toplevel Tessera) || x11_fail "\"&Show Preferences\" did not show the window"
sleep 1
import -window "$window" "$output/preferences-midi-ports.png"

# The mode buttons are one stop in the focus chain, after the three combo
# boxes; the arrow key moves the choice from MIDI Ports to TCP/IP.
xdotool windowfocus --sync "$window" key Tab Tab Tab Right
sleep 1
import -window "$window" "$output/preferences-tcpip.png"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
