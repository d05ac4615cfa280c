#!/usr/bin/env bash
# Takes the pictures for the README and the manual: the preferences window in
# the MIDI Ports mode with the system ports of a small MIDI interface and in
# the TCP/IP mode connected to a mixer (mixer-sim, beside tessera), the tray
# icon's tooltip, the warning sign of a port that is unplugged with its
# tooltip, and the MIDI monitor with the traffic of a small soundcheck. The
# mixer's ports and the DAW are virtual raw MIDI devices (snd-virmidi), so it
# runs in the ALSA test machine, which has no network to the outside;
# ImageMagick's import takes the pictures.
#   scripts/alsa-vm.sh -- bash tests/x11/screenshots.sh PATH/TO/tessera OUTPUT_FOLDER
# A screen wide enough for the MIDI monitor with long port names.
X11_SCREEN=1280x800x24
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network
# The machine it runs in has no way out to install it from.
command -v import >/dev/null || { echo "screenshots.sh: ImageMagick's import is missing; install imagemagick" >&2; exit 1; }
tessera=$1
output=$2
mkdir -p "$output"

MIXER_IN="Virtual Raw MIDI 0-0:VirMIDI 0-0"
MIXER_OUT="Virtual Raw MIDI 0-1:VirMIDI 0-1"
UNPLUGGED="Virtual Raw MIDI 1-0:VirMIDI 1-0"

# Starts tessera with the settings given as ini text on standard input and
# waits for its tray icon.
start_with_settings() {
    rm -rf "$XDG_CONFIG_HOME/Kestrel"
    mkdir -p "$XDG_CONFIG_HOME/Kestrel"
    cat >"$XDG_CONFIG_HOME/Kestrel/Tessera.conf"
    x11_start_tessera "$tessera"
    X11_ICON=$(x11_wait_tray_icon) || x11_fail "the tray icon was not embedded"
}

# Shows the preferences window; its id goes to X11_WINDOW.
show_preferences() {
    x11_tray_menu "$X11_ICON" s
    X11_WINDOW=$(x11_wait_toplevel Tessera) || x11_fail "\"&Show Preferences\" did not show the window"
    sleep 1
}

quit() {
    x11_tray_menu "$X11_ICON" q
    x11_expect_exit 0
}

# Rests the pointer on a window at x y until its tooltip shows; the last
# step of a pixel is what a hand's move ends with.
hover() {
    xdotool mousemove --sync --window "$1" "$2" "$3"
    sleep 0.2
    xdotool mousemove_relative --sync 1 0
    sleep 1.5
}

# A Tx-16 in the MIDI Ports mode with that input port; more of its settings
# may follow.
tx16_settings() {
    cat <<SETTINGS
[General]
MixerType=Tx-16
DAWType=Mackie Control

[Tx-16]
Mode=MIDI
MIDIChannel=1
MIDI\\InputPort=$1
MIDI\\OutputPort=$MIXER_OUT
SETTINGS
}

x11_start_display
x11_start_tray

# A Tx-16 with a MIDI interface of two ports, and a Tx-16 on the network
# that Stay Connected connects to as soon as it is found. mixer-sim ends
# with its input, which stays open as long as this script runs.
mkfifo "$X11_WORK/mixer-sim.input"
"$(dirname "$tessera")/mixer-sim" --find "TX Find" --name "Stage Tx-16" --address 127.0.0.1 \
    <"$X11_WORK/mixer-sim.input" >"$X11_WORK/mixer-sim.log" 2>&1 &
X11_PIDS+=($!)
exec 6>"$X11_WORK/mixer-sim.input"
# Through a file: the test machine has no /dev/fd for a process substitution.
{
    tx16_settings "$MIXER_IN"
    printf '%s\n' TryConnect=true 'Connection\DefaultUnitName=Stage Tx-16' 'Connection\DefaultUnitIP=127.0.0.1'
} >"$X11_WORK/settings"
start_with_settings <"$X11_WORK/settings"
show_preferences
import -window "$X11_WINDOW" "$output/preferences-midi-ports.png"
# The mode buttons are one stop in the focus chain, after the three combo
# boxes; the arrow key moves the choice from MIDI Ports to TCP/IP.
xdotool windowfocus --sync "$X11_WINDOW" key Tab Tab Tab Right
x11_wait_until grep -q '^connected ' "$X11_WORK/mixer-sim.log" ||
    x11_fail "Stay Connected did not connect: $(cat "$X11_WORK/mixer-sim.log" "$X11_WORK/tessera.log")"
sleep 1
import -window "$X11_WINDOW" "$output/preferences-tcpip.png"
# The tray lies in the screen's bottom right corner, its tooltip above it.
hover "$X11_ICON" 8 8
IFS=x read -r screen_width screen_height _ <<<"$X11_SCREEN"
import -window root -crop "560x90+$((screen_width - 560))+$((screen_height - 90))" +repage "$output/tray-tooltip.png"
quit

# The port the input was last set to is unplugged.
tx16_settings "$UNPLUGGED" >"$X11_WORK/settings"
start_with_settings <"$X11_WORK/settings"
show_preferences
eval "$(xdotool getwindowgeometry --shell "$X11_WINDOW")"
# The sign stands left of the two lamps at the status bar's right end; the
# picture takes in the tooltip beside and below the window.
hover "$X11_WINDOW" $((WIDTH - 70)) $((HEIGHT - 10))
import -window root -crop "$((WIDTH + 600))x$((HEIGHT + 40))+$X+$Y" +repage "$output/preferences-warning.png"
quit

# A small soundcheck on a Unison KVR-12: a fader move and a select button
# from the mixer, a mute lamp and a fader from the DAW, two messages no rule
# wants, and Active Sensing, which the monitor hides.
start_with_settings <<SETTINGS
[General]
MixerType=Unison KVR-12
DAWType=Generic CC

[Unison%20KVR-12]
Mode=MIDI
MIDIChannel=0
MIDI\\InputPort=$MIXER_IN
MIDI\\OutputPort=$MIXER_OUT
SETTINGS
# "MIDI Monitor" has no mnemonic: the first Down selects the entry above it.
x11_tray_menu "$X11_ICON" Down
xdotool key Down Return
window=$(x11_wait_toplevel "MIDI Monitor") || x11_fail "\"MIDI Monitor\" did not show its window"

# The DAW plays into Tessera's port from the third virtual device; aconnect
# wants the port's number.
daw_port=$(aconnect -o | awk '/^client / { tessera = ($3 == "\047Tessera\047") }
    tessera && /Tessera Generic CC/ { print $1; exit }')
aconnect "Virtual Raw MIDI 0-2:0" "Tessera:$daw_port" || x11_fail "cannot reach Tessera's DAW port"
mixer() { amidi -p hw:0,0 -S "$1"; sleep 0.3; }
daw() { amidi -p hw:0,2 -S "$1"; sleep 0.3; }
mixer "B0 63 00 B0 62 00 B0 06 50 B0 26 00"
mixer "90 20 7F"
mixer "80 20 00"
mixer "FE"
daw "B0 14 7F"
daw "B0 07 64"
mixer "C0 03"
mixer "FE"
sleep 1
import -window "$window" "$output/midi-monitor.png"
quit
