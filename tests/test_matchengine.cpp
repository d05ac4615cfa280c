#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNode.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNodeEndpoint.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"
#include "support/MatchRecorder.h"

#include <QtTest>

class tMatchEngine : public QObject
{
    Q_OBJECT

private:
    static void Feed(cMIDIMatchManager& manager, const QString& hex)
    {
        for (char byte : MIDIBytes(hex))
        {
            manager.ProcessByte(static_cast<unsigned char>(byte));
        }
    }

    // A manager holding the given patterns under identifiers 1, 2, ...
    struct sEngine
    {
        cMatchRecorder recorder;
        cMIDIMatchManager manager{&recorder};

        explicit sEngine(const QStringList& patterns)
        {
            for (int index = 0; index < patterns.size(); ++index)
            {
                manager.AddMIDIMatchNibbleListIdentifierToTree(MatchPattern(index + 1, patterns[index]));
            }
        }
    };

private slots:
    void Matching_data()
    {
        QTest::addColumn<QStringList>("patterns"); // one per identifier, starting at 1
        QTest::addColumn<QString>("stream");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("empty tree") << QStringList() << "B0 07 7F 00 FF" << QStringList();
        QTest::newRow("wildcard and literal end together, in insertion order")
            << QStringList{"B0 07 **", "B0 07 7F"} << "B0 07 7F" << QStringList{"1:B0077F", "2:B0077F"};
        // The starts at 02 and 03 would fire again inside the first match.
        QTest::newRow("overlapping starts are barred, a start after the firing is not")
            << QStringList{"** ** **"} << "01 02 03 04 05 06" << QStringList{"1:010203", "1:040506"};
        QTest::newRow("identical patterns both fire")
            << QStringList{"90 ** **", "90 ** **"} << "90 40 7F" << QStringList{"1:90407F", "2:90407F"};
        QTest::newRow("literal 0 shares the wildcard path")
            << QStringList{"B0 07 **", "B0 07 00"} << "B0 07 55" << QStringList{"1:B00755", "2:B00755"};
        QTest::newRow("wildcard shares the literal 0 path")
            << QStringList{"90 **", "9* 40"} << "91 40 90 40" << QStringList{"1:9040", "2:9040"};
        QTest::newRow("one state: a wildcard's endpoint before an older literal one's")
            << QStringList{"B0 7F", "B0 7*"} << "B0 7F" << QStringList{"2:B07F", "1:B07F"};
        QTest::newRow("fork: older branch fires first")
            << QStringList{"9* 40", "91 40"} << "91 40 92 40" << QStringList{"1:9140", "2:9140", "1:9240"};
        QTest::newRow("fork: the wildcard branch goes before an older literal one")
            << QStringList{"91 40", "9* 40"} << "91 40" << QStringList{"2:9140", "1:9140"};
        QTest::newRow("shorter pattern fires, longer one goes on")
            << QStringList{"B0 07", "B0 07 40"} << "B0 07 40" << QStringList{"1:B007", "2:B00740"};
        QTest::newRow("odd pattern fires at a high nibble with whole bytes only")
            << QStringList{"B07"} << "B0 71" << QStringList{"1:B0"};
        QTest::newRow("one nibble patterns never fire") << QStringList{"B"} << "B0 B1" << QStringList();
        QTest::newRow("a match may begin at a data byte")
            << QStringList{"40 **"} << "90 40 7F" << QStringList{"1:407F"};
        QTest::newRow("system exclusive through a stray byte")
            << QStringList{"F0 00 20 ** F7"} << "F0 00 20 F0 00 20 33 F7" << QStringList{"1:F0002033F7"};
    }

    void Matching()
    {
        QFETCH(QStringList, patterns);
        QFETCH(QString, stream);
        QFETCH(QStringList, expected);

        sEngine engine(patterns);
        Feed(engine.manager, stream);
        QCOMPARE(engine.recorder.triggers, expected);
    }

    void EndpointsOfADetachedSubtree()
    {
        cMIDIMatchBranchNode root({0, 0}, 0), top({0xB, 0}, 1);
        auto* leaf = new cMIDIMatchBranchNode({0, 1}, 2);
        top.AddChildBranchNode(leaf);
        auto* endpoint = new cMIDIMatchBranchNodeEndpoint(nullptr, 1, {});
        leaf->AddBranchNodeEndpoint(endpoint);
        QVERIFY(top.HasChildBranchNodeEndpoint(endpoint) && !root.HasChildBranchNodeEndpoint(endpoint));
    }

    void DuplicateIdentifier()
    {
        sEngine engine({"B0 07 **"});
        const QStringList lines =
            ErrorLinesOf([&] { engine.manager.AddMIDIMatchNibbleListIdentifierToTree(MatchPattern(1, "90 ** **")); });
        QCOMPARE(lines, QStringList{ErrorFrom("Common/MIDI/MIDIMatch/MIDIMatchManager.cpp", "Identifier 1 is alread in use")});
        Feed(engine.manager, "B0 07 01 90 40 7F");
        QCOMPARE(engine.recorder.triggers, (QStringList{"1:B00701", "1:90407F"}));
    }

    // Patterns are never removed while the program runs; fuzz_matchengine
    // removes them mid-stream. This one kept a state on a deleted endpoint.
    void RemovalWhileBarred()
    {
        sEngine engine({"** ** **", "** ** ** **"});
        cMIDIMatchManager& manager = engine.manager;
        // The states begun at 02 and 03 are barred from the first pattern when
        // it goes; the second one still fires once, then is barred in turn.
        Feed(manager, "01 02 03");
        manager.RemoveMIDIMatchIdentifierFromTree(1);
        QCOMPARE(manager.GetProcessStates().Size(), size_t(3));
        Feed(manager, "04 05 06");
        QCOMPARE(engine.recorder.triggers, (QStringList{"1:010203", "2:01020304"}));
    }
};

QTEST_APPLESS_MAIN(tMatchEngine)
#include "test_matchengine.moc"
