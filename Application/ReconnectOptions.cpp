#include "Application/ReconnectOptions.h"

#include "Application/ApplicationStrings.h"
#include "Application/SettingsKeys.h"
#include "Application/TrayMenu.h"
#include "MIDITranslator/MixerStateRestorer.h"
#include "Network/TCPMIDIConnectionPolicy.h"

#include <QAbstractButton>
#include <QSettings>

cReconnectOptions::cReconnectOptions(const cSettingsKeys& keys, cTrayMenu* trayMenu,
    cTCPMIDIConnectionPolicy* policy, cMixerStateRestorer* restorer, QAbstractButton* connectBox, QObject* parent)
    : QObject(parent), keys(keys), trayMenu(trayMenu), policy(policy), restorer(restorer)
{
    connect(trayMenu, &cTrayMenu::StayConnectedTriggered, this, &cReconnectOptions::StayConnectedChosen);
    connect(trayMenu, &cTrayMenu::ResendStateTriggered, this, &cReconnectOptions::ResendStateChosen);
    connect(policy, &cTCPMIDIConnectionPolicy::LinkUp, this, &cReconnectOptions::LinkUp);
    // Only the user's own click: the program unticks it in many flows, some
    // of which tick it again for the same console at once.
    connect(connectBox, &QAbstractButton::clicked, this, [this](bool ticked) {
        if (!ticked)
        {
            this->restorer->Forget();
        }
    });
}

void cReconnectOptions::Load()
{
    const bool stayConnected = QSettings().value(keys.GetTryConnectKey(), false).toBool();
    trayMenu->SetStayConnectedChecked(stayConnected);
    policy->SetStayConnected(stayConnected);
    LoadResendState(stayConnected);
}

void cReconnectOptions::StayConnectedChosen(bool on)
{
    QSettings().setValue(keys.GetTryConnectKey(), on);
    policy->StayConnectedChosen(on);
    // Follows it until chosen on its own.
    LoadResendState(on);
}

void cReconnectOptions::ResendStateChosen(bool on)
{
    QSettings().setValue(keys.GetResendStateKey(), on);
    restorer->SetEnabled(on);
}

void cReconnectOptions::LoadResendState(bool stayConnected)
{
    const bool resendState = QSettings().value(keys.GetResendStateKey(), stayConnected).toBool();
    trayMenu->SetResendStateChecked(resendState);
    restorer->SetEnabled(resendState);
}

// A unit found on the network is the same console wherever it answers from;
// a typed address is a console of its own.
void cReconnectOptions::LinkUp()
{
    const QString unit = policy->GetUnitName();
    restorer->LinkConnected(unit == CUSTOM_UNIT_STRING ? policy->GetAddress().toString() : unit);
}
