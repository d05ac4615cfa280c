#!/usr/bin/env python3
"""Writes the shipped rule files and mixer_map.json into Resources/Maps.

Every console family speaks its own MIDI implementation (docs/midi-implementation-*.md)
and every control protocol its own DAW-side layout; a rule file is the product of one
console and one protocol. Per-strip rules are spelled out one strip at a time, because
a local variable cannot pick the low nibble of a status byte such as "Bx".

Run from anywhere: python3 scripts/generate_maps.py
"""

import json
import os

MAPS_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Resources", "Maps")

MIXER_IN = "Mixer In"
MIXER_OUT = "Mixer Out"
TCP_PORT = "Kestrel Internal TCP MIDI"

# Keys outside the channel strips, in the order the rule files list them.
GLOBAL_KEYS = ["Rewind", "Fast forward", "Stop", "Play", "Record",
               "Bank left", "Bank right", "Channel left", "Channel right"]


def hx(byte):
    return "%02X" % byte


class TxConsole:
    """Control changes for levels, pan and mute/solo states; note on for keys."""
    family = "tx"
    key_notes = dict(zip(GLOBAL_KEYS, [0x60, 0x61, 0x62, 0x63, 0x64, 0x68, 0x69, 0x6A, 0x6B]))
    strip_key_base = {"select": 0x00, "rec": 0x20}
    strip_cc_base = {"fader": 0x00, "pan": 0x10, "touch": 0x20, "mute": 0x40, "solo": 0x50}
    master_cc = {"fader": 0x70, "touch": 0x71}

    def cc(self, control, strip):
        return self.master_cc[control] if strip is None else self.strip_cc_base[control] + strip

    def sends(self, control, strip):
        """Console-to-host messages: (pattern, value bindings, qualifier of the rule name)."""
        if control in ("select", "rec"):
            return [("9*n %s v" % hx(self.strip_key_base[control] + strip), {"key": "v"}, "")]
        if control in GLOBAL_KEYS:
            return [("9*n %s v" % hx(self.key_notes[control]), {"key": "v"}, "")]
        bindings = {"fader": {"msb": "v", "lsb": "v"}, "touch": {"state": "v"}, "pan": {"rel": "v"},
                    "mute": {"state": "v"}, "solo": {"state": "v"}}[control]
        return [("B*n %s v" % hx(self.cc(control, strip)), bindings, "")]

    def accepts(self, control, strip, values):
        """Host-to-console template for a value binding."""
        if control in ("select", "rec"):
            return "9*n %s %s" % (hx(self.strip_key_base[control] + strip), values["lamp"])
        if control in GLOBAL_KEYS:
            return "9*n %s %s" % (hx(self.key_notes[control]), values["lamp"])
        value = {"fader": "msb", "pan": "ring", "mute": "state", "solo": "state"}[control]
        return "B*n %s %s" % (hx(self.cc(control, strip)), values[value])


class KvrConsole:
    """NRPN for levels, pan and states (strip in the parameter LSB); note on/off for keys."""
    family = "kvr"
    key_notes = dict(zip(GLOBAL_KEYS, [0x70, 0x71, 0x72, 0x73, 0x74, 0x78, 0x79, 0x7A, 0x7B]))
    strip_key_base = {"select": 0x20, "rec": 0x30}
    parameter = {"fader": 0x00, "pan": 0x01, "mute": 0x02, "solo": 0x03, "touch": 0x04}
    MASTER = 0x7F

    def nrpn(self, control, strip):
        return "B*n 63 %s B*n 62 %s" % (hx(self.parameter[control]), hx(self.MASTER if strip is None else strip))

    def note(self, control, strip):
        return self.key_notes[control] if strip is None else self.strip_key_base[control] + strip

    def sends(self, control, strip):
        if control in ("select", "rec") or control in GLOBAL_KEYS:
            note = hx(self.note(control, strip))
            return [("9*n %s v" % note, {"key": "v"}, " (press)"), ("8*n %s v" % note, {"key": "00"}, " (release)")]
        select = self.nrpn(control, strip)
        if control == "fader":
            return [(select + " B*n 06 v B*n 26 l", {"msb": "v", "lsb": "l"}, "")]
        if control == "pan":
            # Data increment and decrement carry a step count of 1 to 15; the
            # count stands alone so that its low nibble can be placed.
            return [(select + " B*n 60 k", {"rel": "k"}, " (right)"), (select + " B*n 61 k", {"rel": "4k"}, " (left)")]
        return [(select + " B*n 06 v", {"state": "v"}, "")]

    def accepts(self, control, strip, values):
        if control in ("select", "rec") or control in GLOBAL_KEYS:
            return "9*n %s %s" % (hx(self.note(control, strip)), values["lamp"])
        select = self.nrpn(control, strip)
        if control == "fader":
            return select + " B*n 06 %s B*n 26 %s" % (values["msb"], values["lsb"])
        value = {"pan": "ring", "mute": "state", "solo": "state"}[control]
        return select + " B*n 06 %s" % values[value]


