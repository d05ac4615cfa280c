// The window and its tray icon on a real X server with a tray host (run by
// x11/in-tray.sh), with the pointer moved by xdotool as a user moves it: what
// the status bar and the tooltips show while the user looks. Over in-memory
// MIDI ports and the test maps of tests/data/gui; the window runs discovery
// and connects to loopback, so this runs in the private network namespace.

#include "Application/MainWindow.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "support/MixerSimProcess.h"
#include "support/PrivateNetwork.h"
#include "support/ProgramSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QRadioButton>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

#include <memory>

namespace
{
// Where the pointer goes: a point on a widget's window, which xdotool finds
// on the screen wherever the window lies (the tray host moves the icon's),
// or without a widget a point on the screen.
struct sSpot
{
    QWidget* widget;
    QPoint position;
};

sSpot CentreOf(QWidget* widget)
{
    return {widget->window(), widget->mapTo(widget->window(), widget->rect().center())};
}

// Runs xdotool, then lets the program take in what it did: X events queued
// together would be merged into one.
bool Xdotool(const QStringList& arguments)
{
    const bool done = QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
    QTest::qWait(100);
    return done;
}

// Moves the pointer there and waits until it is. A pointer that jumps into
// a popup menu is not taken for a move of the user's hand, so it ends with a
// step of a pixel, as a hand's does.
bool PointAt(const sSpot& spot)
{
    QStringList arguments{QStringLiteral("mousemove"), QStringLiteral("--sync")};
    if (spot.widget)
    {
        arguments << QStringLiteral("--window") << QString::number(spot.widget->winId());
    }
    return Xdotool(arguments << QString::number(spot.position.x() - 1) << QString::number(spot.position.y()))
        && Xdotool({QStringLiteral("mousemove_relative"), QStringLiteral("--sync"), QStringLiteral("1"),
               QStringLiteral("0")});
}

bool RightClickAt(const sSpot& spot)
{
    return PointAt(spot) && Xdotool({QStringLiteral("click"), QStringLiteral("3")});
}

// The tooltip shown once the pointer rests there, coming from a corner of
// the screen where nothing lies.
QString ToolTipAt(const sSpot& spot)
{
    QToolTip::hideText();
    if (!PointAt({nullptr, QApplication::primaryScreen()->geometry().bottomLeft() + QPoint(10, -10)}) || !PointAt(spot)
        || !QTest::qWaitFor([]() { return QToolTip::isVisible(); }, 5000))
    {
        return QString();
    }
    return QToolTip::text();
}

// Whether the icon is the warning variant: its triangle covers the gap
// between the tiles low in the middle.
bool ShowsWarningIcon(const QIcon& icon)
{
    const QColor colour = icon.pixmap(64, 64).toImage().pixelColor(33, 56);
    return colour.red() > 200 && colour.green() > 180 && colour.blue() < 100;
}

// One window and its tray icon, the icon embedded by the tray host.
class cWindowInTray
{
public:
    cWindowInTray() : window(new cMainWindow(new cSystemMIDIConfigurationMemory))
    {
        trayIcon = window->findChild<QSystemTrayIcon*>();
        static_cast<void>(QTest::qWaitFor([this]() { return !trayIcon->geometry().isEmpty(); }, 10000));
    }

    template <typename T> T* Widget(const char* name) const { return window->findChild<T*>(QLatin1String(name)); }
    QString State() const { return Widget<QLabel>("mStateLabel")->text(); }
    // The icon is a window of its own that the tray host has taken in.
    sSpot Icon() const
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
        {
            if (widget->inherits("QSystemTrayIconSys"))
            {
                return {widget, widget->rect().center()};
            }
        }
        return {window.get(), QPoint()};
    }
    void Choose(const char* comboBox, const QString& text) const
    {
        QComboBox* box = Widget<QComboBox>(comboBox);
        box->setCurrentIndex(box->findText(text));
    }

    std::unique_ptr<cMainWindow> window;
    QSystemTrayIcon* trayIcon = nullptr;
};
}

class cTestTrayX11 : public QObject
{
    Q_OBJECT

public:
    static void initMain() { RequirePrivateNetwork(); }

private slots:
    void initTestCase()
    {
        QVERIFY(settingsDirectory.isValid());
        UseSettingsIn(settingsDirectory.path());
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
    }

    void init()
    {
        QSettings().clear();
        QSettings().setValue("MixerType", "Tx-16");
        QSettings().setValue("Tx-16/Mode", "TCP");
    }

