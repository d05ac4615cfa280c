// Bytes from a port on their way to the match engine: running status
// expanded, and the matcher bound to its port by name.

#include "Common/MIDI/MIDIInputMatcher.h"
#include "Common/MIDI/MIDIRunningStatusFixer.h"
#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "support/MatchRecorder.h"

#include <QSignalSpy>
#include <QtTest>

class tInputMatcher : public QObject
{
    Q_OBJECT

private:
    // A matcher for "Mixer In" that recognises note on and control change 7.
    struct sFixture
    {
        cSystemMIDIConfigurationMemory configuration;
        cMatchRecorder recorder;
        cMIDIInputMatcher matcher{QStringLiteral("Mixer In"), &configuration, &recorder};

        sFixture()
        {
            matcher.AddMIDIMatchNibbleListIdentifier(MatchPattern(1, "90 ** **"));
            matcher.AddMIDIMatchNibbleListIdentifier(MatchPattern(2, "B0 07 **"));
        }
    };

private slots:
    // Each chunk goes through the same fixer, one after the other; the
    // expected output of each chunk is given separately.
    void RunningStatusExpansion_data()
    {
        QTest::addColumn<QStringList>("chunks");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("note on, velocity 0 as note off") << QStringList{"90 40 7F 40 00"} << QStringList{"90 40 7F 90 40 00"};
        QTest::newRow("program change has one data byte") << QStringList{"C0 05 06"} << QStringList{"C0 05 C0 06"};
        QTest::newRow("channel pressure has one data byte") << QStringList{"D3 10 20 30"} << QStringList{"D3 10 D3 20 D3 30"};
        QTest::newRow("clock inside a message") << QStringList{"90 40 F8 7F 41 00"} << QStringList{"90 40 F8 7F 90 41 00"};
        QTest::newRow("message split across chunks")
            << QStringList{"90 40", "7F 41 00"} << QStringList{"90 40", "7F 90 41 00"};
        QTest::newRow("status carried over to the next chunk")
            << QStringList{"B0 07 7F", "07 00", ""} << QStringList{"B0 07 7F", "B0 07 00", ""};
        QTest::newRow("end of exclusive cancels running status")
            << QStringList{"F0 01 02 F7 40"} << QStringList{"F0 01 02 F7 40"};
        QTest::newRow("real time inside exclusive keeps it open")
            << QStringList{"B0 07 F0 01 FE 02 F7 03"} << QStringList{"B0 07 F0 01 FE 02 F7 03"};
        QTest::newRow("system common cancels running status")
            << QStringList{"90 40 7F F3 01 40 7F"} << QStringList{"90 40 7F F3 01 40 7F"};
        QTest::newRow("data before any status byte") << QStringList{"01 02 03"} << QStringList{"01 02 03"};
        QTest::newRow("new status restarts the count")
            << QStringList{"E0 00 C1 05 06 E0 00 40 01"} << QStringList{"E0 00 C1 05 C1 06 E0 00 40 E0 01"};
    }

    void RunningStatusExpansion()
    {
        QFETCH(QStringList, chunks);
        QFETCH(QStringList, expected);

        cMIDIRunningStatusFixer fixer;
        std::vector<unsigned char> out{0x55};
        for (int index = 0; index < chunks.size(); ++index)
        {
            const QByteArray chunk = MIDIBytes(chunks[index]);
            fixer.FixRunningStatus(std::vector<unsigned char>(chunk.begin(), chunk.end()), out);
            QCOMPARE(QByteArray(reinterpret_cast<const char*>(out.data()), static_cast<int>(out.size())),
                     MIDIBytes(expected[index]));
        }
    }

    void BindsByNameAndExpandsRunningStatus()
    {
        sFixture fixture;
        // Registered after the matcher: bound when the registry announces it.
        cMIDIInputOutputMemory* other = fixture.configuration.AddSystemInputOutput(QStringLiteral("mixer in"));
        other->ReceiveMIDIData(MIDIBytes("90 40 7F"));
        cMIDIInputOutputMemory* input = fixture.configuration.AddSystemInputOutput(QStringLiteral("Mixer In"));

        // The read signal follows the matching of the bytes it announces.
        QStringList seenAtSignal;
        connect(&fixture.matcher, &cMIDIInputMatcher::MIDIInputReadSignal, this,
                [&]() { seenAtSignal = fixture.recorder.triggers; });
        input->ReceiveMIDIData(MIDIBytes("90 40 7F 41"));
        input->ReceiveMIDIData(MIDIBytes("00 B0 07 10 07"));
        input->ReceiveMIDIData(MIDIBytes("11"));
        const QStringList expected{"1:90407F", "1:904100", "2:B00710", "2:B00711"};
        QCOMPARE(fixture.recorder.triggers, expected);
        QCOMPARE(seenAtSignal, expected);
    }

    void UnbindsOnRemoval()
    {
        sFixture fixture;
        cMIDIInputOutputMemory port(QStringLiteral("Mixer In"));
        fixture.configuration.AddInternalInputOutput(QStringLiteral("Mixer In"), &port);
        QSignalSpy reads(&fixture.matcher, &cMIDIInputMatcher::MIDIInputReadSignal);

        // Half a message before the port goes; another port coming and going
        // changes nothing.
        port.ReceiveMIDIData(MIDIBytes("B0"));
        cMIDIInputOutputMemory other(QStringLiteral("Other"));
        fixture.configuration.AddInternalInputOutput(QStringLiteral("Other"), &other);
        fixture.configuration.RemoveInternalInputOutput(QStringLiteral("Other"));
        port.ReceiveMIDIData(MIDIBytes("07"));
        fixture.configuration.RemoveInternalInputOutput(QStringLiteral("Mixer In"));
        port.ReceiveMIDIData(MIDIBytes("90 40 7F"));
        QCOMPARE(reads.count(), 2);
        QVERIFY(fixture.recorder.triggers.isEmpty());

        // What arrived while unbound was dropped, as a platform port drops
        // what nobody listens to; the partial match survived the re-binding
        // and completes with the first byte after it.
        fixture.configuration.AddInternalInputOutput(QStringLiteral("Mixer In"), &port);
        port.ReceiveMIDIData(MIDIBytes("22"));
        QCOMPARE(fixture.recorder.triggers, (QStringList{"2:B00722"}));

        // A port deleted by the registry takes its binding with it.
        fixture.configuration.RemoveInternalInputOutput(QStringLiteral("Mixer In"));
        fixture.configuration.AddSystemInputOutput(QStringLiteral("Mixer In"))->ReceiveMIDIData(MIDIBytes("B0 07 01"));
        QCOMPARE(fixture.recorder.triggers.mid(1), (QStringList{"2:B00701"}));
        fixture.configuration.RemoveSystemInputOutput(QStringLiteral("Mixer In"));
        fixture.matcher.MIDIReadReady();
        QCOMPARE(fixture.recorder.triggers.size(), 2);
    }
};

QTEST_GUILESS_MAIN(tInputMatcher)
#include "test_inputmatcher.moc"
