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

QByteArray Bytes(const char* hex)
{
    return QByteArray::fromHex(QByteArray(hex));
}

// A rule file loaded with the console plugged in and routed as the main
// window routes it in "MIDI Ports" mode; the bytes sent to one port, and
// every write they caused.
QHash<QString, QByteArray> Send(const QString& file, int channel, const QString& port, const QByteArray& bytes)
{
    cTranslatorFixture loaded({CONSOLE});
    loaded.configuration.LoadFromFile(file);
    loaded.configuration.SetMixerInputPortName(CONSOLE);
    loaded.configuration.SetMixerOutputPortName(CONSOLE);
    // The main window applies the user's channel to the variable by its value.
    loaded.configuration.SetVariableValue(QStringLiteral("n"), UBYTE(channel - 1));
    loaded.Feed(loaded.Port(port), {QString::fromLatin1(bytes.toHex())});
    return loaded.TakeAllWrites();
}
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

    void Translates_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("channel");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QByteArray>("output");

        // One row for each kind of rule a file holds; the files repeat each kind
        // for every strip and key.
        // Tx-16 on MIDI channel 5: strips 1-8 on the Mackie main unit, 9-16 on the extender.
        const QString tx16 = QStringLiteral("tx16_mackie_control.json");
        QTest::newRow("tx16 mackie: fader 3 up") << tx16 << 5 << CONSOLE << Bytes("B40240") << MACKIE << Bytes("E24040");
        QTest::newRow("tx16 mackie: fader 11 up") << tx16 << 5 << CONSOLE << Bytes("B40A7F") << MACKIE_XT << Bytes("E27F7F");
        QTest::newRow("tx16 mackie: fader 2 down") << tx16 << 5 << MACKIE << Bytes("E10060") << CONSOLE << Bytes("B40160");
        QTest::newRow("tx16 mackie: touch 2") << tx16 << 5 << CONSOLE << Bytes("B4217F") << MACKIE << Bytes("90697F");
        QTest::newRow("tx16 mackie: mute 1") << tx16 << 5 << CONSOLE << Bytes("B4407F") << MACKIE << Bytes("90107F901000");
        QTest::newRow("tx16 mackie: mute lamp 9") << tx16 << 5 << MACKIE_XT << Bytes("90107F") << CONSOLE << Bytes("B4487F");
        QTest::newRow("tx16 mackie: pan 4 left") << tx16 << 5 << CONSOLE << Bytes("B41343") << MACKIE << Bytes("B01343");
        QTest::newRow("tx16 mackie: pan 4 ring") << tx16 << 5 << MACKIE << Bytes("B03316") << CONSOLE << Bytes("B41316");
        QTest::newRow("tx16 mackie: select 16") << tx16 << 5 << CONSOLE << Bytes("940F7F") << MACKIE_XT << Bytes("901F7F");

        const QString tx8 = QStringLiteral("tx8_mackie_control.json");
        QTest::newRow("tx8 mackie: fader 8") << tx8 << 16 << CONSOLE << Bytes("BF0720") << MACKIE << Bytes("E72020");
        QTest::newRow("tx8 mackie: rec lamp 8") << tx8 << 16 << MACKIE << Bytes("90077F") << CONSOLE << Bytes("9F277F");

        // Unison KVR-12 on channel 16: NRPN in, running status included.
        const QString kvr = QStringLiteral("kvr12_mackie_control.json");
        QTest::newRow("kvr mackie: fader 10") << kvr << 16 << CONSOLE << Bytes("BF6300620906552611")
                                              << MACKIE_XT << Bytes("E11155");
        QTest::newRow("kvr mackie: fader 1 down") << kvr << 16 << MACKIE << Bytes("E02233")
                                                  << CONSOLE << Bytes("BF6300BF6200BF0633BF2622");
        QTest::newRow("kvr mackie: pan 2 left 5") << kvr << 16 << CONSOLE << Bytes("BF6301BF6201BF6105")
                                                  << MACKIE << Bytes("B01145");
        QTest::newRow("kvr mackie: pan 2 right 5") << kvr << 16 << CONSOLE << Bytes("BF6301BF6201BF6005")
                                                   << MACKIE << Bytes("B01105");
        QTest::newRow("kvr mackie: select 3 press") << kvr << 16 << CONSOLE << Bytes("9F227F") << MACKIE << Bytes("901A7F");
        QTest::newRow("kvr mackie: select 3 release") << kvr << 16 << CONSOLE << Bytes("8F2240") << MACKIE << Bytes("901A00");
        QTest::newRow("kvr mackie: mute 12") << kvr << 16 << CONSOLE << Bytes("BF6302BF620BBF067F")
                                             << MACKIE_XT << Bytes("90137F901300");
        QTest::newRow("kvr mackie: solo lamp 4") << kvr << 16 << MACKIE << Bytes("900B7F")
                                                 << CONSOLE << Bytes("BF6303BF6203BF067F");

        // Generic CC: strip k on channel k of the DAW port, the master and keys on channel 1.
        const QString tx8cc = QStringLiteral("tx8_generic_cc.json");
        QTest::newRow("tx8 cc: fader 8") << tx8cc << 2 << CONSOLE << Bytes("B10764") << GENERIC << Bytes("B70764");
        QTest::newRow("tx8 cc: fader 8 down") << tx8cc << 2 << GENERIC << Bytes("B70710") << CONSOLE << Bytes("B10710");
        QTest::newRow("tx8 cc: master") << tx8cc << 2 << CONSOLE << Bytes("B1707F") << GENERIC << Bytes("B00E7F");
        QTest::newRow("tx8 cc: mute 4") << tx8cc << 2 << CONSOLE << Bytes("B1437F") << GENERIC << Bytes("B3147F");
        QTest::newRow("tx8 cc: pan 6") << tx8cc << 2 << CONSOLE << Bytes("B11541") << GENERIC << Bytes("B50A41");
        QTest::newRow("tx8 cc: pan has no way back") << tx8cc << 2 << GENERIC << Bytes("B50A40") << CONSOLE << QByteArray();

        const QString tx16cc = QStringLiteral("tx16_generic_cc.json");
        QTest::newRow("tx16 cc: fader 16") << tx16cc << 1 << CONSOLE << Bytes("B00F7F") << GENERIC << Bytes("BF077F");
        QTest::newRow("tx16 cc: solo lamp 16") << tx16cc << 1 << GENERIC << Bytes("BF157F") << CONSOLE << Bytes("B05F7F");

        const QString kvrcc = QStringLiteral("kvr12_generic_cc.json");
        QTest::newRow("kvr cc: fader 12") << kvrcc << 3 << CONSOLE << Bytes("B26300B2620BB20640B22600")
                                          << GENERIC << Bytes("BB0740");
        QTest::newRow("kvr cc: fader 12 down") << kvrcc << 3 << GENERIC << Bytes("BB0741")
                                               << CONSOLE << Bytes("B26300B2620BB20641B22641");
        QTest::newRow("kvr cc: pan 1 left 2") << kvrcc << 3 << CONSOLE << Bytes("B26301B26200B26102")
                                              << GENERIC << Bytes("B00A42");
    }

    void Translates()
    {
        QFETCH(QString, file);
        QFETCH(int, channel);
        QFETCH(QString, from);
        QFETCH(QByteArray, input);
        QFETCH(QString, to);
        QFETCH(QByteArray, output);

        cStdoutCapture capture;
        QHash<QString, QByteArray> written = Send(cFileLocations::GetConfigurationFileDirectory() + file, channel, from, input);
        QCOMPARE(written.value(to).toHex(' '), output.toHex(' '));
        written.remove(to);
        QCOMPARE(written.keys(), QStringList());
        QCOMPARE(capture.ErrorLines(), QStringList());
    }
};

QTEST_GUILESS_MAIN(tShippedRules)
#include "test_shipped_rules.moc"
