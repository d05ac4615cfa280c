#ifndef TRAYMENU_H
#define TRAYMENU_H

#include <QObject>
#include <QSystemTrayIcon>

class QAction;
class QMenu;
class QWidget;
class cMIDIMonitorWindow;
class cMIDITranslatorConfiguration;
class cSetupProblems;

// The program's only permanent face: the tray icon and its menu. The menu's
// own entries are served here (the MIDI monitor, Start at Login, Quit); the
// rest are passed on as signals to the window, whose choices they are. The
// icon's tooltip tells the state without opening anything, and the icon
// bears a warning sign while a problem of the setup stands or the link to
// the mixer is being tried again.
class cTrayMenu : public QObject
{
    Q_OBJECT
public:
    // The monitor watches configuration; problems go to the tooltip and the
    // monitor; window is the parent of the menu and the monitor, and this
    // object's.
    cTrayMenu(cMIDITranslatorConfiguration* configuration, cSetupProblems* problems, QWidget* window);

    // Show the options as stored, without announcing them as choices.
    void SetStayConnectedChecked(bool checked);
    void SetResendStateChecked(bool checked);
    void ShowMIDIMonitor();
    // The tooltip's first line after the product's name: the choices and
    // the state of the way to the mixer.
    void ShowStatus(const QStringList& parts, bool retrying);
    // A notice at the icon, for what has no window to show it in.
    void ShowNotice(const QString& text);

signals:
    void ShowPreferencesTriggered();
    void StayConnectedTriggered(bool checked);
    void ResendStateTriggered(bool checked);
    void HelpTriggered();
    void AboutTriggered();
    void Activated(QSystemTrayIcon::ActivationReason reason);

private:
    void StartAtLoginTriggered(bool checked);
    void AddAction(const QString& text, void (cTrayMenu::*triggered)());
    QAction* AddCheckableAction(const QString& text, void (cTrayMenu::*triggered)(bool));
    void UpdateToolTip();

    cMIDITranslatorConfiguration* configuration;
    cSetupProblems* problems;
    QString statusText;
    bool retrying = false;
    bool showingWarning = false;
    QWidget* window;
    QAction* stayConnectedAction;
    QAction* resendStateAction;
    QAction* startAtLoginAction;
    QMenu* menu;
    QSystemTrayIcon* trayIcon;
    // Made when first asked for; most shows never open it.
    cMIDIMonitorWindow* midiMonitorWindow = nullptr;
};

#endif
