#include "MIDITranslator/FileLocations.h"
#include "MIDITranslator/MixerDawMap.h"
#include "support/TranslatorFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

// The rule files the program ships, loaded and driven exactly as the program
// does: a console on an in-memory system port standing in for the mixer, the
// DAW on the virtual ports the file publishes.
namespace
{
const QString CONSOLE = QStringLiteral("Console");
const QString MACKIE = QStringLiteral("Tessera Mackie Control");
const QString MACKIE_XT = QStringLiteral("Tessera Mackie Control XT");
const QString GENERIC = QStringLiteral("Tessera Generic CC");
}

class tShippedRules : public QObject
{
    Q_OBJECT
private slots:
    void EveryFileLoadsCleanly()
    {
        cMixerDawMap map;
        QCOMPARE(ErrorLinesOf([&] { map.LoadFromFilePath(cFileLocations::GetMixerMapFilePath()); }), QStringList());
        // Sorted as the window lists them: a fresh start selects the first.
        QStringList mixers = map.GetMixerNames();
        mixers.sort();
        QCOMPARE(mixers, QStringList({"Tx-16", "Tx-8", "Unison KVR-12"}));
        for (const QString& mixer : mixers)
        {
            QCOMPARE(map.GetDAWNamesForMixer(mixer), QStringList({"Mackie Control", "Generic CC"}));
            for (const QString& daw : map.GetDAWNamesForMixer(mixer))
            {
                const QString path = cFileLocations::GetConfigurationFileDirectory() + map.GetFilePathForMixerAndDAW(mixer, daw);
                const QString context = mixer + QStringLiteral(" / ") + daw;
                const QJsonObject json = ReadJsonObject(path);

                cStdoutCapture capture;
                cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationMemory);
                configuration.LoadFromFile(path);
                QVERIFY2(capture.ErrorLines().isEmpty(), qPrintable(context + QLatin1Char('\n') + capture.Text()));

                // Nothing the file holds was rejected.
                QCOMPARE(configuration.GetMIDITranslatorRules().size(), json.value("rules").toArray().size());
                QCOMPARE(configuration.GetMixerInputPortName(), QStringLiteral("Kestrel Internal TCP MIDI"));
                QCOMPARE(configuration.GetMixerOutputPortName(), QStringLiteral("Kestrel Internal TCP MIDI"));

                const QList<cMIDITranslatorVariable>& variables = configuration.GetMIDITranslatorVariables();
                QCOMPARE(variables.size(), 1);
                QCOMPARE(variables[0].GetDescriptiveName(), QStringLiteral("MIDI Channel"));
                QCOMPARE(variables[0].GetNumberOfValues(), 16);
                QCOMPARE(variables[0].GetCurrentValue(), UBYTE(0));
            }
        }
    }

    // The DAW's side of the Mackie Control handshake, on each port of each
    // Mackie Control file: the device query (device byte 14 for the main
    // unit, 15 for the extender) gets the host connection query, with a
    // serial number and a challenge; the host connection reply gets the
    // confirmation with the serial. The port that asked gets the answer; the
    // console and the other port get nothing.
    void AnswersTheMackieControlHandshake()
    {
        cMixerDawMap map;
        map.LoadFromFilePath(cFileLocations::GetMixerMapFilePath());
        for (const QString& mixer : map.GetMixerNames())
        {
            cStdoutCapture capture;
            cTranslatorFixture loaded({CONSOLE});
            loaded.configuration.LoadFromFile(cFileLocations::GetConfigurationFileDirectory() +
                                              map.GetFilePathForMixerAndDAW(mixer, QStringLiteral("Mackie Control")));
            loaded.configuration.SetMixerInputPortName(CONSOLE);
            loaded.configuration.SetMixerOutputPortName(CONSOLE);
            QStringList units = loaded.registry->GetVirtualInputOutputNames();
            units.sort();
            // An extender for consoles of more than eight strips.
            const QStringList expected = mixer == QLatin1String("Tx-8") ? QStringList(MACKIE) : QStringList({MACKIE, MACKIE_XT});
            QCOMPARE(units, expected);
            for (const QString& unit : units)
            {
                const QString header = QStringLiteral("F0 00 00 66 ") + (unit == MACKIE ? "14" : "15");
                loaded.Feed(loaded.Port(unit), {header + " 00 F7"});
                QHash<QString, QByteArray> written = loaded.TakeAllWrites();
                const QByteArray query = written.take(unit);
                QCOMPARE(written.keys(), QStringList());
                QCOMPARE(query.size(), 18);
                QCOMPARE(query.left(6), MIDIBytes(header + " 01"));
                QCOMPARE(query.back(), '\xF7');
                const QByteArray serial = query.mid(6, 7);
                for (char byte : query.mid(6, 11))
                {
                    QVERIFY(static_cast<unsigned char>(byte) < 0x80);
                }

                loaded.Feed(loaded.Port(unit), {header + " 02" + serial.toHex() + "7F 00 35 6A F7"});
                written = loaded.TakeAllWrites();
                QCOMPARE(written.take(unit).toHex(' '), (MIDIBytes(header + " 03") + serial + '\xF7').toHex(' '));
                QCOMPARE(written.keys(), QStringList());
            }
            QCOMPARE(capture.ErrorLines(), QStringList());
        }
    }

    void Translates_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("channel");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("output");

        // One row for each kind of rule a file holds; the files repeat each kind
        // for every strip and key.
        // Tx-16 on MIDI channel 5: strips 1-8 on the Mackie main unit, 9-16 on the extender.
        const QString tx16 = QStringLiteral("tx16_mackie_control.json");
        QTest::newRow("tx16 mackie: fader 3 up") << tx16 << 5 << CONSOLE << "B40240" << MACKIE << "E24040";
        QTest::newRow("tx16 mackie: fader 11 up") << tx16 << 5 << CONSOLE << "B40A7F" << MACKIE_XT << "E27F7F";
        QTest::newRow("tx16 mackie: fader 2 down") << tx16 << 5 << MACKIE << "E10060" << CONSOLE << "B40160";
        QTest::newRow("tx16 mackie: touch 2") << tx16 << 5 << CONSOLE << "B4217F" << MACKIE << "90697F";
        QTest::newRow("tx16 mackie: mute 1") << tx16 << 5 << CONSOLE << "B4407F" << MACKIE << "90107F901000";
        QTest::newRow("tx16 mackie: mute lamp 9") << tx16 << 5 << MACKIE_XT << "90107F" << CONSOLE << "B4487F";
        QTest::newRow("tx16 mackie: pan 4 left") << tx16 << 5 << CONSOLE << "B41343" << MACKIE << "B01343";
        QTest::newRow("tx16 mackie: pan 4 ring") << tx16 << 5 << MACKIE << "B03316" << CONSOLE << "B41316";
        QTest::newRow("tx16 mackie: select 16") << tx16 << 5 << CONSOLE << "940F7F" << MACKIE_XT << "901F7F";

        const QString tx8 = QStringLiteral("tx8_mackie_control.json");
        QTest::newRow("tx8 mackie: fader 8") << tx8 << 16 << CONSOLE << "BF0720" << MACKIE << "E72020";
        QTest::newRow("tx8 mackie: rec lamp 8") << tx8 << 16 << MACKIE << "90077F" << CONSOLE << "9F277F";

        // Unison KVR-12 on channel 16: NRPN in, running status included.
        const QString kvr = QStringLiteral("kvr12_mackie_control.json");
        QTest::newRow("kvr mackie: fader 10") << kvr << 16 << CONSOLE << "BF6300620906552611" << MACKIE_XT << "E11155";
        QTest::newRow("kvr mackie: fader 1 down") << kvr << 16 << MACKIE << "E02233"
                                                  << CONSOLE << "BF6300BF6200BF0633BF2622";
        QTest::newRow("kvr mackie: pan 2 left 5") << kvr << 16 << CONSOLE << "BF6301BF6201BF6105" << MACKIE << "B01145";
        QTest::newRow("kvr mackie: pan 2 right 5") << kvr << 16 << CONSOLE << "BF6301BF6201BF6005"
                                                   << MACKIE << "B01105";
        QTest::newRow("kvr mackie: select 3 press") << kvr << 16 << CONSOLE << "9F227F" << MACKIE << "901A7F";
        QTest::newRow("kvr mackie: select 3 release") << kvr << 16 << CONSOLE << "8F2240" << MACKIE << "901A00";
        QTest::newRow("kvr mackie: mute 12") << kvr << 16 << CONSOLE << "BF6302BF620BBF067F"
                                             << MACKIE_XT << "90137F901300";
        QTest::newRow("kvr mackie: solo lamp 4") << kvr << 16 << MACKIE << "900B7F" << CONSOLE << "BF6303BF6203BF067F";

        // Generic CC: strip k on channel k of the DAW port, the master and keys on channel 1.
        const QString tx8cc = QStringLiteral("tx8_generic_cc.json");
        QTest::newRow("tx8 cc: fader 8") << tx8cc << 2 << CONSOLE << "B10764" << GENERIC << "B70764";
        QTest::newRow("tx8 cc: fader 8 down") << tx8cc << 2 << GENERIC << "B70710" << CONSOLE << "B10710";
        QTest::newRow("tx8 cc: master") << tx8cc << 2 << CONSOLE << "B1707F" << GENERIC << "B00E7F";
        QTest::newRow("tx8 cc: mute 4") << tx8cc << 2 << CONSOLE << "B1437F" << GENERIC << "B3147F";
        QTest::newRow("tx8 cc: pan 6") << tx8cc << 2 << CONSOLE << "B11541" << GENERIC << "B50A41";
        QTest::newRow("tx8 cc: pan has no way back") << tx8cc << 2 << GENERIC << "B50A40" << CONSOLE << "";

        const QString tx16cc = QStringLiteral("tx16_generic_cc.json");
        QTest::newRow("tx16 cc: fader 16") << tx16cc << 1 << CONSOLE << "B00F7F" << GENERIC << "BF077F";
        QTest::newRow("tx16 cc: solo lamp 16") << tx16cc << 1 << GENERIC << "BF157F" << CONSOLE << "B05F7F";

        const QString kvrcc = QStringLiteral("kvr12_generic_cc.json");
        QTest::newRow("kvr cc: fader 12") << kvrcc << 3 << CONSOLE << "B26300B2620BB20640B22600" << GENERIC << "BB0740";
        QTest::newRow("kvr cc: fader 12 down") << kvrcc << 3 << GENERIC << "BB0741"
                                               << CONSOLE << "B26300B2620BB20641B22641";
        QTest::newRow("kvr cc: pan 1 left 2") << kvrcc << 3 << CONSOLE << "B26301B26200B26102" << GENERIC << "B00A42";
    }

    void Translates()
    {
        QFETCH(QString, file);
        QFETCH(int, channel);
        QFETCH(QString, from);
        QFETCH(QString, input);
        QFETCH(QString, to);
        QFETCH(QString, output);

        // Loaded with the console plugged in and routed as the main window
        // routes it in "MIDI Ports" mode; the user's channel applied to the
        // variable by its value, as the window does.
        cStdoutCapture capture;
        cTranslatorFixture loaded({CONSOLE});
        loaded.configuration.LoadFromFile(cFileLocations::GetConfigurationFileDirectory() + file);
        loaded.configuration.SetMixerInputPortName(CONSOLE);
        loaded.configuration.SetMixerOutputPortName(CONSOLE);
        loaded.configuration.SetVariableValue(QStringLiteral("n"), UBYTE(channel - 1));
        loaded.Feed(loaded.Port(from), {input});
        QHash<QString, QByteArray> written = loaded.TakeAllWrites();
        QCOMPARE(written.take(to).toHex(' '), MIDIBytes(output).toHex(' '));
        QCOMPARE(written.keys(), QStringList());
        QCOMPARE(capture.ErrorLines(), QStringList());
    }
};

QTEST_GUILESS_MAIN(tShippedRules)
#include "test_shipped_rules.moc"
