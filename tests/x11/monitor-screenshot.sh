#!/usr/bin/env bash
# Takes the MIDI monitor's picture for the manual, with the traffic of a small
# soundcheck on a Unison KVR-12: a fader move and a select button from the
# mixer, a mute lamp and a fader from the DAW, and two messages no rule wants. It needs
# the ALSA sequencer with snd-virmidi (the mixer's ports and the DAW are
# virtual raw MIDI devices), so it runs in the ALSA test machine, which has no
# network to the outside; ImageMagick's import takes the picture.
#   scripts/alsa-vm.sh -- bash tests/x11/monitor-screenshot.sh PATH/TO/tessera OUTPUT_FOLDER
source "$(dirname "$0")/x11-session.sh"
x11_require_private_network
output=$2
mkdir -p "$output"

MIXER_IN="Virtual Raw MIDI 0-0:VirMIDI 0-0"
MIXER_OUT="Virtual Raw MIDI 0-1:VirMIDI 0-1"
x11_start_display
mkdir -p "$XDG_CONFIG_HOME/Kestrel"
cat >"$XDG_CONFIG_HOME/Kestrel/Tessera.conf" <<EOF
[General]
MixerType=Unison KVR-12
DAWType=Generic CC

[Unison%20KVR-12]
Mode=MIDI
MIDIChannel=0
MIDI\\InputPort=$MIXER_IN
MIDI\\OutputPort=$MIXER_OUT
EOF
x11_start_tray
x11_start_tessera "$1"
X11_ICON=$(x11_wait_tray_icon) || x11_fail "the tray icon was not embedded"

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
sleep 1
import -window "$window" "$output/midi-monitor.png"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
