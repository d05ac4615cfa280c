#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "Application/SettingsKeys.h"
#include "MIDITranslator/MixerDawMap.h"
#include "Network/Unit.h"

#include <QHostAddress>
#include <QMainWindow>
#include <QString>
#include <QSystemTrayIcon>

class QAction;
class QComboBox;
class QMenu;
class QTimer;
class Ui_MainWindow;
class cMIDIMonitorWindow;
class cMIDITranslatorConfiguration;
class cMultiUnitFinder;
class cSystemMIDIConfiguration;
class cTCPMIDIInptOutput;
class cTCPMIDIReconnector;
class cWidgetGroup;

// The preferences window and the application's controller in one: it turns
// the user's choices (mixer type, protocol, MIDI channel, connection mode,
// ports, unit) into a loaded rule file and a route to the mixer, keeps every
// choice in the settings store the moment it is made, and owns the tray icon
// that is the program's only permanent face.
class cMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    // Takes ownership of the port registry: the platform's in the program,
    // an in-memory one in tests.
    explicit cMainWindow(cSystemMIDIConfiguration* systemMIDIConfiguration, QWidget* parent = nullptr);
    ~cMainWindow() override;

public slots:
    void ShowPreferences();
    void ShowMIDIMonitor();
    void ShowAboutMessageBox();
    void OpenHelpManual();
    void StartAtLoginTriggered(bool checked);
    void SystemTrayIconActivated(QSystemTrayIcon::ActivationReason reason);

    void SelectedMixerTypeChanged(int index);
    void SelectedDAWChanged(int index);
    void MIDIChannelComboIndexChanged(int index);
    void MixerConnectionModeToggled();
    void FoundUnitsChanged();
    void SelectedUnitChanged(int index);
    void IPAddressChanged();
    void ConnectCheckBoxToggled(bool checked);
    void RepopulateMixerMIDIInputComboBox();
    void RepopulateMixerMIDIOutputComboBox();
    void MixerMIDIInputSelected(int index);
    void MixerMIDIOutputSelected(int index);
    void TCPMIDIConnectionStateStringChanged(QString text);
    void TCPMIDIRetryScheduled(int delayMs);
    void StayConnectedToggled(bool checked);
    void ConnectToSavedUnitIfWanted();

private:
    void CreateMixerTypeComboBox();
    void CreateMIDIChannelComboBox();
    void CreateConnectionRadioGroups();
    void CreateUI();
    void AddActivityLamp(const QString& name, void (cMIDITranslatorConfiguration::*traffic)());
    void CreateActions();
    void LoadSettings();
    void LoadDAWSetting();
    void LoadMIDIChannelSetting();
    void PopulateDAWTypeComboBox();
    void SetMIDITranslatorMIDIChannelVariable(unsigned char channel);
    bool IsIPAddressValid() const;
    bool TrySelectUnit(QString name);
    void ForceSelectUnit(QString name, QHostAddress address);

    // The input and output port lists are filled and chosen from alike.
    void RepopulateMixerMIDIPortComboBox(QComboBox* comboBox, QStringList portNames, const QString& settingsKey,
        void (cMIDITranslatorConfiguration::*setPortName)(QString));
    void MixerMIDIPortSelected(QComboBox* comboBox, int index, const QString& settingsKey,
        void (cMIDITranslatorConfiguration::*setPortName)(QString));
    void SetCustomUnitAddress(const QHostAddress& address);
    sUnit GetSelectedUnit() const;
    QHostAddress GetEnteredAddress() const;
    QHostAddress GetSavedUnitAddress() const;
    bool IsSavedUnitAnsweringAnew() const;

    Ui_MainWindow* ui;
    cWidgetGroup* midiPortsGroup;
    cWidgetGroup* tcpIPGroup;
    sUnit customUnit;
    cSettingsKeys settingsKeys;
    cMixerDawMap mixerDawMap;
    cMIDITranslatorConfiguration* translatorConfiguration = nullptr;
    cTCPMIDIInptOutput* tcpMIDIInputOutput = nullptr;
    cTCPMIDIReconnector* tcpMIDIReconnector = nullptr;
    // Runs ConnectToSavedUnitIfWanted once the flows that may untick Connect
    // or select the saved unit have settled, however many of them ran.
    QTimer* connectToSavedUnitTimer = nullptr;
    // The user unticked Connect: Stay Connected waits until the user ticks it
    // again or turns the option back on.
    bool connectHeldOff = false;
    cMultiUnitFinder* multiUnitFinder = nullptr;

    QAction* showPreferencesAction = nullptr;
    QAction* midiMonitorAction = nullptr;
    QAction* stayConnectedAction = nullptr;
    QAction* aboutAction = nullptr;
    QAction* startAtLoginAction = nullptr;
    QAction* helpAction = nullptr;
    QAction* quitAction = nullptr;
    QMenu* trayIconMenu = nullptr;
    QSystemTrayIcon* trayIcon = nullptr;
    // Made when first asked for; most shows never open it.
    cMIDIMonitorWindow* midiMonitorWindow = nullptr;
};

#endif
