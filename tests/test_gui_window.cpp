// The preferences window driven through its widgets as a user would, over
// in-memory MIDI ports and a temporary settings store. The rule files and
// the mixer map come from tests/data/gui, copied beside this test as the
// program's resources. The window runs discovery, so this test runs inside
// the private network namespace; its last cases talk to mixer-sim.

#include "Application/ApplicationStrings.h"
#include "Application/MIDIActiveWidget.h"
#include "Application/MIDIMonitorModel.h"
#include "Application/MIDIMonitorWindow.h"
#include "Application/MainWindow.h"
#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "Network/TCPMIDIInptOutput.h"
#include "support/MixerSimProcess.h"
#include "support/PrivateNetwork.h"
#include "support/ProgramSettings.h"
#include "support/TestHelpers.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QMenu>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkInterface>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>
#include <QValidator>

#include <algorithm>

namespace
{
const QString DAW_PORT = QStringLiteral("Tessera DAW");

QStringList Items(QComboBox* comboBox)
{
    QStringList items;
    for (int index = 0; index < comboBox->count(); ++index)
    {
        items.append(comboBox->itemText(index));
    }
    return items;
}

void Choose(QComboBox* comboBox, const QString& text)
{
    const int index = comboBox->findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    comboBox->setCurrentIndex(index);
}

// Everything written to a port until something arrives (or two seconds pass).
QByteArray Written(cMIDIInputOutputMemory* port)
{
    QByteArray bytes;
    static_cast<void>(QTest::qWaitFor([&]() {
        for (const QByteArray& write : port->TakeWrittenData())
        {
            bytes += write;
        }
        return !bytes.isEmpty();
    }, 2000));
    return bytes;
}

// Settings as a previous run left them.
void Store(const QList<QPair<QString, QString>>& values)
{
    QSettings settings;
    for (const auto& value : values)
    {
        settings.setValue(value.first, value.second);
    }
}

// The child of that type showing that text, as a user finds it.
template <typename T> T* WithText(const QObject* parent, const QString& text)
{
    const QList<T*> children = parent->findChildren<T*>();
    const auto found = std::find_if(children.begin(), children.end(), [&](T* child) { return child->text() == text; });
    return found == children.end() ? nullptr : *found;
}

bool LampIsLit(QWidget* lamp)
{
    return lamp->grab().toImage().pixelColor(4, 4) == Qt::black;
}

// The MIDI that mixer-sim has received, one message each.
QStringList Received(cMixerSimProcess& sim)
{
    QStringList messages;
    for (const QString& line : sim.Lines().filter(" in  "))
    {
        messages.append(line.section(" in  ", 1));
    }
    return messages;
}

// An address of this machine besides loopback, for a mixer that comes back
// somewhere else on the network.
QHostAddress OtherLocalAddress()
{
    const QList<QHostAddress> addresses = QNetworkInterface::allAddresses();
    const auto other = std::find_if(addresses.begin(), addresses.end(),
        [](const QHostAddress& a) { return a.protocol() == QAbstractSocket::IPv4Protocol && !a.isLoopback(); });
    return other == addresses.end() ? QHostAddress() : *other;
}

// One window over its own in-memory registry; ports plugged in before it is
// made are there when it starts, as on a real machine.
class cWindowUnderTest
{
public:
    explicit cWindowUnderTest(const QStringList& systemPorts = {})
        : registry(new cSystemMIDIConfigurationMemory)
    {
        for (const QString& name : systemPorts)
        {
            registry->AddSystemInputOutput(name);
        }
        window.reset(new cMainWindow(registry));
    }

    template <typename T> T* Widget(const char* name) const
    {
        return window->findChild<T*>(QLatin1String(name));
    }
    QComboBox* Mixer() const { return Widget<QComboBox>("mMixerTypeComboBox"); }
    QComboBox* Protocol() const { return Widget<QComboBox>("mDAWTypeComboBox"); }
    QComboBox* Channel() const { return Widget<QComboBox>("mMIDIChannelComboBox"); }
    QComboBox* Input() const { return Widget<QComboBox>("mMixerMIDIInComboBox"); }
    QComboBox* Output() const { return Widget<QComboBox>("mMixerMIDIOutComboBox"); }
    QComboBox* Units() const { return Widget<QComboBox>("mUnitComboBox"); }
    QRadioButton* MIDIPorts() const { return Widget<QRadioButton>("mMIDIPortsRadioButton"); }
    QRadioButton* TCPIP() const { return Widget<QRadioButton>("mTCPIPRadioButton"); }
    QLineEdit* Address() const { return Widget<QLineEdit>("mIPAddressEdit"); }
    QCheckBox* Connect() const { return Widget<QCheckBox>("mConnectCheckBox"); }
    QWidget* InputLamp() const { return Widget<QWidget>("mMixerMIDIInActiveWidget"); }
    QAction* Action(const QString& text) const { return WithText<QAction>(window.get(), text); }
    // The lamp lights once the bytes are translated and goes dark one short
    // interval later: look at it in the first event after the translated
    // bytes come out.
    void WatchInputLamp(bool& lit) const
    {
        QObject::connect(Port(QStringLiteral("Tessera DAW")), &cMIDIInputOutputMemory::MIDIWritten, window.get(),
            [this, &lit]() { lit = LampIsLit(InputLamp()); }, Qt::QueuedConnection);
    }
    // The state, with its details as tooltip, and the warning sign, with the
    // problems as its tooltip; and what the tray tooltip says of both.
    QString Status() const { return Widget<QLabel>("mStateLabel")->text(); }
    QString StatusDetails() const { return Widget<QLabel>("mStateLabel")->toolTip(); }
    QString Warning() const
    {
        QLabel* sign = Widget<QLabel>("mWarningSign");
        return sign->isVisibleTo(window.get()) ? sign->toolTip() : QString();
    }
    QString TrayToolTip() const { return window->findChild<QSystemTrayIcon*>()->toolTip(); }
    cMIDIInputOutputMemory* Port(const QString& name) const { return registry->GetMemoryInputOutput(name); }

