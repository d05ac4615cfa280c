#include "Common/MIDI/MIDIControlMemory.h"

#include <algorithm>

namespace
{
// Where each kind of plain control lies in the table: a channel's notes,
// its controllers, then pitch bend and pressure, one per channel.
const int NOTES = 0;
const int CONTROLLERS = 16 * 128;
const int PITCH_BENDS = 2 * 16 * 128;
const int PRESSURES = PITCH_BENDS + 16;

const unsigned char DATA_ENTRY_MSB = 6;
const unsigned char DATA_ENTRY_LSB = 38;
const unsigned char DATA_INCREMENT = 96;
const unsigned char DATA_DECREMENT = 97;
const unsigned char NRPN_LSB = 98;
const unsigned char NRPN_MSB = 99;
const unsigned char RPN_LSB = 100;
const unsigned char RPN_MSB = 101;
const int NRPN = 0;
const int RPN = 1;
// Selects no parameter at all: values that follow it change nothing.
const int NULL_PARAMETER = 0x3FFF;

// A parameter's key keeps clear of the table's indexes.
const quint32 PARAMETER_KEY = 0x80000000u;

quint32 ParameterKey(int kind, int channel, int number)
{
    return PARAMETER_KEY | static_cast<quint32>(kind << 18 | channel << 14 | number);
}
}

cMIDIControlMemory::cMIDIControlMemory() : plainControls(PLAIN_CONTROLS) {}

// Data bytes, two of every three, are looked at first.
void cMIDIControlMemory::Remember(const unsigned char* bytes, size_t size)
{
    for (const unsigned char* end = bytes + size; bytes != end; ++bytes)
    {
        const unsigned char byte = *bytes;
        if (byte < 0x80)
        {
            if (runningStatus != 0)
            {
                data[dataCount++] = byte;
                if (dataCount == dataLength)
                {
                    MessageComplete();
                    dataCount = 0;
                }
            }
        }
        else if (byte < 0xF0)
        {
            runningStatus = byte;
            dataCount = 0;
            // Program Change and Channel Pressure have one data byte.
            dataLength = (byte & 0xE0) == 0xC0 ? 1 : 2;
        }
        else if (byte < 0xF8)
        {
            // System Exclusive and system common messages end running
            // status, so their data bytes, which no control owns, are passed
            // over. Realtime may fall anywhere, even inside a message, and
            // changes nothing.
            runningStatus = 0;
        }
    }
}

void cMIDIControlMemory::MessageComplete()
{
    const int channel = runningStatus & 0x0F;
    switch (runningStatus & 0xF0)
    {
    case 0x80:
    case 0x90:
        RememberPlain(NOTES + channel * 128 + data[0], 3);
        break;
    case 0xB0:
        RememberController(channel);
        break;
    case 0xD0:
        RememberPlain(PRESSURES + channel, 2);
        break;
    case 0xE0:
        RememberPlain(PITCH_BENDS + channel, 3);
        break;
    default:
        break;
    }
}

void cMIDIControlMemory::RememberController(int channel)
{
    const unsigned char controller = data[0];
    sSelection& selection = selections[channel];
    const bool forParameter = controller == DATA_ENTRY_MSB || controller == DATA_ENTRY_LSB
        || controller == DATA_INCREMENT || controller == DATA_DECREMENT;
    if (controller >= NRPN_LSB && controller <= RPN_MSB)
    {
        selection.kind = controller >= RPN_LSB ? RPN : NRPN;
        // The odd controller of each pair carries the upper seven bits.
        selection.number[selection.kind][controller & 1 ? 0 : 1] = data[1];
    }
    else if (!forParameter || selection.kind == NO_PARAMETER)
    {
        RememberPlain(CONTROLLERS + channel * 128 + controller, 3);
    }
    else
    {
        const int number = selection.number[selection.kind][0] << 7 | selection.number[selection.kind][1];
        const quint32 key = ParameterKey(selection.kind, channel, number);
        if (controller == DATA_INCREMENT || controller == DATA_DECREMENT)
        {
            // A step from a value: what it is now is no longer known here.
            parameters.erase(key);
        }
        else if (number != NULL_PARAMETER)
        {
            RememberParameterValue(key, controller, data[1]);
        }
    }
}

