#ifndef MIDICONTROLMEMORY_H
#define MIDICONTROLMEMORY_H

#include <QByteArray>
#include <QtGlobal>

#include <cstddef>
#include <unordered_map>
#include <vector>

// The last message sent to each control of a device, so that a device that
// lost its state (switched off, unplugged) can be given it back. A control is
// a channel's controller, its note (Note On and Note Off alike: a lamp), its
// pitch bend or its channel pressure, or a parameter set through NRPN or RPN
// (selected with controllers 99/98 or 101/100, its value given with 6 and 38),
// which is kept with the selection that goes before its value. Program Change
// is not kept, as on a console it recalls a scene, which must not happen
// twice; nor are Polyphonic Pressure, System Exclusive and realtime messages.
// The plain controls are a fixed table, so remembering a message costs a few
// comparisons and a store; parameters, of which there are far more, are kept
// up to MAXIMUM_PARAMETERS, the ones written longest ago giving way. So it
// never holds more than PLAIN_CONTROLS + MAXIMUM_PARAMETERS controls.
class cMIDIControlMemory
{
public:
    // 16 channels of 128 controllers and 128 notes, pitch bend and pressure.
    static const int PLAIN_CONTROLS = 16 * (128 + 128 + 2);
    static const int MAXIMUM_PARAMETERS = 1024;

    struct sControl
    {
        quint32 key;
        // When it was last written: a later write has a larger one.
        quint64 serial;
        // As it is to be sent again, status bytes all written out.
        QByteArray message;
    };

    cMIDIControlMemory();

    // Whole messages as they were sent; running status may run on from the
    // previous call.
    void Remember(const unsigned char* bytes, size_t size);
    void Clear();
    // Every control kept, the one written longest ago first.
    std::vector<sControl> GetControls() const;
    // Whether a control still has the value it had when GetControls told it.
    bool IsUnchanged(const sControl& control) const;

private:
    static const int NO_PARAMETER = -1;

    struct sPlainControl
    {
        quint64 serial = 0;
        unsigned char message[3] = {};
        unsigned char size = 0;
    };
    struct sParameter
    {
        quint64 serial = 0;
        unsigned char valueMSB = 0;
        unsigned char valueLSB = 0;
        bool hasMSB = false;
        bool hasLSB = false;
    };
    // The parameter number each channel has selected, per kind (NRPN, RPN),
    // and the kind selected last.
    struct sSelection
    {
        unsigned char number[2][2] = {};
        int kind = NO_PARAMETER;
    };

    void MessageComplete();
    void RememberController(int channel);
    void RememberPlain(int index, int size);
    void RememberParameterValue(quint32 key, unsigned char controller, unsigned char value);
    static QByteArray ParameterMessage(quint32 key, const sParameter& parameter);

    std::vector<sPlainControl> plainControls;
    std::unordered_map<quint32, sParameter> parameters;
    sSelection selections[16];
    quint64 lastSerial = 0;

    unsigned char runningStatus = 0;
    unsigned char data[2] = {};
    int dataCount = 0;
    int dataLength = 2;
};

#endif