    // Menus hand each entry's status tip to the window under them as the
    // pointer passes; the state stays in view all the same.
    void StateStaysWhileTheTrayMenuIsUsed()
    {
        cWindowInTray t;
        t.window->ShowPreferences();
        QCOMPARE(t.State(), QStringLiteral("Not Connected"));
        QMenu* menu = t.trayIcon->contextMenu();
        QVERIFY(RightClickAt(t.Icon()));
        QTRY_VERIFY(menu->isVisible());
        for (QAction* action : menu->actions())
        {
            if (action->isSeparator())
            {
                continue;
            }
            QVERIFY(PointAt({menu, menu->actionGeometry(action).center()}));
            QTRY_COMPARE(menu->activeAction(), action);
            QCOMPARE(t.State(), QStringLiteral("Not Connected"));
            QCOMPARE(t.window->statusBar()->currentMessage(), QString());
        }
        menu->hide();
    }

    void BrokenRuleFileShowsTheWarningSign()
    {
        cWindowInTray t;
        t.window->ShowPreferences();
        QLabel* sign = t.Widget<QLabel>("mWarningSign");
        QVERIFY(!sign->isVisible());
        QVERIFY(!ShowsWarningIcon(t.trayIcon->icon()));

        t.Choose("mMixerTypeComboBox", "Tx-12");
        t.Choose("mDAWTypeComboBox", "Broken Protocol");
        QTRY_VERIFY(sign->isVisible());
        const QString problem = ToolTipAt(CentreOf(sign));
        QVERIFY2(problem.contains(QRegularExpression("/Maps/tx16_broken\\.json:8:5: JSON syntax error: ")),
            qPrintable(problem));
        QVERIFY(ShowsWarningIcon(t.trayIcon->icon()));
        QCOMPARE(ToolTipAt(t.Icon()), "Tessera: Tx-12, Broken Protocol, not connected\n" + problem);

        t.Choose("mDAWTypeComboBox", "Fader Protocol");
        QVERIFY(!sign->isVisible());
        QVERIFY(!ShowsWarningIcon(t.trayIcon->icon()));
    }

    void TrayToolTipFollowsTheState()
    {
        cWindowInTray t;
        QCOMPARE(ToolTipAt(t.Icon()), QStringLiteral("Tessera: Tx-16, Fader Protocol, not connected"));

        cMixerSimProcess sim({"--address", "127.0.0.41"});
        QVERIFY(sim.IsListening());
        t.Widget<QLineEdit>("mIPAddressEdit")->setText("127.0.0.41");
        t.Widget<QCheckBox>("mConnectCheckBox")->click();
        QTRY_COMPARE(t.State(), QStringLiteral("Connected"));
        QCOMPARE(ToolTipAt(t.Icon()), QStringLiteral("Tessera: Tx-16, Fader Protocol, connected to 127.0.0.41"));

        QVERIFY(sim.Stop());
        QTRY_COMPARE(t.State(), QStringLiteral("Not Connected"));
        QCOMPARE(ToolTipAt(t.Icon()),
            QStringLiteral("Tessera: Tx-16, Fader Protocol, not connected to 127.0.0.41: closed by the console"));
    }

    // Stay Connected waits longer and longer between tries at an address
    // that refuses; while it waits, the wait shown counts down, and the tray
    // tooltip says why the link is down.
    void CountdownCountsEachSecond()
    {
        QSettings().setValue("Tx-16/TryConnect", true);
        cWindowInTray t;
        t.Widget<QLineEdit>("mIPAddressEdit")->setText("127.0.0.42");
        t.Widget<QCheckBox>("mConnectCheckBox")->click();
        // Half a second, one, two, then four.
        QTRY_COMPARE_WITH_TIMEOUT(t.State(), QStringLiteral("Not Connected, next try in 4 s"), 10000);
        QVERIFY(ShowsWarningIcon(t.trayIcon->icon()));
        for (const int seconds : {3, 2, 1})
        {
            QTRY_COMPARE_WITH_TIMEOUT(t.State(), QStringLiteral("Not Connected, next try in %1 s").arg(seconds), 1500);
        }
        // The tooltip takes a while to show: read it early in the next, longest wait.
        QTRY_COMPARE_WITH_TIMEOUT(t.State(), QStringLiteral("Not Connected, next try in 8 s"), 3000);
        QVERIFY(ToolTipAt(t.Icon()).startsWith("Tessera: Tx-16, Fader Protocol, not connected to 127.0.0.42: "
                                                     "refused, next try in "));
    }

private:
    QTemporaryDir settingsDirectory;
};

QTEST_MAIN(cTestTrayX11)
#include "test_tray_x11.moc"