    cSystemMIDIConfigurationMemory* registry;
    std::unique_ptr<cMainWindow> window;
};
}

class cTestGuiWindow : public QObject
{
    Q_OBJECT

public:
    // The window broadcasts to find mixers, and a mixer comes back at an
    // address besides loopback.
    static void initMain() { RequirePrivateNetwork(); }

private slots:
    void initTestCase()
    {
        QVERIFY(settingsDirectory.isValid());
        UseSettingsIn(settingsDirectory.path());
        // The login entry goes beside the settings, not into the user's own.
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(settingsDirectory.path()));
    }

    void init()
    {
        QSettings().clear();
    }

    void FreshStartSelectsDefaults()
    {
        cWindowUnderTest t;
        QCOMPARE(Items(t.Mixer()), QStringList({"Tx-12", "Tx-16"}));
        QCOMPARE(t.Mixer()->currentText(), QStringLiteral("Tx-12"));
        QCOMPARE(Items(t.Protocol()),
            QStringList({"Fader Protocol", "Note Protocol", "Unmapped Protocol", "Broken Protocol"}));
        QCOMPARE(t.Protocol()->currentText(), QStringLiteral("Fader Protocol"));
        QCOMPARE(t.Channel()->currentText(), QStringLiteral("2"));
        QVERIFY(t.MIDIPorts()->isChecked());
        QCOMPARE(Items(t.Input()), QStringList({"-"}));
        QCOMPARE(Items(t.Output()), QStringList({"-"}));
        QCOMPARE(t.Address()->text(), QStringLiteral("192.168.1.1"));
        QVERIFY(!t.Connect()->isChecked());
        QVERIFY(t.Input()->isVisibleTo(t.window.get()));
        QVERIFY(!t.Units()->isVisibleTo(t.window.get()));
        QCOMPARE(t.Warning(), QString());
        QCOMPARE(t.TrayToolTip(), QStringLiteral("Tessera: Tx-12, Fader Protocol, MIDI ports"));
    }

    // The entries themselves are followed by the tray checks on a real X
    // server (x11/): "&Show Preferences" shows the window, "&Help" opens the
    // manual and "&Quit" quits.
    void TrayMenuShowsWindow()
    {
        cWindowUnderTest t;
        QSystemTrayIcon* trayIcon = t.window->findChild<QSystemTrayIcon*>();
        QVERIFY(trayIcon);
        QVERIFY(!trayIcon->icon().isNull());
        QMenu* menu = trayIcon->contextMenu();
        QStringList texts;
        for (QAction* action : menu->actions())
        {
            texts.append(action->isSeparator() ? QStringLiteral("--") : action->text());
        }
        QCOMPARE(texts, QStringList({"&Show Preferences", "MIDI Monitor", "--", "Stay Connected",
                            "Resend State on Reconnect", "Start at Login", "--", "&Help", "&About", "--", "&Quit"}));
        // tessera(1) tells what each entry does.
        const QString manPage = QString::fromUtf8(ReadFile(QStringLiteral(TESSERA_SOURCE_DIR "/docs/man/tessera.1.md")));
        for (const QString& text : texts.filter(QRegularExpression("^[^-]")))
        {
            QVERIFY2(manPage.contains("\n**" + QString(text).remove('&') + "**\n:   "), qPrintable(text));
        }

        // Only a double click on the icon opens the window.
        emit trayIcon->activated(QSystemTrayIcon::Trigger);
        QVERIFY(!t.window->isVisible());
        emit trayIcon->activated(QSystemTrayIcon::DoubleClick);
        QVERIFY(t.window->isVisible());
    }

    void StartAtLoginFollowsTheLoginEntry()
    {
        QDir config(settingsDirectory.path());
        QFile entry(config.filePath("autostart/com.kestrel.Tessera.desktop"));
        cWindowUnderTest t;
        QMenu* menu = t.window->findChild<QSystemTrayIcon*>()->contextMenu();
        QAction* startAtLogin = t.Action("Start at Login");
        QVERIFY(!startAtLogin->isChecked());

        // The session's own settings may add or remove the entry meanwhile:
        // the menu shows what is there each time it opens.
        QVERIFY(config.mkdir("autostart") && entry.open(QIODevice::WriteOnly));
        entry.close();
        emit menu->aboutToShow();
        QVERIFY(startAtLogin->isChecked());
        startAtLogin->trigger();
        QVERIFY(!entry.exists() && !startAtLogin->isChecked());

        // A session switches an entry off by marking it hidden; ticking writes it anew.
        QVERIFY(entry.open(QIODevice::WriteOnly) && entry.write("[Desktop Entry]\nHidden=true\n") > 0);
        entry.close();
        emit menu->aboutToShow();
        QVERIFY(!startAtLogin->isChecked());
        startAtLogin->trigger();
        QVERIFY(startAtLogin->isChecked() && !ReadFile(entry.fileName()).contains("Hidden"));
        startAtLogin->trigger();

        // Where the entry cannot be written, the tick stays off, with the reason traced.
        QFile blocker(config.filePath("autostart"));
        QVERIFY(config.rmdir("autostart") && blocker.open(QIODevice::WriteOnly));
        cStdoutCapture capture;
        startAtLogin->trigger();
        QVERIFY(!startAtLogin->isChecked());
        QVERIFY(capture.Text().contains("ERROR: Could not write autostart entry: " + entry.fileName()));
        QVERIFY(blocker.remove());
    }

    // An earlier release's name is carried over; any other unknown name, even
    // one that differs only in case, gives way to the first mixer.
    void StoredMixerTypeIsSelected()
    {
        for (const auto& stored : QList<QPair<QString, QString>>{{"Tx", "Tx-16"}, {"tx", "Tx-12"}})
        {
            QSettings().setValue("MixerType", stored.first);
            cWindowUnderTest t;
            QCOMPARE(t.Mixer()->currentText(), stored.second);
            QCOMPARE(QSettings().value("MixerType").toString(), stored.second);
        }
    }

    void EachMixerTypeKeepsItsChoices()
    {
        cWindowUnderTest t({"Desk A", "Desk B"});
        QCOMPARE(Items(t.Input()), QStringList({"-", "Desk A", "Desk B"}));
        Choose(t.Input(), "Desk B");
        Choose(t.Output(), "Desk A");
        Choose(t.Channel(), "5");
        Choose(t.Protocol(), "Note Protocol");

        Choose(t.Mixer(), "Tx-16");
        QCOMPARE(t.Input()->currentText(), QStringLiteral("-"));
        QCOMPARE(t.Output()->currentText(), QStringLiteral("-"));
        QCOMPARE(t.Channel()->currentText(), QStringLiteral("2"));
        QVERIFY(t.MIDIPorts()->isChecked());
        QCOMPARE(t.Protocol()->currentText(), QStringLiteral("Note Protocol"));

        t.TCPIP()->click();
        QVERIFY(t.Units()->isVisibleTo(t.window.get()));
        QVERIFY(!t.Input()->isVisibleTo(t.window.get()));
        // Leading zeros are decimal, not octal, and saved as connected to.
        t.Address()->setText("127.000.000.010");
        t.Connect()->click();
        QVERIFY(!t.Address()->isEnabled());
        QVERIFY(!t.Units()->isEnabled());

        Choose(t.Mixer(), "Tx-12");
        QVERIFY(t.MIDIPorts()->isChecked());
        QCOMPARE(t.Input()->currentText(), QStringLiteral("Desk B"));
        QCOMPARE(t.Output()->currentText(), QStringLiteral("Desk A"));
        QCOMPARE(t.Channel()->currentText(), QStringLiteral("5"));
        QCOMPARE(t.Protocol()->currentText(), QStringLiteral("Note Protocol"));

        Choose(t.Mixer(), "Tx-16");
        QVERIFY(t.TCPIP()->isChecked());
        QVERIFY(!t.Connect()->isChecked());
        QCOMPARE(t.Units()->currentText(), CUSTOM_UNIT_STRING);
        QCOMPARE(t.Address()->text(), QStringLiteral("127.0.0.10"));
        QVERIFY(t.Address()->isEnabled());

        // Every choice above came back from the settings; these two are stored
        // in a form of their own.
        QSettings settings;
        QCOMPARE(settings.value("Tx-16/Connection/DefaultUnitIP").toString(), QStringLiteral("127.0.0.10"));
        QCOMPARE(settings.value("Tx-12/MIDIChannel").toUInt(), 4u);
    }

    void ProtocolAndChannelDriveTranslation()
    {
        Store({{"MixerType", "Tx-16"}, {"Tx-16/MIDI/InputPort", "Desk"}, {"Tx-16/MIDI/OutputPort", "Desk"}});
        cWindowUnderTest t({"Desk"});

        // Both channel variables of the rule file follow the choice: the rule
        // listens on one and writes on the other.
        Choose(t.Channel(), "3");
        bool litWhileTranslating = false;
        t.WatchInputLamp(litWhileTranslating);
        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("B20740"));
        QCOMPARE(Written(t.Port(DAW_PORT)).toHex(' '), QByteArray("b2 07 40"));
        QTRY_VERIFY(litWhileTranslating);
        QTRY_VERIFY(!LampIsLit(t.InputLamp()));

        t.Port(DAW_PORT)->ReceiveMIDIData(QByteArray::fromHex("B00710"));
        QCOMPARE(Written(t.Port("Desk")).toHex(' '), QByteArray("b2 07 10"));
        // A variable described otherwise keeps its own value.
        t.Port(DAW_PORT)->ReceiveMIDIData(QByteArray::fromHex("B00811"));
        QCOMPARE(Written(t.Port("Desk")).toHex(' '), QByteArray("b0 07 11"));

        // Another protocol is another rule file, with the channel applied again.
        Choose(t.Protocol(), "Note Protocol");
        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("B20741"));
        QCOMPARE(Written(t.Port(DAW_PORT)).toHex(' '), QByteArray("92 01 41"));
    }

    void AbsentPortStaysConfigured()
    {
        Store({{"MixerType", "Tx-16"}, {"Tx-16/MIDI/InputPort", "Gone Port"}});
        QSettings settings;
        cWindowUnderTest t;
        QCOMPARE(Items(t.Input()), QStringList({"-", "(Offline) Gone Port"}));
        QCOMPARE(t.Input()->currentIndex(), 1);
        const QString offline = "Input Port \"Gone Port\" is offline: plug it in, or choose another port.";
        QCOMPARE(t.Warning(), offline);
        QCOMPARE(t.TrayToolTip(), "Tessera: Tx-16, Fader Protocol, MIDI ports\n" + offline);
        // The mixer's ports are not used in the TCP/IP mode.
        t.TCPIP()->click();
        QCOMPARE(t.Warning(), QString());
        t.MIDIPorts()->click();

        t.registry->AddSystemInputOutput("Gone Port");
        QCOMPARE(Items(t.Input()), QStringList({"-", "Gone Port"}));
        QCOMPARE(t.Input()->currentText(), QStringLiteral("Gone Port"));
        QCOMPARE(t.Warning(), QString());
        t.Port("Gone Port")->ReceiveMIDIData(QByteArray::fromHex("B10722"));
        QCOMPARE(Written(t.Port(DAW_PORT)).toHex(' '), QByteArray("b1 07 22"));

        t.registry->RemoveSystemInputOutput("Gone Port");
        QCOMPARE(Items(t.Input()), QStringList({"-", "(Offline) Gone Port"}));
        QCOMPARE(settings.value("Tx-16/MIDI/InputPort").toString(), QStringLiteral("Gone Port"));

        QCOMPARE(t.Warning(), offline);
        Choose(t.Input(), "-");
        QCOMPARE(Items(t.Input()), QStringList({"-", "(Offline) Gone Port"}));
        QCOMPARE(settings.value("Tx-16/MIDI/InputPort").toString(), QString());
        QCOMPARE(t.Warning(), QString());
    }

    // Names that differ only at their end are told apart: the list is as
    // wide as its longest name, and the window, still of fixed size, as
    // wide as the list.
    void LongPortNamesAreShownWhole()
    {
        cWindowUnderTest t;
        t.window->show();
        QCoreApplication::processEvents();
        const int width = t.window->width();
        const QString longName = "Virtual Raw MIDI 0-0:VirMIDI 0-0 on the stage box behind the monitor desk";
        t.registry->AddSystemInputOutput(longName);
        Choose(t.Input(), longName);
        QTRY_VERIFY(t.Input()->width() > t.Input()->fontMetrics().horizontalAdvance(longName));
        QVERIFY(t.window->width() > width);
        QCOMPARE(t.window->minimumSize(), t.window->maximumSize());
        QCOMPARE(t.Input()->toolTip(), longName);
        QCOMPARE(t.Input()->itemData(1, Qt::ToolTipRole).toString(), longName);

        Choose(t.Input(), "-");
        t.registry->RemoveSystemInputOutput(longName);
        QTRY_COMPARE(t.window->width(), width);
    }

    // The address field's validator rates what is typed (typing cannot go
    // past Invalid, so it is never edited); only an acceptable address
    // enables Connect.
    void ConnectFollowsAddress()
    {
        cWindowUnderTest t;
        t.TCPIP()->click();
        QCOMPARE(t.Status(), QStringLiteral("Not Connected"));
        const QValidator* validator = t.Address()->validator();
        const QList<QPair<QString, QValidator::State>> rated = {{"192.168.1.1", QValidator::Acceptable},
            {"256.1.1.1", QValidator::Invalid}, {"192.168..1", QValidator::Intermediate},
            {" 10. 0 .0  .7 ", QValidator::Acceptable}, {"0.0.0.0", QValidator::Invalid},
            {"0.0.0.1", QValidator::Acceptable}, {"10.a.0.1", QValidator::Invalid},
            {"010.001.000.255", QValidator::Acceptable}};
        for (const auto& entry : rated)
        {
            QString text = entry.first;
            int position = 3;
            QVERIFY2(validator->validate(text, position) == entry.second && text == entry.first && position == 3,
                qPrintable(entry.first));
        }
        t.Address()->setText("192.168..1");
        QVERIFY(!t.Connect()->isEnabled());
        t.Address()->setText("10.1.1.1");
        QVERIFY(t.Connect()->isEnabled());
    }

    // Beside the state text, why the link is down and what to do, and the
    // same in short in the tray's tooltip.
    void ConnectionFailuresAreExplained()
    {
        Store({{"MixerType", "Tx-16"}, {"Tx-16/Mode", "TCP"}});
        cWindowUnderTest t;
        t.Address()->setText("127.0.0.9");
        t.Connect()->click();
        QTRY_VERIFY(t.StatusDetails().startsWith("127.0.0.9 refused the connection"));
        QCOMPARE(t.Status(), QStringLiteral("Not Connected"));
        QVERIFY(t.StatusDetails().endsWith("Connect stays ticked: untick and tick it to try again, or turn on Stay "
                                           "Connected in the tray menu."));
        QCOMPARE(t.TrayToolTip(), QStringLiteral("Tessera: Tx-16, Fader Protocol, not connected to 127.0.0.9: refused"));

        cMixerSimProcess sim({"--address", "127.0.0.9"});
        QVERIFY(sim.IsListening());
        t.Connect()->click();
        t.Connect()->click();
        QTRY_COMPARE(t.Status(), QStringLiteral("Connected"));
        QCOMPARE(t.StatusDetails(), QStringLiteral("Connected to 127.0.0.9, port 51325."));
        QCOMPARE(t.TrayToolTip(), QStringLiteral("Tessera: Tx-16, Fader Protocol, connected to 127.0.0.9"));
        QVERIFY(sim.Stop());
        QTRY_VERIFY(t.StatusDetails().startsWith("The console at 127.0.0.9 closed the connection."));
        QCOMPARE(t.Status(), QStringLiteral("Not Connected"));
        QVERIFY(t.TrayToolTip().endsWith("not connected to 127.0.0.9: closed by the console"));

        // Unticked, nothing is wrong.
        t.Connect()->click();
        QCOMPARE(t.StatusDetails(), QString());
        QCOMPARE(t.TrayToolTip(), QStringLiteral("Tessera: Tx-16, Fader Protocol, not connected"));
    }

    // Where no program opens the manual, the trace names it once, by a file
    // URL that any program takes.
    void HelpWithoutAViewerSaysSo()
    {
        cWindowUnderTest t;
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", "/nonexistent");
        const QStringList errors = ErrorLinesOf([&] { t.Action("&Help")->trigger(); });
        qputenv("PATH", path);
        const QString manual = QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../Resources/HelpManual.pdf");
        QCOMPARE(errors, QStringList(ErrorFrom("Application/HelpManual.cpp",
                             "No viewer opened the help manual: file://" + manual)));
    }

    // What a user looks at when a fader does nothing: each message read with
    // the rules it took part in (the second rule's pattern spans two
    // messages), what they wrote, and what no rule wanted; the clock and
    // Active Sensing only when asked for.
    void MIDIMonitorShowsTraffic()
    {
        Store({{"MixerType", "Tx-16"}, {"Tx-16/MIDI/InputPort", "Desk"}});
        cWindowUnderTest t({"Desk"});
        t.Action("MIDI Monitor")->trigger();
        cMIDIMonitorWindow* monitor = t.window->findChild<cMIDIMonitorWindow*>();
        QVERIFY(monitor->isVisible());
        QTreeView* view = monitor->findChild<QTreeView*>();
        auto* rows = static_cast<cMIDIMonitorModel*>(view->model());
        // Times differ from run to run.
        auto rowsWithoutTime = [rows](int first) {
            QStringList texts;
            for (int row = first; row < rows->rowCount(); ++row)
            {
                texts.append(rows->GetRowText(row).section(QLatin1Char('\t'), 1));
            }
            return texts;
        };
        auto button = [monitor](const QString& text) { return WithText<QPushButton>(monitor, text); };

        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("FEB10764B16300B10640F8C105"));
        QTRY_COMPARE(rows->rowCount(), 6);
        QCOMPARE(rowsWithoutTime(0), QStringList({
            "in\tMixer In (Desk)\tB1 07 64\tCC 7 = 100, ch 2\tFader to DAW",
            "out\tTessera DAW\tB1 07 64\tCC 7 = 100, ch 2\tFader to DAW",
            "in\tMixer In (Desk)\tB1 63 00\tCC 99 = 0, ch 2\tMute to DAW",
            "in\tMixer In (Desk)\tB1 06 40\tCC 6 = 64, ch 2\tMute to DAW",
            "out\tTessera DAW\t91 10 40\tNote On 16 vel 64, ch 2\tMute to DAW",
            "in\tMixer In (Desk)\tC1 05\tProgram Change 5, ch 2\tno rule"}));
        QVERIFY2(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d\t").match(rows->GetRowText(0)).hasMatch(),
            qPrintable(rows->GetRowText(0)));
        WithText<QCheckBox>(monitor, "Hide clock and Active Sensing")->click();
        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("F8"));
        QTRY_COMPARE(rowsWithoutTime(6), QStringList("in\tMixer In (Desk)\tF8\tClock\tno rule"));

        // Copied rows read as saved ones.
        view->selectionModel()->select(rows->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        view->selectionModel()->select(rows->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), rows->GetRowText(1) + "\n" + rows->GetRowText(3) + "\n");

        button("Pause")->click();
        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("B10765"));
        QTest::qWait(300);
        QCOMPARE(rows->rowCount(), 7);
        button("Pause")->click();
        button("Clear")->click();
        QCOMPARE(rows->rowCount(), 0);

        // A dump longer than a message is kept comes out cut, the rest of it
        // dropped; on screen its row shows only its start, a saved file all
        // the row holds.
        const QByteArray dump = QByteArray::fromHex("F07D") + QByteArray(300000, '\x11') + QByteArray::fromHex("F7");
        t.Port("Desk")->ReceiveMIDIData(dump + QByteArray::fromHex("C105"));
        QTRY_COMPARE(rows->rowCount(), 2);
        QCOMPARE(rows->index(0, cMIDIMonitorModel::BYTES_COLUMN).data().toString(),
            "F0 7D" + QString(" 11").repeated(30) + " ... 262144 bytes");
        QCOMPARE(rows->index(0, cMIDIMonitorModel::MESSAGE_COLUMN).data().toString(), "SysEx 262144 bytes, cut short");
        QCOMPARE(rowsWithoutTime(1), QStringList({"in\tMixer In (Desk)\tC1 05\tProgram Change 5, ch 2\tno rule"}));
        QTemporaryDir dumpDirectory;
        QVERIFY(monitor->SaveToFile(dumpDirectory.filePath("dump.txt")));
        QCOMPARE(ReadFile(dumpDirectory.filePath("dump.txt")).split('\n').at(1).split('\t').at(3),
            dump.left(262144).toHex(' ').toUpper());
        button("Clear")->click();

        // One burst, far more than the history holds: the newest rows stay,
        // and the list follows them.
        QByteArray burst;
        for (int message = 0; message < 10000; ++message)
        {
            burst += QByteArray::fromHex("B107") + static_cast<char>(message % 128);
        }
        t.Port("Desk")->ReceiveMIDIData(burst);
        QTRY_COMPARE(rows->rowCount(), static_cast<int>(cMIDIMonitorModel::MAXIMUM_ROWS));
        const QStringList newest({"in\tMixer In (Desk)\tB1 07 0F\tCC 7 = 15, ch 2\tFader to DAW",
                                  "out\tTessera DAW\tB1 07 0F\tCC 7 = 15, ch 2\tFader to DAW"});
        QCOMPARE(rowsWithoutTime(rows->rowCount() - 2), newest);
        QScrollBar* scrollBar = view->verticalScrollBar();
        QVERIFY(scrollBar->maximum() > 0);
        QCOMPARE(scrollBar->value(), scrollBar->maximum());

        QTemporaryDir directory;
        const QString path = directory.filePath("monitor.txt");
        QVERIFY(monitor->SaveToFile(path));
        const QStringList lines = QString::fromUtf8(ReadFile(path)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), static_cast<int>(cMIDIMonitorModel::MAXIMUM_ROWS) + 1);
        QCOMPARE(lines.first(), QStringLiteral("Time\tDir\tPort\tBytes\tMessage\tRule"));
        QCOMPARE(lines.last().section(QLatin1Char('\t'), 1), newest.last());

        // Closed, it hears nothing.
        monitor->close();
        t.Port("Desk")->ReceiveMIDIData(QByteArray::fromHex("B10701"));
        t.Action("MIDI Monitor")->trigger();
        QTest::qWait(300);
        QCOMPARE(rowsWithoutTime(rows->rowCount() - 2), newest);

        // A rule file that did not load is why nothing shows.
        QLabel* problem = monitor->findChild<QLabel*>("mRuleFileProblem");
        QVERIFY(!problem->isVisible());
        Choose(t.Mixer(), "Tx-12");
        Choose(t.Protocol(), "Unmapped Protocol");
        QVERIFY(problem->isVisible());
        QVERIFY2(problem->text().startsWith("No rules are loaded, so no MIDI shows here: ")
                && problem->text().contains("/Maps/missing.json: cannot be opened: "), qPrintable(problem->text()));
        QCOMPARE(t.Warning(), problem->text().section(": ", 1, -1));
    }

    void FindsConnectsAndTranslatesWithMixerSim()
    {
        Store({{"MixerType", "Tx-16"}, {"Tx-16/Mode", "TCP"}, {"DAWType", "Note Protocol"}, {"Tx-16/MIDI/InputPort", "Desk"}});
        QSettings settings;
        cMixerSimProcess stageLeft({"--find", "TX Find", "--name", "Stage Left", "--address", "127.0.0.1"});
        QVERIFY(stageLeft.IsListening());

        cWindowUnderTest t;
        QTRY_COMPARE_WITH_TIMEOUT(Items(t.Units()), QStringList({CUSTOM_UNIT_STRING, "Stage Left"}), 5000);
        QCOMPARE(t.Units()->currentText(), QStringLiteral("Stage Left"));
        QCOMPARE(t.Address()->text(), QStringLiteral("127.0.0.1"));
        QVERIFY(!t.Address()->isEnabled());

        t.Connect()->click();
        QTRY_COMPARE(t.Status(), QStringLiteral("Connected"));
        QCOMPARE(settings.value("Tx-16/Connection/DefaultUnitName").toString(), QStringLiteral("Stage Left"));

        // Another unit answering while connected does not touch the list.
        cMixerSimProcess stageRight({"--find", "TX Find", "--name", "Stage Right", "--address", "127.0.0.2"});
        QVERIFY(stageRight.WaitForLine("^answered "));
        QTest::qWait(200);
        QCOMPARE(Items(t.Units()), QStringList({CUSTOM_UNIT_STRING, "Stage Left"}));

        // A port plugged in and out leaves the mixer on the link, not on the saved port.
        t.registry->AddSystemInputOutput("Desk");
        t.registry->RemoveSystemInputOutput("Desk");
        stageLeft.Input("B1 07 55");
        QCOMPARE(Written(t.Port(DAW_PORT)).toHex(' '), QByteArray("91 01 55"));

        // Unticked by hand, the list shows at once who answered meanwhile.
        t.Connect()->click();
        QCOMPARE(Items(t.Units()), QStringList({CUSTOM_UNIT_STRING, "Stage Left", "Stage Right"}));
        QCOMPARE(t.Units()->currentText(), QStringLiteral("Stage Left"));
        QVERIFY(stageLeft.WaitForLine("^disconnected"));
        t.Connect()->click();
        QTRY_COMPARE(t.Status(), QStringLiteral("Connected"));

        t.MIDIPorts()->click();
        QVERIFY(!t.Connect()->isChecked());
        QVERIFY(t.Units()->isEnabled());
        QCOMPARE(t.Status(), QString());
        QVERIFY(stageLeft.WaitForLine("^disconnected"));

        // Unconnected, the next discovery event brings the list up to date.
        t.TCPIP()->click();
        cMixerSimProcess stageCentre({"--find", "TX Find", "--name", "Stage Centre", "--address", "127.0.0.3"});
        QTRY_COMPARE_WITH_TIMEOUT(t.Units()->count(), 4, 5000);
        QVERIFY(Items(t.Units()).contains("Stage Right"));
    }

    void StayConnectedKeepsTheLinkToTheSavedUnit()
    {
        const QHostAddress elsewhere = OtherLocalAddress();
        if (elsewhere.isNull())
        {
            QSKIP("No IPv4 address besides loopback for the mixer to come back at");
        }
        Store({{"MixerType", "Tx-16"}, {"Tx-16/Mode", "TCP"}, {"Tx-16/TryConnect", "true"},
            {"Tx-16/Connection/DefaultUnitName", "Stage Left"}, {"Tx-16/Connection/DefaultUnitIP", "127.0.0.1"}});
        const QStringList stageLeft({"--find", "TX Find", "--name", "Stage Left", "--address"});
        auto sim = std::make_unique<cMixerSimProcess>(stageLeft + QStringList("127.0.0.1"));
        QVERIFY(sim->IsListening());

        // A new window connects by itself to the saved unit once it is found.
        cWindowUnderTest t;
        QVERIFY(t.Action("Stay Connected")->isChecked());
        QTRY_COMPARE_WITH_TIMEOUT(t.Status(), QStringLiteral("Connected"), 10000);

        // The mixer is switched off and comes back, at the same address, then
        // at another where discovery finds it by name.
        for (const QString& address : {QStringLiteral("127.0.0.1"), elsewhere.toString()})
        {
            sim.reset();
            QTRY_VERIFY(t.Status().startsWith("Not Connected, next try in "));
            QVERIFY(t.Connect()->isChecked());
            sim = std::make_unique<cMixerSimProcess>(stageLeft + QStringList(address));
            QTRY_COMPARE_WITH_TIMEOUT(t.Status(), QStringLiteral("Connected"), 10000);
            t.Port(DAW_PORT)->ReceiveMIDIData(QByteArray::fromHex("B00733"));
            QVERIFY(sim->WaitForLine(" in  B1 07 33$"));
        }
        QCOMPARE(t.Address()->text(), elsewhere.toString());

        // A protocol change unticks Connect, and Tessera ticks it again.
        Choose(t.Protocol(), "Note Protocol");
        QVERIFY(sim->WaitForLine("^disconnected"));
        QVERIFY(sim->WaitForLine("^connected "));

        // The user unticking Connect stops the retries.
        sim.reset();
        QTRY_VERIFY(t.Status().startsWith("Not Connected, next try in "));
        t.Connect()->click();
        sim = std::make_unique<cMixerSimProcess>(stageLeft + QStringList(elsewhere.toString()));
        QVERIFY(!sim->WaitForLine("^connected ", 1500));

        // So does turning the option off: a drop leaves Connect ticked and the
        // link down, as without the option.
        t.Connect()->click();
        QTRY_COMPARE(t.Status(), QStringLiteral("Connected"));
        sim.reset();
        QTRY_VERIFY(t.Status().startsWith("Not Connected, next try in "));
        t.Action("Stay Connected")->trigger();
        QCOMPARE(t.Status(), QStringLiteral("Not Connected"));
        QCOMPARE(QSettings().value("Tx-16/TryConnect").toBool(), false);
        sim = std::make_unique<cMixerSimProcess>(stageLeft + QStringList(elsewhere.toString()));
        QVERIFY(!sim->WaitForLine("^connected ", 1500));
        QVERIFY(t.Connect()->isChecked());
    }

    // A console that went dark shows what the DAW last sent it once it is
    // back: within a second of the link's return, the last value of each
    // control, once, shown in the monitor as restored. Not with the option
    // off, nor after another rule file was loaded or Connect was unticked,
    // nor to another unit.
    void ConsoleGetsTheDAWsStateBack_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("restored");
        QTest::newRow("as it was") << "" << QStringList({"B1 11 30", "B1 12 40", "B1 10 50", "91 20 7F", "91 21 7F"});
        QTest::newRow("option off") << "option" << QStringList();
        QTest::newRow("rule file changed") << "protocol" << QStringList();
        QTest::newRow("Connect unticked and ticked") << "untick" << QStringList();
        QTest::newRow("another unit") << "unit" << QStringList();
    }

    void ConsoleGetsTheDAWsStateBack()
    {
        QFETCH(QString, change);
        QFETCH(QStringList, restored);
        Store({{"MixerType", "Tx-16"}, {"Tx-16/Mode", "TCP"}, {"Tx-16/TryConnect", "true"},
            {"Tx-16/Connection/DefaultUnitName", "Stage Left"}, {"Tx-16/Connection/DefaultUnitIP", "127.0.0.1"}});
        const QStringList stageLeft({"--find", "TX Find", "--name", "Stage Left", "--address", "127.0.0.1"});
        auto sim = std::make_unique<cMixerSimProcess>(stageLeft);
        cMixerSimProcess stageRight({"--find", "TX Find", "--name", "Stage Right", "--address", "127.0.0.2"});
        QVERIFY(sim->IsListening() && stageRight.IsListening());
        cWindowUnderTest t;
        QTRY_COMPARE_WITH_TIMEOUT(t.Status(), QStringLiteral("Connected"), 10000);
        t.Action("MIDI Monitor")->trigger();
        auto* rows = static_cast<cMIDIMonitorModel*>(t.window->findChild<QTreeView*>()->model());

        // Three faders, one of them moved twice, and two lamps.
        t.Port(DAW_PORT)->ReceiveMIDIData(QByteArray::fromHex("B11010B11130B11240B1105091207F91217F"));
        QVERIFY(sim->WaitForLine(" in  91 21 7F$"));
        QAction* option = t.Action("Resend State on Reconnect");
        QVERIFY(option->isChecked());
        if (change == "option")
        {
            option->trigger();
            QCOMPARE(QSettings().value("Tx-16/ResendState").toString(), QStringLiteral("false"));
        }
        else if (change == "protocol")
        {
            Choose(t.Protocol(), "Note Protocol");
            Choose(t.Protocol(), "Fader Protocol");
            QVERIFY(sim->WaitForLine("^connected "));
        }
        else if (change == "untick")
        {
            t.Connect()->click();
            QVERIFY(sim->WaitForLine("^disconnected"));
            t.Connect()->click();
            QVERIFY(sim->WaitForLine("^connected "));
        }
        else if (change == "unit")
        {
            t.Connect()->click();
            Choose(t.Units(), "Stage Right");
            t.Connect()->click();
            QVERIFY(stageRight.WaitForLine("^connected "));
        }
        QTRY_COMPARE(t.Status(), QStringLiteral("Connected"));
        QTest::qWait(300);
        QCOMPARE(Received(*sim).size(), 6);
        QCOMPARE(Received(stageRight), QStringList());
        if (change == "unit")
        {
            return;
        }

        // The DAW moves a fader the moment the link is back: the console gets
        // it once, after what it is given back.
        sim->Process().kill();
        QTRY_VERIFY(t.Status().startsWith("Not Connected, next try in "));
        auto* link = t.window->findChild<cTCPMIDIInptOutput*>();
        QObject::connect(link, &cTCPMIDIInptOutput::StateStringChanged, t.window.get(), [&t, link]() {
            if (link->IsConnected())
            {
                t.Port(DAW_PORT)->ReceiveMIDIData(QByteArray::fromHex("B11060"));
            }
        });
        sim = std::make_unique<cMixerSimProcess>(stageLeft);
        QTRY_COMPARE_WITH_TIMEOUT(t.Status(), QStringLiteral("Connected"), 10000);
        const QStringList received = restored + QStringList("B1 10 60");
        QTRY_COMPARE_WITH_TIMEOUT(Received(*sim), received, 1000);
        QTest::qWait(500);
        QCOMPARE(Received(*sim), received);
        QStringList restoredRows;
        for (int row = 0; row < rows->rowCount(); ++row)
        {
            const QStringList cells = rows->GetRowText(row).split('\t');
            if (cells.last() == "restored")
            {
                QCOMPARE(cells.mid(1, 2), QStringList({"out", "Mixer Out (TCP 127.0.0.1)"}));
                restoredRows.append(cells.at(3));
            }
        }
        QCOMPARE(restoredRows, restored);
    }

private:
    QTemporaryDir settingsDirectory;
};

QTEST_MAIN(cTestGuiWindow)
#include "test_gui_window.moc"