class MackieControl:
    name = "Mackie Control"
    file_suffix = "mackie_control"
    MAIN = "Tessera Mackie Control"
    EXTENDER = "Tessera Mackie Control XT"
    key_notes = dict(zip(GLOBAL_KEYS, [0x5B, 0x5C, 0x5D, 0x5E, 0x5F, 0x2E, 0x2F, 0x30, 0x31]))
    strip_note_base = {"rec": 0x00, "solo": 0x08, "mute": 0x10, "select": 0x18, "touch": 0x68}

    def __init__(self, strips):
        self.strips = strips

    def ports(self):
        return [self.MAIN] + ([self.EXTENDER] if self.strips > 8 else [])

    def place(self, strip):
        """The surface port and its strip (0-7) for a console strip; the master is on the main unit."""
        if strip is None:
            return self.MAIN, None
        return (self.MAIN if strip < 8 else self.EXTENDER), strip % 8

    def to_daw(self, control, strip, values):
        port, m = self.place(strip)
        if control == "fader":
            return port, "%s %s %s" % ("E8" if m is None else "E%X" % m, values["lsb"], values["msb"])
        if control == "touch":
            return port, "90 %s %s" % (hx(0x70 if m is None else 0x68 + m), values["state"])
        if control == "pan":
            return port, "B0 %s %s" % (hx(0x10 + m), values["rel"])
        if control in ("mute", "solo"):
            # The surface's keys toggle in the DAW: a console state change is
            # one press and release, and the DAW's lamp answer sets the state.
            note = hx(self.strip_note_base[control] + m)
            return port, "90 %s 7F 90 %s 00" % (note, note)
        note = self.key_notes[control] if m is None else self.strip_note_base[control] + m
        return port, "90 %s %s" % (hx(note), values["key"])

    def from_daw(self, control, strip):
        port, m = self.place(strip)
        if control == "fader":
            return [(port, "E8 l v" if m is None else "E%X l v" % m, {"msb": "v", "lsb": "l"})]
        if control == "pan":
            return [(port, "B0 %s v" % hx(0x30 + m), {"ring": "v"})]
        if control == "touch":
            return []
        note = self.key_notes[control] if m is None else self.strip_note_base[control] + m
        return [(port, "90 %s v" % hx(note), {"state": "v", "lamp": "v"})]

    # A DAW's profile for a Mackie Control Universal Pro (the default in many
    # DAWs) sends the device query and then ignores the surface until it
    # answers with its host connection query: serial number and challenge.
    # Hosts that check further send a host connection reply, which the surface
    # confirms with the serial as the host gave it. The answers go back to the
    # DAW on the port that asked; nothing reaches the console. The serial and
    # the challenge are fixed: no host checks them against anything.
    DEVICE_BYTE = {MAIN: 0x14, EXTENDER: 0x15}
    SERIAL = {MAIN: "TESS-MC", EXTENDER: "TESS-XT"}
    CHALLENGE = "01 02 03 04"
    UNIT_NAMES = {MAIN: "main unit", EXTENDER: "extender"}

    def handshake(self):
        rules = []
        for port in self.ports():
            header = "F0 00 00 66 %s" % hx(self.DEVICE_BYTE[port])
            serial = " ".join(hx(ord(character)) for character in self.SERIAL[port])
            unit = self.UNIT_NAMES[port]
            rules.append(rule("Device query to the %s" % unit, header + " 00 F7", [port],
                              "%s 01 %s %s F7" % (header, serial, self.CHALLENGE), [port]))
            # Seven serial bytes, then four response bytes; each byte needs a
            # variable of its own, and only the serial is sent back.
            rules.append(rule("Host connection reply to the %s" % unit, header + " 02 g h i j k l m o p q r F7", [port],
                              header + " 03 g h i j k l m F7", [port]))
        return rules


class GenericCC:
    """Control changes a DAW's MIDI learn can take: strip k on MIDI channel k, the rest on channel 1."""
    name = "Generic CC"
    file_suffix = "generic_cc"
    PORT = "Tessera Generic CC"
    strip_cc = {"fader": 0x07, "pan": 0x0A, "mute": 0x14, "solo": 0x15, "select": 0x16, "rec": 0x17}
    MASTER_FADER_CC = 0x0E
    key_cc = dict(zip(GLOBAL_KEYS, range(0x66, 0x6F)))

    def __init__(self, strips):
        self.strips = strips

    def ports(self):
        return [self.PORT]

    def address(self, control, strip):
        if strip is None:
            return "B0 %s" % hx(self.MASTER_FADER_CC if control == "fader" else self.key_cc[control])
        return "B%X %s" % (strip, hx(self.strip_cc[control]))

    def to_daw(self, control, strip, values):
        if control == "touch":
            return None
        value = {"fader": "msb", "pan": "rel", "mute": "state", "solo": "state"}.get(control, "key")
        return self.PORT, "%s %s" % (self.address(control, strip), values[value])

    def handshake(self):
        return []

    def from_daw(self, control, strip):
        # A DAW sends its pan as an absolute value, which the console's
        # position display cannot show; pan is therefore one-way here.
        if control in ("touch", "pan"):
            return []
        # Seven bits stand for both halves of a fourteen-bit level.
        return [(self.PORT, "%s v" % self.address(control, strip),
                 {"msb": "v", "lsb": "v", "state": "v", "lamp": "v"})]


