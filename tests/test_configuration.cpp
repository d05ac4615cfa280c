// The translator working end to end: real rule files, in-memory ports for the
// mixer and the DAW, and bytes that arrive on a thread of their own, as from
// the platform, so they reach the matchers through the queued notification.

#include "Common/MIDI/MIDIInputMatcher.h"
#include "MIDITranslator/MixerStateRestorer.h"
#include "support/TranslatorFixture.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace
{
const char* const SOURCE = "MIDITranslator/MIDITranslatorConfiguration.cpp";

std::vector<unsigned char> Bytes(const QString& hex)
{
    const QByteArray bytes = MIDIBytes(hex);
    return std::vector<unsigned char>(bytes.begin(), bytes.end());
}

// A byte as the rules' strings write it.
QString Hex(int byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper();
}
}

class tConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fixture = std::make_unique<cTranslatorFixture>(QStringList{"Footswitch", "Desk B"});
        registry = fixture->registry;
        configuration = &fixture->configuration;
        desk = std::make_unique<cMIDIInputOutputMemory>(QStringLiteral("Desk"));
        registry->AddInternalInputOutput(QStringLiteral("Desk"), desk.get());
        configuration->LoadFromFile(TestDataFile("config/translator.json"));
    }

    void cleanup()
    {
        fixture.reset();
        desk.reset();
    }

    void LoadBuildsPortsAliasesRulesAndMatchers()
    {
        const QStringList errors = ErrorLinesOf([&] { configuration->LoadFromFile(TestDataFile("config/translator.json")); });
        // Loading again replaced the first load completely: its virtual ports went
        // and came back without a complaint about a port created twice.
        QCOMPARE(errors.filter(QStringLiteral("already created")), QStringList());
        QCOMPARE(errors.filter(QStringLiteral("rule \"Unknown global\"")).size(), 1);

        QStringList ports = registry->GetVirtualInputOutputNames();
        ports.sort();
        QCOMPARE(ports, QStringList({"Desk", "Tessera DAW", "Tessera Monitor"}));

        // Neither an output alias, nor one typed "Input", nor one whose name is
        // not text stands for an input.
        QCOMPARE(configuration->GetInputPortNameFromAlias(QStringLiteral("Monitor")), QStringLiteral("Monitor"));
        QCOMPARE(configuration->GetInputPortNameFromAlias(QStringLiteral("Capitalised")), QStringLiteral("Capitalised"));
        QCOMPARE(configuration->GetInputPortNameFromAlias(QStringLiteral("Numbered")), QStringLiteral("Numbered"));

        // The rejected rule leaves no gap: the translation cases below reach
        // the rules after it by their positions.
        QStringList names;
        for (const cMIDITranslatorRule& rule : configuration->GetMIDITranslatorRules())
        {
            names.append(rule.GetName());
        }
        QCOMPARE(names, QStringList({"Fader level", "Mute", "Select", "Program"}));
        const QString path = TestDataFile("config/translator.json");
        QCOMPARE(configuration->GetLoadProblem(),
            path + ": 1 of 5 rules left out; \"tessera-rules check " + path + "\" says why");

        // Fader and Mute share the desk's matcher; Mute has one of its own on the
        // footswitch; Select and Program share the DAW port's.
        QCOMPARE(MatcherCount(), 3);
    }

    void TranslatesThroughQueuedPorts_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QStringList>("chunks");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QStringList>("written");
        QTest::addColumn<int>("mixerInReads");
        QTest::addColumn<int>("mixerOutWrites");

        QTest::newRow("split across reads") << "Desk" << QStringList{"B0", "07", "64 B0 07", "7F"} << "Tessera DAW"
                                            << QStringList{"E0 04 64", "E0 0F 7F"} << 4 << 0;
        QTest::newRow("two rules one port") << "Desk" << QStringList{"90 10 7F B0 07 01"} << "Tessera DAW"
                                            << QStringList{"90 20 7F", "E0 01 01"} << 1 << 0;
        QTest::newRow("second incoming port") << "Footswitch" << QStringList{"90 10 00"} << "Tessera DAW"
                                              << QStringList{"90 20 00"} << 0 << 0;
        QTest::newRow("DAW to mixer") << "Tessera DAW" << QStringList{"90 3C 7F"} << "Desk" << QStringList{"B0 3C 7F"}
                                      << 0 << 1;
        QTest::newRow("empty output still written") << "Tessera DAW" << QStringList{"C0 05"} << "Tessera Monitor"
                                                    << QStringList{""} << 0 << 0;
    }

    void TranslatesThroughQueuedPorts()
    {
        QFETCH(QString, input);
        QFETCH(QStringList, chunks);
        QFETCH(QString, output);
        QFETCH(QStringList, written);
        QFETCH(int, mixerInReads);
        QFETCH(int, mixerOutWrites);

        QSignalSpy inputActivity(configuration, &cMIDITranslatorConfiguration::MixerMIDIInputRead);
        QSignalSpy outputActivity(configuration, &cMIDITranslatorConfiguration::MixerMIDIOutputWrite);
        QVERIFY(fixture->Port(input) && fixture->Port(output));
        QCOMPARE(fixture->Through(input, chunks, output), written);
        QCOMPARE(inputActivity.size(), mixerInReads);
        QCOMPARE(outputActivity.size(), mixerOutWrites);
    }

    void MixerOutActivityOnlyWhenThePortExists()
    {
        QSignalSpy outputActivity(configuration, &cMIDITranslatorConfiguration::MixerMIDIOutputWrite);
        configuration->SetMixerOutputPortName(QStringLiteral("Unplugged"));

        QCOMPARE(fixture->Through("Tessera DAW", {"90 3C 7F"}, "Tessera Monitor"), QStringList{"B0 3C 7F"});
        QCOMPARE(desk->TakeWrittenData().size(), 0);
        QCOMPARE(outputActivity.size(), 0);
    }

    void SwitchingMixerInputMovesItsRules()
    {
        QSignalSpy inputActivity(configuration, &cMIDITranslatorConfiguration::MixerMIDIInputRead);
        configuration->SetMixerInputPortName(QStringLiteral("Desk B"));

        QCOMPARE(fixture->Through("Desk", {"B0 07 64"}, "Tessera DAW"), QStringList{});
        QCOMPARE(inputActivity.size(), 0);
        QCOMPARE(fixture->Through("Desk B", {"B0 07 64"}, "Tessera DAW"), QStringList{"E0 04 64"});
        QCOMPARE(inputActivity.size(), 1);

        // A file without mixer aliases has nothing to point elsewhere.
        configuration->LoadFromFile(TestDataFile("config/empty_object.json"));
        configuration->SetMixerInputPortName(QStringLiteral("Desk B"));
        configuration->SetMixerOutputPortName(QStringLiteral("Desk B"));
        QCOMPARE(configuration->GetMixerInputPortName(), QStringLiteral("Mixer In"));
        QCOMPARE(configuration->GetMixerOutputPortName(), QStringLiteral("Mixer Out"));
        QCOMPARE(MatcherCount(), 0);
    }

    void VariableChangeAppliesAtOnce()
    {
        // Only the first variable of the name takes the value.
        configuration->SetVariableValue(QStringLiteral("n"), 2);
        QCOMPARE(configuration->GetMIDITranslatorVariables().at(1).GetCurrentValue(), UBYTE(9));

        QCOMPARE(fixture->Through("Desk", {"B0 07 64 B2 07 64 92 10 01"}, "Tessera DAW"), QStringList({"E2 04 64", "92 20 01"}));
        QCOMPARE(fixture->Through("Tessera DAW", {"92 3C 7F"}, "Desk"), QStringList{"B2 3C 7F"});

        unsigned char unknown = 1;
        const QStringList errors = ErrorLinesOf(
            [&]
            {
                configuration->SetVariableValue(QStringLiteral("q"), 1);
                unknown = configuration->GetVariableValue(QStringLiteral("q"));
            });
        QCOMPARE(unknown, UBYTE(0));
        QCOMPARE(errors, QStringList{ErrorFrom(SOURCE, "Unknown Global Variable: \"q\"")});
    }

    // The TCP link is the port that comes and goes in practice: it is registered
    // while connected, and the matcher built for its name follows it.
    void PortRegisteredLaterBindsAndUnbinds()
    {
        cMIDIInputOutputMemory link(QStringLiteral("link"));
        configuration->SetMixerInputPortName(QLatin1String(TCP_MIDI_PORT_NAME));
        configuration->SetMixerOutputPortName(QLatin1String(TCP_MIDI_PORT_NAME));

        fixture->Feed(&link, {"B0 07 64"});
        QCOMPARE(fixture->Port("Tessera DAW")->TakeWrittenData().size(), 0);

        configuration->SetTCPMIDIInputOutput(&link);
        QCOMPARE(fixture->Through(TCP_MIDI_PORT_NAME, {"B0 07 64"}, "Tessera DAW"), QStringList{"E0 04 64"});
        QCOMPARE(fixture->Through("Tessera DAW", {"90 3C 7F"}, TCP_MIDI_PORT_NAME), QStringList{"B0 3C 7F"});

        configuration->SetTCPMIDIInputOutput(nullptr);
        QVERIFY(!registry->GetMIDIInput(QLatin1String(TCP_MIDI_PORT_NAME)));
        fixture->Feed(&link, {"B0 07 64"});
        QCOMPARE(fixture->Port("Tessera DAW")->TakeWrittenData().size(), 0);
    }

    void InvalidTriggerIdWritesNothing()
    {
        const QStringList errors = ErrorLinesOf(
            [&]
            {
                configuration->MIDIMatchTriggered(4, {0xB0, 0x07, 0x64});
                configuration->MIDIMatchTriggered(-1, {0xB0, 0x07, 0x64});
            });
        QCOMPARE(fixture->Port("Tessera DAW")->TakeWrittenData().size(), 0);
        QCOMPARE(errors, QStringList({ErrorFrom(SOURCE, "Invalid Trigger Id: 4"), ErrorFrom(SOURCE, "Invalid Trigger Id: -1")}));
    }

    void BadFileLeavesEmptyWorkingConfiguration_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("error");
        // What the user is told, after the file's path.
        QTest::addColumn<QString>("problem");

        QTest::newRow("missing") << TestDataFile("config/missing.json")
                                 << "^ERROR: Could not open file: .*/config/missing.json\t" << ": cannot be opened: ";
        QTest::newRow("syntax error") << TestDataFile("config/syntax_error.json")
                                      << "^ERROR: Json Parse Error: .+ for file .*/config/syntax_error.json\t"
                                      << ":4:1: JSON syntax error: unterminated object";
        QTest::newRow("top-level array") << TestDataFile("config/top_level_array.json") << ""
                                         << ": the top level is not a JSON object";
        QTest::newRow("no rules") << TestDataFile("config/empty_object.json") << "" << ": holds no rules";
    }

    void BadFileLeavesEmptyWorkingConfiguration()
    {
        QFETCH(QString, file);
        QFETCH(QString, error);
        QFETCH(QString, problem);

        const QStringList errors = ErrorLinesOf([&] { configuration->LoadFromFile(file); });
        if (error.isEmpty())
        {
            QCOMPARE(errors, QStringList());
        }
        else
        {
            QCOMPARE(errors.size(), 1);
            QVERIFY2(errors.at(0).contains(QRegularExpression(error)), qPrintable(errors.at(0)));
        }
        QCOMPARE(registry->GetVirtualInputOutputNames(), QStringList{"Desk"});
        QCOMPARE(configuration->GetMIDITranslatorRules().size(), 0);
        QCOMPARE(configuration->GetMIDITranslatorVariables().size(), 0);
        QCOMPARE(MatcherCount(), 0);
        QVERIFY2(configuration->GetLoadProblem().startsWith(file + problem), qPrintable(configuration->GetLoadProblem()));

        configuration->LoadFromFile(TestDataFile("config/translator.json"));
        QCOMPARE(fixture->Through("Desk", {"B0 07 64"}, "Tessera DAW"), QStringList{"E0 04 64"});
    }

    // What was written towards the console, given back: the last message of
    // each control, in the order they were last written.
    void RemembersTheLastValueOfEachControl_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("restored");
        QTest::newRow("controllers") << "B0 07 10 B0 08 20 B0 07 30 B1 07 40" << "B0 08 20 B0 07 30 B1 07 40";
        QTest::newRow("running status") << "B0 07 10 08 20" << "B0 07 10 B0 08 20";
        QTest::newRow("a lamp lit and put out") << "90 10 7F 90 11 7F 80 10 00" << "90 11 7F 80 10 00";
        QTest::newRow("pitch bend, pressure") << "E0 00 40 D0 22 E1 01 01 E0 7F 7F D0 23" << "E1 01 01 E0 7F 7F D0 23";
        QTest::newRow("nothing else") << "F0 7D 01 02 F7 C0 05 A0 10 20 F2 10 20 B0 07 F8 11 FE" << "B0 07 11";
        QTest::newRow("parameters") << "B0 63 00 B0 62 01 B0 06 40 B0 26 10 B0 63 00 B0 62 02 B0 06 50 B0 06 41"
                                    << "B0 63 00 B0 62 01 B0 06 40 B0 26 10 B0 63 00 B0 62 02 B0 06 41";
        QTest::newRow("a parameter unselected or stepped") << "B0 65 00 B0 64 00 B0 06 02 B0 65 7F B0 64 7F B0 06 09 "
                                                              "B0 63 00 B0 62 05 B0 06 10 B0 60 01"
                                                           << "B0 65 00 B0 64 00 B0 06 02";
        QTest::newRow("data entry for no parameter") << "B0 06 40 B0 60 01" << "B0 06 40 B0 60 01";
        // One more parameter than are kept: the first one written gives way.
        QStringList parameters;
        for (int number = 0; number <= cMIDIControlMemory::MAXIMUM_PARAMETERS; ++number)
        {
            parameters.append("B0 63 " + Hex(number >> 7) + " B0 62 " + Hex(number & 0x7F) + " B0 06 00");
        }
        QTest::newRow("bounded") << parameters.join(' ') << parameters.mid(1).join(' ');
    }

    void RemembersTheLastValueOfEachControl()
    {
        QFETCH(QString, written);
        QFETCH(QString, restored);
        cMixerStateRestorer* restorer = configuration->GetMixerStateRestorer();
        restorer->SetEnabled(true);
        restorer->Remember(Bytes(written));
        restorer->LinkConnected(QStringLiteral("Stage"));
        QCOMPARE(HexWrites(desk->TakeWrittenData()), QStringList(restored));
    }

    // An interface replugged: it gets what was written while it was away
    // too, at the pace of a DIN cable, and a value the DAW sets meanwhile
    // stays as set.
    void ReturningPortGetsItsStateAtDINPace()
    {
        configuration->SetMixerOutputPortName(QStringLiteral("Desk B"));
        configuration->GetMixerStateRestorer()->SetEnabled(true);
        // "Select" writes a controller for each note: all but those that
        // select a parameter and give its value.
        QStringList notes;
        QStringList controllers;
        for (int number = 0; number < 128; ++number)
        {
            if (number != 6 && number != 38 && (number < 96 || number > 101))
            {
                notes.append("90 " + Hex(number) + " 01");
                controllers.append("B0 " + Hex(number) + " 01");
            }
        }
        cMIDIInputOutputMemory* daw = fixture->Port("Tessera DAW");
        fixture->Feed(daw, notes.mid(0, 60));
        registry->RemoveSystemInputOutput(QStringLiteral("Desk B"));
        fixture->Feed(daw, notes.mid(60));

        QElapsedTimer clock;
        clock.start();
        registry->AddSystemInputOutput(QStringLiteral("Desk B"));
        fixture->Feed(daw, {"90 7F 02"});
        QStringList received;
        QTRY_VERIFY_WITH_TIMEOUT((received += HexWrites(fixture->Port("Desk B")->TakeWrittenData()),
                                  received.join(' ').size() >= controllers.join(' ').size()), 5000);
        const qint64 elapsed = clock.elapsed();
        QTest::qWait(50);
        QVERIFY(fixture->Port("Desk B")->TakeWrittenData().isEmpty());
        QVERIFY(received.removeOne("B0 7F 02"));
        QCOMPARE(received.join(' '), controllers.mid(0, controllers.size() - 1).join(' '));
        const qint64 dinMs = (controllers.size() - 2) * 3 * 1000 / cMixerStateRestorer::DIN_BYTES_PER_SECOND;
        QVERIFY2(elapsed >= dinMs, qPrintable(QStringLiteral("%1 ms for %2 ms at DIN speed").arg(elapsed).arg(dinMs)));
    }

    // The state goes only to the console it came from, and is written again
    // only by the rules that wrote it.
    void ForgetsWhatAnotherConsoleMustNotGet_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("restored");
        QTest::newRow("none") << "none" << "B0 10 7F";
        QTest::newRow("rule file loaded") << "rule file" << "";
        QTest::newRow("variable set") << "variable" << "";
        QTest::newRow("output pointed elsewhere and back") << "output" << "";
        QTest::newRow("another console on the link") << "console" << "";
        QTest::newRow("turned off and on") << "off" << "";
    }

    void ForgetsWhatAnotherConsoleMustNotGet()
    {
        QFETCH(QString, change);
        QFETCH(QString, restored);
        cMixerStateRestorer* restorer = configuration->GetMixerStateRestorer();
        restorer->SetEnabled(true);
        restorer->LinkConnected(QStringLiteral("Stage"));
        QCOMPARE(fixture->Through("Tessera DAW", {"90 10 7F"}, "Desk"), QStringList("B0 10 7F"));
        QString console = QStringLiteral("Stage");
        if (change == "rule file")
        {
            configuration->LoadFromFile(TestDataFile("config/translator.json"));
        }
        else if (change == "variable")
        {
            configuration->SetVariableValue(QStringLiteral("n"), 0);
        }
        else if (change == "output")
        {
            configuration->SetMixerOutputPortName(QStringLiteral("Desk B"));
            configuration->SetMixerOutputPortName(QStringLiteral("Desk"));
        }
        else if (change == "console")
        {
            console = QStringLiteral("Stage Right");
        }
        else if (change == "off")
        {
            restorer->SetEnabled(false);
            restorer->SetEnabled(true);
        }
        restorer->LinkConnected(console);
        QCOMPARE(HexWrites(desk->TakeWrittenData()).join(' '), restored);
    }

private:
    int MatcherCount() const
    {
        return configuration->findChildren<cMIDIInputMatcher*>().size();
    }

    std::unique_ptr<cTranslatorFixture> fixture;
    cSystemMIDIConfigurationMemory* registry = nullptr;
    cMIDITranslatorConfiguration* configuration = nullptr;
    std::unique_ptr<cMIDIInputOutputMemory> desk;
};

QTEST_GUILESS_MAIN(tConfiguration)
#include "test_configuration.moc"
