#ifndef TRAYMENU_H
#define TRAYMENU_H

#include <QObject>
#include <QSystemTrayIcon>

class QAction;
class QMenu;
class QWidget;
class cMIDIMonitorWindow;
class cMIDITranslatorConfiguration;

// The program's only permanent face: the tray icon and its menu. The menu's
// own entries are served here (the MIDI monitor, Start at Login, Quit); the
// rest are passed on as signals to the window, whose choices they are.
class cTrayMenu : public QObject
{
    Q_OBJECT
public:
    // The monitor watches configuration; window is the parent of the menu and
    // the monitor, and this object's.
    cTrayMenu(cMIDITranslatorConfiguration* configuration, QWidget* window);

    // Shows the option as stored, without announcing it as a choice.
    void SetStayConnectedChecked(bool checked);
    void ShowMIDIMonitor();

signals:
    void ShowPreferencesTriggered();
    void StayConnectedTriggered(bool checked);
    void HelpTriggered();
    void AboutTriggered();
    void Activated(QSystemTrayIcon::ActivationReason reason);

private:
    void StartAtLoginTriggered(bool checked);
    void AddAction(const QString& text, void (cTrayMenu::*triggered)());

    cMIDITranslatorConfiguration* configuration;
    QWidget* window;
    QAction* stayConnectedAction;
    QAction* startAtLoginAction;
    QMenu* menu;
    QSystemTrayIcon* trayIcon;
    // Made when first asked for; most shows never open it.
    cMIDIMonitorWindow* midiMonitorWindow = nullptr;
};

#endif
