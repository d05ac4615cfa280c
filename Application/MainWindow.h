#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "Application/SettingsKeys.h"
#include "MIDITranslator/MixerDawMap.h"

#include <QHostAddress>
#include <QMainWindow>
#include <QString>
#include <QSystemTrayIcon>

#include <memory>

class Ui_MainWindow;
class cConnectionStatus;
class cMixerPortList;
class cMIDITranslatorConfiguration;
class cMultiUnitFinder;
class cReconnectOptions;
class cSetupProblems;
class cStatusBarView;
class cSystemMIDIConfiguration;
class cTCPMIDIConnectionPolicy;
class cTCPMIDIInptOutput;
class cTrayMenu;
class cUnitList;
class cWidgetGroup;

// The preferences window and the application's controller in one: it turns
// the user's choices (mixer type, protocol, MIDI channel, connection mode,
// ports, unit) into a loaded rule file and a route to the mixer, and keeps
// every choice in the settings store the moment it is made. When the link to
// the mixer is up and tried again is the connection policy's to decide; the
// window shows its state and passes the user's choices on to it.
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
    void ShowAboutMessageBox();
    void OpenHelpManual();
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

private:
    void CreateMixerTypeComboBox();
    void CreateMIDIChannelComboBox();
    void CreateConnectionRadioGroups();
    void CreateUI();
    void CreateActions();
    void LoadSettings();
    void LoadDAWSetting();
    void LoadMIDIChannelSetting();
    void PopulateDAWTypeComboBox();
    void SetMIDITranslatorMIDIChannelVariable(unsigned char channel);
    bool IsIPAddressValid() const;
    bool TrySelectUnit(QString name);
    void ForceSelectUnit(QString name, QHostAddress address);

    QHostAddress GetSavedUnitAddress() const;
    // The link's state with its wait and reason, in the status bar and the
    // tray's tooltip; followed once the tray is made.
    void ShowConnectionState();

    Ui_MainWindow* ui;
    cWidgetGroup* midiPortsGroup;
    cWidgetGroup* tcpIPGroup;
    std::unique_ptr<cUnitList> unitList;
    cSettingsKeys settingsKeys;
    cMixerDawMap mixerDawMap;
    cMIDITranslatorConfiguration* translatorConfiguration = nullptr;
    cSetupProblems* setupProblems = nullptr;
    std::unique_ptr<cMixerPortList> mixerInputList;
    std::unique_ptr<cMixerPortList> mixerOutputList;
    cTCPMIDIInptOutput* tcpMIDIInputOutput = nullptr;
    cTCPMIDIConnectionPolicy* connectionPolicy = nullptr;
    cConnectionStatus* connectionStatus = nullptr;
    cReconnectOptions* reconnectOptions = nullptr;
    cMultiUnitFinder* multiUnitFinder = nullptr;
    cTrayMenu* trayMenu = nullptr;
    cStatusBarView* statusBarView = nullptr;
};

#endif
