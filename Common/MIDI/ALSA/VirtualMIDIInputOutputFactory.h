#ifndef VIRTUALMIDIINPUTOUTPUTFACTORY_H
#define VIRTUALMIDIINPUTOUTPUTFACTORY_H

#include <QObject>
#include <QString>

class cMIDIInputOutput;

// The one place where the registry meets the platform: makes the platform's
// virtual port pair.
class cVirtualMIDIInputOutputFactory
{
public:
    static cMIDIInputOutput* CreateVirtualMIDIInputOutput(QString name, QObject* parent);
};

#endif