STRIP_CONTROLS = ["fader", "touch", "pan", "mute", "solo", "select", "rec"]
CONTROL_NAMES = {"fader": "fader", "touch": "fader touch", "pan": "pan", "mute": "mute", "solo": "solo",
                 "select": "select", "rec": "rec"}
REPLY_NAMES = {"fader": "fader", "pan": "pan display", "mute": "mute lamp", "solo": "solo lamp",
               "select": "select lamp", "rec": "rec lamp"}


def rule(name, incoming, incoming_ports, outgoing, outgoing_ports):
    return {"name": name,
            "incoming": {"midi": incoming, "ports": incoming_ports},
            "outgoing": {"midi": outgoing, "ports": outgoing_ports}}


def rules_for(console, protocol, label, control, strip):
    """Both directions of one control: console to DAW, then DAW to console."""
    rules = []
    for pattern, values, qualifier in console.sends(control, strip):
        target = protocol.to_daw(control, strip, values)
        if target:
            rules.append(rule("%s %s to DAW%s" % (label, CONTROL_NAMES.get(control, "key"), qualifier),
                              pattern, [MIXER_IN], target[1], [target[0]]))
    for port, pattern, values in protocol.from_daw(control, strip):
        rules.append(rule("%s %s from DAW" % (label, REPLY_NAMES.get(control, "lamp")), pattern, [port],
                          console.accepts(control, strip, values), [MIXER_OUT]))
    return rules


def rule_file(mixer, console, strips, protocol):
    rules = []
    for strip in range(strips):
        for control in STRIP_CONTROLS:
            rules += rules_for(console, protocol, "Strip %d" % (strip + 1), control, strip)
    for control in ("fader", "touch"):
        rules += rules_for(console, protocol, "Master", control, None)
    for key in GLOBAL_KEYS:
        rules += rules_for(console, protocol, key, key, None)
    rules += protocol.handshake()
    return {
        "description": "%s console and a DAW speaking %s" % (mixer, protocol.name),
        "virtual_ports": protocol.ports(),
        "port_aliases": [{"type": "input", "name": TCP_PORT, "alias": MIXER_IN},
                         {"type": "output", "name": TCP_PORT, "alias": MIXER_OUT}],
        "variables": [{"name": "MIDI Channel", "variable_name": "n", "default": 0,
                       "values": [{"name": str(channel + 1), "value": channel} for channel in range(16)]}],
        "rules": rules,
    }


def write_json(path, document):
    """Indented JSON with each rule and each variable value on one line, so a reader sees one rule per line."""
    lines = ["{"]
    keys = list(document)
    for index, key in enumerate(keys):
        value = document[key]
        comma = "," if index + 1 < len(keys) else ""
        if isinstance(value, list) and value and isinstance(value[0], dict):
            lines.append("    %s: [" % json.dumps(key))
            for position, element in enumerate(value):
                more = "," if position + 1 < len(value) else ""
                lines.append("        %s%s" % (json.dumps(element), more))
            lines.append("    ]%s" % comma)
        else:
            lines.append("    %s: %s%s" % (json.dumps(key), json.dumps(value), comma))
    lines.append("}")
    with open(path, "w", encoding="utf-8") as out:
        out.write("\n".join(lines) + "\n")


MIXERS = [("Tx-16", "tx16", TxConsole(), 16), ("Tx-8", "tx8", TxConsole(), 8), ("Unison KVR-12", "kvr12", KvrConsole(), 12)]
PROTOCOLS = [MackieControl, GenericCC]


def main():
    mixer_map = []
    for mixer, stem, console, strips in MIXERS:
        daws = []
        for protocol_class in PROTOCOLS:
            protocol = protocol_class(strips)
            file_name = "%s_%s.json" % (stem, protocol.file_suffix)
            write_json(os.path.join(MAPS_DIR, file_name), rule_file(mixer, console, strips, protocol))
            daws.append({"name": protocol.name, "file": file_name})
        mixer_map.append({"name": mixer, "daws": daws})
    with open(os.path.join(MAPS_DIR, "mixer_map.json"), "w", encoding="utf-8") as out:
        json.dump({"mixers": mixer_map}, out, indent=4)
        out.write("\n")


if __name__ == "__main__":
    main()
