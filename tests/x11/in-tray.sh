#!/usr/bin/env bash
# Runs a command on a private X server with a tray host, as a desktop with a
# system tray: for test programs that drive tessera's window and tray icon in
# their own process and the pointer with xdotool. Ends with the command's
# status.
#   in-tray.sh COMMAND [ARGUMENTS...]
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network

x11_start_display
x11_start_tray
"$@"
