#ifndef RECONNECTOPTIONS_H
#define RECONNECTOPTIONS_H

#include <QObject>

class QAbstractButton;
class cMixerStateRestorer;
class cSettingsKeys;
class cTCPMIDIConnectionPolicy;
class cTrayMenu;

// The tray menu's two choices for a console that goes and comes back, kept
// per mixer type: Stay Connected, which has the connection policy bring the
// link back, and Resend State on Reconnect, which has the restorer give the
// console the DAW's last values when it is back; the second is on by default
// while the first is. Tells the restorer when the link is up and to which
// console, and lets it forget when the user unticks Connect.
class cReconnectOptions : public QObject
{
    Q_OBJECT
public:
    // keys names the mixer type chosen now; connectBox is the Connect box.
    // None is owned.
    cReconnectOptions(const cSettingsKeys& keys, cTrayMenu* trayMenu, cTCPMIDIConnectionPolicy* policy,
        cMixerStateRestorer* restorer, QAbstractButton* connectBox, QObject* parent = nullptr);

    // Shows and applies the choices stored for the mixer type chosen now.
    void Load();

private:
    void StayConnectedChosen(bool on);
    void ResendStateChosen(bool on);
    void LoadResendState(bool stayConnected);
    void LinkUp();

    const cSettingsKeys& keys;
    cTrayMenu* trayMenu;
    cTCPMIDIConnectionPolicy* policy;
    cMixerStateRestorer* restorer;
};

#endif
