#include "Application/TrayMenu.h"

#include "Application/ApplicationStrings.h"
#include "Application/AutostartEntry.h"
#include "Application/MIDIMonitorWindow.h"
#include "Application/SetupProblems.h"

#include <QAction>
#include <QCoreApplication>
#include <QIcon>
#include <QMenu>
#include <QWidget>

namespace
{
const QString ICON_PATH = QStringLiteral(":/Images/Icon.svg");
const QString WARNING_ICON_PATH = QStringLiteral(":/Images/IconWarning.svg");
}

cTrayMenu::cTrayMenu(cMIDITranslatorConfiguration* configuration, cSetupProblems* problems, QWidget* window)
    : QObject(window), configuration(configuration), problems(problems), window(window)
{
    menu = new QMenu(window);
    AddAction(tr("&Show Preferences"), &cTrayMenu::ShowPreferencesTriggered);
    AddAction(tr("MIDI Monitor"), &cTrayMenu::ShowMIDIMonitor);
    menu->addSeparator();
    // Set from the settings when the mixer type changes, which does not trigger them.
    stayConnectedAction = AddCheckableAction(tr("Stay Connected"), &cTrayMenu::StayConnectedTriggered);
    resendStateAction = AddCheckableAction(tr("Resend State on Reconnect"), &cTrayMenu::ResendStateTriggered);
    startAtLoginAction = AddCheckableAction(tr("Start at Login"), &cTrayMenu::StartAtLoginTriggered);
    menu->addSeparator();
    // Help stands above About on purpose: it is what a user looks for first.
    AddAction(tr("&Help"), &cTrayMenu::HelpTriggered);
    AddAction(tr("&About"), &cTrayMenu::AboutTriggered);
    menu->addSeparator();
    QAction* quitAction = menu->addAction(tr("&Quit"));
    connect(quitAction, &QAction::triggered, qApp, &QCoreApplication::quit);

    // The entry may be added, removed or switched off behind the program's
    // back, by the session's own settings or by hand: the tick is read afresh
    // each time.
    startAtLoginAction->setChecked(cAutostartEntry::IsEnabled());
    connect(menu, &QMenu::aboutToShow, this,
        [this]() { startAtLoginAction->setChecked(cAutostartEntry::IsEnabled()); });

    trayIcon = new QSystemTrayIcon(this);
    trayIcon->setContextMenu(menu);
    trayIcon->setIcon(QIcon(ICON_PATH));
    trayIcon->setVisible(true);
    connect(trayIcon, &QSystemTrayIcon::activated, this, &cTrayMenu::Activated);
    connect(problems, &cSetupProblems::Changed, this, &cTrayMenu::UpdateToolTip);
    UpdateToolTip();
}

void cTrayMenu::AddAction(const QString& text, void (cTrayMenu::*triggered)())
{
    connect(menu->addAction(text), &QAction::triggered, this, triggered);
}

QAction* cTrayMenu::AddCheckableAction(const QString& text, void (cTrayMenu::*triggered)(bool))
{
    QAction* action = menu->addAction(text);
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, triggered);
    return action;
}

void cTrayMenu::SetStayConnectedChecked(bool checked)
{
    stayConnectedAction->setChecked(checked);
}

void cTrayMenu::SetResendStateChecked(bool checked)
{
    resendStateAction->setChecked(checked);
}

void cTrayMenu::ShowMIDIMonitor()
{
    if (!midiMonitorWindow)
    {
        midiMonitorWindow = new cMIDIMonitorWindow(configuration, problems, window);
    }
    midiMonitorWindow->showNormal();
    midiMonitorWindow->raise();
    midiMonitorWindow->activateWindow();
}

void cTrayMenu::ShowStatus(const QStringList& parts, bool newRetrying)
{
    statusText = parts.join(QStringLiteral(", "));
    retrying = newRetrying;
    UpdateToolTip();
}

void cTrayMenu::ShowNotice(const QString& text)
{
    trayIcon->showMessage(PRODUCT_NAME_STRING, text, QSystemTrayIcon::Warning);
}

void cTrayMenu::UpdateToolTip()
{
    const QStringList problemTexts = problems->GetTexts();
    QStringList lines(PRODUCT_NAME_STRING + QStringLiteral(": ") + statusText);
    lines.append(problemTexts);
    trayIcon->setToolTip(lines.join(QLatin1Char('\n')));
    // Setting an icon makes the tray host draw it anew: only on a change.
    const bool warning = retrying || !problemTexts.isEmpty();
    if (warning != showingWarning)
    {
        showingWarning = warning;
        trayIcon->setIcon(QIcon(warning ? WARNING_ICON_PATH : ICON_PATH));
    }
}

void cTrayMenu::StartAtLoginTriggered(bool checked)
{
    if (checked)
    {
        cAutostartEntry::Create();
    }
    else
    {
        cAutostartEntry::Remove();
    }
    // A failure has been reported; the tick shows what is really there.
    startAtLoginAction->setChecked(cAutostartEntry::IsEnabled());
}
