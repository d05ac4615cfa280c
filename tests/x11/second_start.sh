#!/usr/bin/env bash
# One Tessera per session. A copy kept connected to a mixer (mixer-sim beside
# tessera, on a loopback address) is started again: the second start ends
# with status 0 within two seconds, the first shows its preferences window,
# and the mixer sees no second connection, also when the desktop adds Qt's
# -session option. --help and --version answer with no display and leave the
# running copy alone; any other argument is a usage error.
#   second_start.sh PATH/TO/tessera
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network
tessera=$1
MIXER=127.0.0.51

x11_start_display
mkdir -p "$XDG_CONFIG_HOME/Kestrel"
cat >"$XDG_CONFIG_HOME/Kestrel/Tessera.conf" <<CONF
[General]
MixerType=Tx-16

[Tx-16]
Mode=TCP
TryConnect=true
Connection\\DefaultUnitName=Custom
Connection\\DefaultUnitIP=$MIXER
CONF
# The mixer reads its input until it ends: a pipe held open here.
mkfifo "$X11_WORK/mixer.in"
exec 3<>"$X11_WORK/mixer.in"
"$(dirname "$tessera")/mixer-sim" --address "$MIXER" >"$X11_WORK/mixer.log" 2>&1 <&3 &
X11_PIDS+=($!)
x11_start_tray
x11_start_tessera "$tessera"
X11_ICON=$(x11_wait_tray_icon) || x11_fail "the tray icon was not embedded"
x11_wait_until grep -q '^connected ' "$X11_WORK/mixer.log" || x11_fail "Tessera did not connect to the mixer"

for argument in --help --version; do
    output=$(env -u DISPLAY "$tessera" "$argument") || x11_fail "tessera $argument ended with status $?"
    [[ $output == *Tessera* ]] || x11_fail "tessera $argument printed: $output"
done
env -u DISPLAY "$tessera" --connect 2>/dev/null
[[ $? == 2 ]] || x11_fail "an unknown argument was not a usage error"
[[ -z $(x11_toplevels) ]] || x11_fail "--help or --version showed the running copy's window"

started=$(date +%s%N)
timeout 5 "$tessera" >"$X11_WORK/second.log" 2>&1
status=$?
elapsed_ms=$((($(date +%s%N) - started) / 1000000))
[[ $status == 0 ]] || x11_fail "the second start ended with status $status: $(cat "$X11_WORK/second.log")"
((elapsed_ms < 2000)) || x11_fail "the second start took $elapsed_ms ms"
x11_wait_toplevel Tessera >/dev/null || x11_fail "the running copy did not show its preferences window"
sleep 2
[[ $(grep -c '^connected ' "$X11_WORK/mixer.log") == 1 ]] ||
    x11_fail "the mixer saw another connection: $(cat "$X11_WORK/mixer.log")"
kill -0 "$X11_TESSERA" || x11_fail "the first copy is gone"

# A desktop that restores its session starts us with Qt's own option.
timeout 5 "$tessera" -session 10a1b2c3d4 >"$X11_WORK/restored.log" 2>&1 ||
    x11_fail "a start with -session ended with status $?: $(cat "$X11_WORK/restored.log")"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
echo "PASS: the second start ended with status 0 after $elapsed_ms ms and showed the running copy's window; one connection"
