#include "Common/MIDI/MIDIRunningStatusFixer.h"
#include "support/MatchRecorder.h"

#include <QtTest>

class tRunningStatus : public QObject
{
    Q_OBJECT

private slots:
    // Each chunk goes through the same fixer, one after the other; the
    // expected output of each chunk is given separately.
    void Expansion_data()
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

    void Expansion()
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
};

QTEST_APPLESS_MAIN(tRunningStatus)
#include "test_runningstatus.moc"