void cMIDIControlMemory::RememberPlain(int index, int size)
{
    sPlainControl& control = plainControls[static_cast<size_t>(index)];
    control.serial = ++lastSerial;
    control.message[0] = runningStatus;
    control.message[1] = data[0];
    control.message[2] = data[1];
    control.size = static_cast<unsigned char>(size);
}

void cMIDIControlMemory::RememberParameterValue(quint32 key, unsigned char controller, unsigned char value)
{
    auto found = parameters.find(key);
    if (found == parameters.end())
    {
        if (parameters.size() >= static_cast<size_t>(MAXIMUM_PARAMETERS))
        {
            parameters.erase(std::min_element(parameters.begin(), parameters.end(),
                [](const auto& a, const auto& b) { return a.second.serial < b.second.serial; }));
        }
        found = parameters.emplace(key, sParameter()).first;
    }
    sParameter& parameter = found->second;
    parameter.serial = ++lastSerial;
    if (controller == DATA_ENTRY_MSB)
    {
        // A new coarse value starts without the fine part of the old one.
        parameter.valueMSB = value;
        parameter.hasMSB = true;
        parameter.hasLSB = false;
    }
    else
    {
        parameter.valueLSB = value;
        parameter.hasLSB = true;
    }
}

QByteArray cMIDIControlMemory::ParameterMessage(quint32 key, const sParameter& parameter)
{
    const char status = static_cast<char>(0xB0 | (key >> 14 & 0x0F));
    const bool rpn = (key >> 18 & 1) == RPN;
    QByteArray message;
    message.append(status).append(static_cast<char>(rpn ? RPN_MSB : NRPN_MSB)).append(static_cast<char>(key >> 7 & 0x7F));
    message.append(status).append(static_cast<char>(rpn ? RPN_LSB : NRPN_LSB)).append(static_cast<char>(key & 0x7F));
    if (parameter.hasMSB)
    {
        message.append(status).append(static_cast<char>(DATA_ENTRY_MSB)).append(static_cast<char>(parameter.valueMSB));
    }
    if (parameter.hasLSB)
    {
        message.append(status).append(static_cast<char>(DATA_ENTRY_LSB)).append(static_cast<char>(parameter.valueLSB));
    }
    return message;
}

void cMIDIControlMemory::Clear()
{
    std::fill(plainControls.begin(), plainControls.end(), sPlainControl());
    parameters.clear();
    std::fill(std::begin(selections), std::end(selections), sSelection());
    runningStatus = 0;
    dataCount = 0;
}

std::vector<cMIDIControlMemory::sControl> cMIDIControlMemory::GetControls() const
{
    std::vector<sControl> controls;
    for (size_t index = 0; index < plainControls.size(); ++index)
    {
        const sPlainControl& control = plainControls[index];
        if (control.serial != 0)
        {
            controls.push_back({static_cast<quint32>(index), control.serial,
                QByteArray(reinterpret_cast<const char*>(control.message), control.size)});
        }
    }
    for (const auto& parameter : parameters)
    {
        controls.push_back({parameter.first, parameter.second.serial, ParameterMessage(parameter.first, parameter.second)});
    }
    std::sort(controls.begin(), controls.end(), [](const sControl& a, const sControl& b) { return a.serial < b.serial; });
    return controls;
}

bool cMIDIControlMemory::IsUnchanged(const sControl& control) const
{
    if (control.key & PARAMETER_KEY)
    {
        const auto found = parameters.find(control.key);
        return found != parameters.end() && found->second.serial == control.serial;
    }
    return plainControls[control.key].serial == control.serial;
}
