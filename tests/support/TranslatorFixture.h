#ifndef TRANSLATORFIXTURE_H
#define TRANSLATORFIXTURE_H

#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "TestHelpers.h"

#include <QCoreApplication>
#include <QHash>

#include <thread>

// A translator configuration over a registry of in-memory ports, standing in
// for the mixer and the DAW. System ports named here are plugged in before a
// rule file is loaded, as on a machine where the console is already there.
class cTranslatorFixture
{
public:
    explicit cTranslatorFixture(const QStringList& systemPorts = {}) :
        registry(new cSystemMIDIConfigurationMemory), configuration(registry)
    {
        for (const QString& name : systemPorts)
        {
            registry->AddSystemInputOutput(name);
        }
    }

    cMIDIInputOutputMemory* Port(const QString& name) const { return registry->GetMemoryInputOutput(name); }

    // Hands the chunks to the port from a thread of its own, one read each, as
    // a port that receives on another thread does, then lets the event loop
    // deliver the queued reads.
    static void Feed(cMIDIInputOutputMemory* port, const QStringList& chunks)
    {
        std::thread platform([&] {
            for (const QString& chunk : chunks)
            {
                port->ReceiveMIDIData(MIDIBytes(chunk));
            }
        });
        platform.join();
        QCoreApplication::processEvents();
    }

    // What the chunks fed to one port make the rules write to another.
    QStringList Through(const QString& from, const QStringList& chunks, const QString& to)
    {
        Feed(Port(from), chunks);
        return HexWrites(Port(to)->TakeWrittenData());
    }

    // Every port's writes so far, each port's writes joined.
    QHash<QString, QByteArray> TakeAllWrites()
    {
        QHash<QString, QByteArray> written;
        for (const QString& name : registry->GetVirtualInputOutputNames() + registry->GetSystemMIDIOutputNames())
        {
            for (const QByteArray& write : Port(name)->TakeWrittenData())
            {
                written[name] += write;
            }
        }
        return written;
    }

    cSystemMIDIConfigurationMemory* registry;
    cMIDITranslatorConfiguration configuration;
};

#endif
