#include "Application/MainWindow.h"

#include "Application/ApplicationStrings.h"
#include "Application/ConnectionStatus.h"
#include "Application/FitWidthToLayout.h"
#include "Application/HelpManual.h"
#include "Application/IPAddressValidator.h"
#include "Application/MixerPortList.h"
#include "Application/ReconnectOptions.h"
#include "Application/SetupProblems.h"
#include "Application/StatusBarView.h"
#include "Application/TrayMenu.h"
#include "Application/UnitList.h"
#include "Application/WidgetGroup.h"
#include "ui_MainWindow.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"
#include "MIDITranslator/FileLocations.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "Network/MultiUnitFinder.h"
#include "Network/RetryTimer.h"
#include "Network/TCPMIDIConnectionPolicy.h"
#include "Network/TCPMIDIInptOutput.h"

#include <QLayout>
#include <QMessageBox>
#include <QSettings>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QUrl>

#include <utility>

namespace
{
const QString DEFAULT_UNIT_IP_ADDRESS = QStringLiteral("192.168.1.1");
const QString MIDI_MODE_SETTING = QStringLiteral("MIDI");
const QString TCP_MODE_SETTING = QStringLiteral("TCP");
const QString MIDI_CHANNEL_VARIABLE_NAME = QStringLiteral("MIDI Channel");
}

cMainWindow::cMainWindow(cSystemMIDIConfiguration* systemMIDIConfiguration, QWidget* parent)
    : QMainWindow(parent),
      ui(new Ui_MainWindow),
      midiPortsGroup(new cWidgetGroup(this)),
      tcpIPGroup(new cWidgetGroup(this))
{
    RegisterUnitMetaType();
    mixerDawMap.LoadFromFilePath(cFileLocations::GetMixerMapFilePath());

    ui->setupUi(this);
    ui->mIPAddressEdit->setValidator(new cIPAddressValidator(ui->mIPAddressEdit));
    connect(ui->mIPAddressEdit, &QLineEdit::textChanged, this, &cMainWindow::IPAddressChanged);
    unitList.reset(new cUnitList(ui->mUnitComboBox, QHostAddress(DEFAULT_UNIT_IP_ADDRESS)));
    setFixedSize(layout()->sizeHint());
    new cFitWidthToLayout(this);

    translatorConfiguration = new cMIDITranslatorConfiguration(systemMIDIConfiguration);
    setupProblems = new cSetupProblems(systemMIDIConfiguration, this);
    statusBarView = new cStatusBarView(statusBar(), translatorConfiguration, setupProblems);
    mixerInputList.reset(new cMixerPortList(ui->mMixerMIDIInComboBox, translatorConfiguration,
        &cMIDITranslatorConfiguration::SetMixerInputPortName, setupProblems, cSetupProblems::eKind::MixerInputPort));
    mixerOutputList.reset(new cMixerPortList(ui->mMixerMIDIOutComboBox, translatorConfiguration,
        &cMIDITranslatorConfiguration::SetMixerOutputPortName, setupProblems, cSetupProblems::eKind::MixerOutputPort));
    CreateMixerTypeComboBox();

    tcpMIDIInputOutput = new cTCPMIDIInptOutput(this);
    connect(tcpMIDIInputOutput, &cTCPMIDIInptOutput::StateStringChanged,
        this, &cMainWindow::TCPMIDIConnectionStateStringChanged);
    connectionPolicy = new cTCPMIDIConnectionPolicy(tcpMIDIInputOutput, new cRetryTimer, this);
    connectionStatus = new cConnectionStatus(tcpMIDIInputOutput, connectionPolicy, this);
    connect(connectionPolicy, &cTCPMIDIConnectionPolicy::ConnectWanted, this,
        [this]() { ui->mConnectCheckBox->setChecked(true); });
    connect(connectionPolicy, &cTCPMIDIConnectionPolicy::UnitListReleased, this, &cMainWindow::FoundUnitsChanged);

    multiUnitFinder = new cMultiUnitFinder(this);
    connect(multiUnitFinder, &cMultiUnitFinder::UnitFound, this, &cMainWindow::FoundUnitsChanged);
    connect(multiUnitFinder, &cMultiUnitFinder::UnitLost, this, &cMainWindow::FoundUnitsChanged);

    CreateMIDIChannelComboBox();
    CreateConnectionRadioGroups();
    CreateUI();
    LoadSettings();

    // Only now: filling the protocol list while loading is not a user's choice.
    connect(ui->mDAWTypeComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::SelectedDAWChanged);
}

cMainWindow::~cMainWindow()
{
    // What is torn down may still signal; nothing here may answer any more.
    translatorConfiguration->GetSystemMIDIConfiguration()->disconnect(this);
    tcpMIDIInputOutput->disconnect(this);
    connectionPolicy->disconnect();
    connectionStatus->disconnect(this);
    multiUnitFinder->disconnect(this);
    delete translatorConfiguration;
    delete ui;
}

void cMainWindow::CreateMixerTypeComboBox()
{
    QStringList mixerNames = mixerDawMap.GetMixerNames();
    mixerNames.sort(Qt::CaseSensitive);
    for (const QString& mixerName : std::as_const(mixerNames))
    {
        ui->mMixerTypeComboBox->addItem(mixerName, cMultiUnitFinder::GetFindStringForMixer(mixerName));
    }
    connect(ui->mMixerTypeComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::SelectedMixerTypeChanged);
}

void cMainWindow::CreateMIDIChannelComboBox()
{
    for (int channel = 0; channel < 16; ++channel)
    {
        ui->mMIDIChannelComboBox->addItem(QString::number(channel + 1), channel);
    }
    connect(ui->mMIDIChannelComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::MIDIChannelComboIndexChanged);
}

void cMainWindow::CreateConnectionRadioGroups()
{
    midiPortsGroup->AddWidget(ui->mMixerMIDIInLabel);
    midiPortsGroup->AddWidget(ui->mMixerMIDIInComboBox);
    midiPortsGroup->AddWidget(ui->mMixerMIDIOutLabel);
    midiPortsGroup->AddWidget(ui->mMixerMIDIOutComboBox);
    tcpIPGroup->AddWidget(ui->mUnitComboBox);
    tcpIPGroup->AddWidget(ui->mIPAddressEdit);
    tcpIPGroup->AddWidget(ui->mConnectCheckBox);
    connect(ui->mMixerMIDIInComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::MixerMIDIInputSelected);
    connect(ui->mMixerMIDIOutComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::MixerMIDIOutputSelected);
    connect(ui->mUnitComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged),
        this, &cMainWindow::SelectedUnitChanged);
    connect(ui->mMIDIPortsRadioButton, &QRadioButton::toggled, this, &cMainWindow::MixerConnectionModeToggled);
    connect(ui->mTCPIPRadioButton, &QRadioButton::toggled, this, &cMainWindow::MixerConnectionModeToggled);
    MixerConnectionModeToggled();
}

void cMainWindow::CreateUI()
{
    setWindowIcon(QIcon(QStringLiteral(":/Images/Icon.svg")));
    CreateActions();
    connect(ui->mConnectCheckBox, &QCheckBox::toggled, this, &cMainWindow::ConnectCheckBoxToggled);
    // Only the user's own clicks: the program unticks it in many flows.
    connect(ui->mConnectCheckBox, &QCheckBox::clicked, connectionPolicy, &cTCPMIDIConnectionPolicy::ConnectClicked);
    connect(connectionStatus, &cConnectionStatus::Changed, this, &cMainWindow::ShowConnectionState);
    connect(ui->mTCPIPRadioButton, &QRadioButton::toggled, this, &cMainWindow::ShowConnectionState);
}

void cMainWindow::CreateActions()
{
    trayMenu = new cTrayMenu(translatorConfiguration, setupProblems, this);
    connect(trayMenu, &cTrayMenu::ShowPreferencesTriggered, this, &cMainWindow::ShowPreferences);
    reconnectOptions = new cReconnectOptions(settingsKeys, trayMenu, connectionPolicy,
        translatorConfiguration->GetMixerStateRestorer(), ui->mConnectCheckBox, this);
    connect(trayMenu, &cTrayMenu::HelpTriggered, this, &cMainWindow::OpenHelpManual);
    connect(trayMenu, &cTrayMenu::AboutTriggered, this, &cMainWindow::ShowAboutMessageBox);
    connect(trayMenu, &cTrayMenu::Activated, this, &cMainWindow::SystemTrayIconActivated);
}

void cMainWindow::ShowPreferences()
{
    // A tray program is not brought to the front by showing its window alone.
    showNormal();
    raise();
    activateWindow();
}

void cMainWindow::SystemTrayIconActivated(QSystemTrayIcon::ActivationReason reason)
{
    // The platform opens the context menu by itself on the other clicks.
    if (reason == QSystemTrayIcon::DoubleClick)
    {
        ShowPreferences();
    }
}

void cMainWindow::ShowAboutMessageBox()
{
    QMessageBox::about(this, ABOUT_TITLE, ABOUT_BODY + QStringLiteral("\n\n") + cHelpManual::GetAboutLine());
}

void cMainWindow::OpenHelpManual()
{
    // No handler at all is told at the icon, as no window may be open.
    if (!cHelpManual::Open(QUrl(QStringLiteral("file:///") + cHelpManual::GetPath())))
    {
        trayMenu->ShowNotice(tr("No PDF viewer opened the manual, %1.").arg(cHelpManual::GetFile()));
    }
}

void cMainWindow::LoadSettings()
{
    QString mixerType = QSettings().value(cSettingsKeys::GetMixerTypeKey()).toString();
    // An earlier release stored this mixer by its short name.
    if (mixerType == QStringLiteral("Tx"))
    {
        mixerType = QStringLiteral("Tx-16");
    }
    if (!mixerType.isEmpty())
    {
        const int index = ui->mMixerTypeComboBox->findText(mixerType, Qt::MatchExactly | Qt::MatchCaseSensitive);
        if (index >= 0)
        {
            ui->mMixerTypeComboBox->setCurrentIndex(index);
        }
    }
    SelectedMixerTypeChanged(ui->mMixerTypeComboBox->currentIndex());
}

void cMainWindow::SelectedMixerTypeChanged(int index)
{
    const QString mixerName = ui->mMixerTypeComboBox->itemText(index);
    QSettings().setValue(cSettingsKeys::GetMixerTypeKey(), mixerName);
    settingsKeys.SetMixerTypeString(mixerName);
    reconnectOptions->Load();
    unitList->SetCustomUnitAddress(GetSavedUnitAddress());
    connectionPolicy->SetSavedUnit(
        QSettings().value(settingsKeys.GetDefaultUnitNameKey()).toString(), GetSavedUnitAddress());

    {
        const QSignalBlocker blocker(ui->mDAWTypeComboBox);
        PopulateDAWTypeComboBox();
        LoadDAWSetting();
    }

    translatorConfiguration->LoadFromFile(cFileLocations::GetConfigurationFileDirectory()
        + mixerDawMap.GetFilePathForMixerAndDAW(mixerName, ui->mDAWTypeComboBox->currentText()));
    setupProblems->Set(cSetupProblems::eKind::RuleFile, translatorConfiguration->GetLoadProblem());
    LoadMIDIChannelSetting();

    // A new choice never stays connected to the unit of the old one.
    ui->mConnectCheckBox->setChecked(false);

    multiUnitFinder->StopFindingAllUnits();
    multiUnitFinder->StartFindingUnits(ui->mMixerTypeComboBox->itemData(index).toString());
    FoundUnitsChanged();

    RepopulateMixerMIDIInputComboBox();
    RepopulateMixerMIDIOutputComboBox();

    const QString mode = QSettings().value(settingsKeys.GetMixerConnectionTypeKey()).toString();
    if (mode == MIDI_MODE_SETTING)
    {
        ui->mMIDIPortsRadioButton->setChecked(true);
    }
    else if (mode == TCP_MODE_SETTING)
    {
        ui->mTCPIPRadioButton->setChecked(true);
    }
    MixerConnectionModeToggled();
    ShowConnectionState();
}

void cMainWindow::SelectedDAWChanged(int index)
{
    QSettings().setValue(cSettingsKeys::GetDAWTypeKey(), ui->mDAWTypeComboBox->itemText(index));
    SelectedMixerTypeChanged(ui->mMixerTypeComboBox->currentIndex());
}

void cMainWindow::PopulateDAWTypeComboBox()
{
    ui->mDAWTypeComboBox->clear();
    ui->mDAWTypeComboBox->addItems(mixerDawMap.GetDAWNamesForMixer(ui->mMixerTypeComboBox->currentText()));
}

void cMainWindow::LoadDAWSetting()
{
    const QString dawType = QSettings().value(cSettingsKeys::GetDAWTypeKey()).toString();
    const int index = ui->mDAWTypeComboBox->findText(dawType, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (!dawType.isEmpty() && index >= 0)
    {
        ui->mDAWTypeComboBox->setCurrentIndex(index);
    }
}

void cMainWindow::LoadMIDIChannelSetting()
{
    const unsigned char channel = static_cast<unsigned char>(
        QSettings().value(settingsKeys.GetMIDIChannelKey(), 1).toUInt() & 0xFF);
    for (int index = 0; index < ui->mMIDIChannelComboBox->count(); ++index)
    {
        if (ui->mMIDIChannelComboBox->itemData(index).toUInt() == channel)
        {
            ui->mMIDIChannelComboBox->setCurrentIndex(index);
            SetMIDITranslatorMIDIChannelVariable(channel);
            return;
        }
    }
}

void cMainWindow::MIDIChannelComboIndexChanged(int index)
{
    SetMIDITranslatorMIDIChannelVariable(
        static_cast<unsigned char>(ui->mMIDIChannelComboBox->itemData(index).toUInt() & 0xFF));
}

void cMainWindow::SetMIDITranslatorMIDIChannelVariable(unsigned char channel)
{
    // A rule file may keep the channel in more than one variable (one per
    // direction, say); all of them follow the user's choice.
    QStringList channelVariableNames;
    for (const cMIDITranslatorVariable& variable : translatorConfiguration->GetMIDITranslatorVariables())
    {
        if (variable.GetDescriptiveName() == MIDI_CHANNEL_VARIABLE_NAME)
        {
            channelVariableNames.append(variable.GetVariableName());
        }
    }
    for (const QString& variableName : std::as_const(channelVariableNames))
    {
        translatorConfiguration->SetVariableValue(variableName, channel);
    }
    QSettings().setValue(settingsKeys.GetMIDIChannelKey(), static_cast<unsigned int>(channel));
}

void cMainWindow::MixerConnectionModeToggled()
{
    cSystemMIDIConfiguration* registry = translatorConfiguration->GetSystemMIDIConfiguration();
    setupProblems->SetMIDIPortsInUse(ui->mMIDIPortsRadioButton->isChecked());
    if (ui->mMIDIPortsRadioButton->isChecked())
    {
        QSettings().setValue(settingsKeys.GetMixerConnectionTypeKey(), MIDI_MODE_SETTING);
        tcpIPGroup->Hide();
        midiPortsGroup->Show();
        connectionPolicy->SetInUse(false);
        ui->mConnectCheckBox->setChecked(false);
        statusBarView->ShowState(QString());
        RepopulateMixerMIDIInputComboBox();
        RepopulateMixerMIDIOutputComboBox();
        // The lists follow ports being plugged in and out while they are shown.
        connect(registry, &cSystemMIDIConfiguration::InputAddedSignal,
            this, &cMainWindow::RepopulateMixerMIDIInputComboBox, Qt::UniqueConnection);
        connect(registry, &cSystemMIDIConfiguration::InputRemovedSignal,
            this, &cMainWindow::RepopulateMixerMIDIInputComboBox, Qt::UniqueConnection);
        connect(registry, &cSystemMIDIConfiguration::OutputAddedSignal,
            this, &cMainWindow::RepopulateMixerMIDIOutputComboBox, Qt::UniqueConnection);
        connect(registry, &cSystemMIDIConfiguration::OutputRemovedSignal,
            this, &cMainWindow::RepopulateMixerMIDIOutputComboBox, Qt::UniqueConnection);
    }
    else
    {
        QSettings().setValue(settingsKeys.GetMixerConnectionTypeKey(), TCP_MODE_SETTING);
        midiPortsGroup->Hide();
        tcpIPGroup->Show();
        statusBarView->ShowState(tcpMIDIInputOutput->GetCurrentSocketStateDescription());
        registry->disconnect(this);
        translatorConfiguration->SetMixerInputPortName(QString::fromLatin1(TCP_MIDI_PORT_NAME));
        translatorConfiguration->SetMixerOutputPortName(QString::fromLatin1(TCP_MIDI_PORT_NAME));
        connectionPolicy->SetInUse(true);
    }
}

void cMainWindow::RepopulateMixerMIDIInputComboBox()
{
    mixerInputList->Repopulate(translatorConfiguration->GetSystemMIDIConfiguration()->GetSystemMIDIInputNames(),
        settingsKeys.GetMIDIInputPortKey());
}

void cMainWindow::RepopulateMixerMIDIOutputComboBox()
{
    mixerOutputList->Repopulate(translatorConfiguration->GetSystemMIDIConfiguration()->GetSystemMIDIOutputNames(),
        settingsKeys.GetMIDIOutputPortKey());
}

void cMainWindow::MixerMIDIInputSelected(int index)
{
    mixerInputList->Select(index, settingsKeys.GetMIDIInputPortKey());
}

void cMainWindow::MixerMIDIOutputSelected(int index)
{
    mixerOutputList->Select(index, settingsKeys.GetMIDIOutputPortKey());
}

void cMainWindow::FoundUnitsChanged()
{
    // While connected the list stays as it is, so the connected unit cannot
    // vanish from under the user; while retrying too, unless the saved unit
    // answers anew, which has it taken at once where it answers.
    const QList<sUnit> foundUnits = multiUnitFinder->GetFoundUnits();
    if (tcpMIDIInputOutput->IsConnected() || connectionPolicy->HoldsUnitList(foundUnits))
    {
        return;
    }
    unitList->Fill(foundUnits);

    const QString defaultUnitName = QSettings().value(settingsKeys.GetDefaultUnitNameKey()).toString();
    if (defaultUnitName.isEmpty() && unitList->HasFoundUnits())
    {
        unitList->Select(1);
        SelectedUnitChanged(1);
        return;
    }
    ForceSelectUnit(defaultUnitName, GetSavedUnitAddress());
}

bool cMainWindow::TrySelectUnit(QString name)
{
    const int index = unitList->FindFoundUnit(name);
    if (index < 0)
    {
        return false;
    }
    unitList->Select(index);
    SelectedUnitChanged(index);
    const QHostAddress address = unitList->GetUnit(index).address;
    QSettings().setValue(settingsKeys.GetDefaultUnitIPAddressKey(), address.toString());
    connectionPolicy->SetSavedUnit(name, address);
    unitList->SetCustomUnitAddress(address);
    return true;
}

void cMainWindow::ForceSelectUnit(QString name, QHostAddress address)
{
    if (TrySelectUnit(name))
    {
        return;
    }
    unitList->Select(0);
    ui->mIPAddressEdit->setText(address.toString());
    SelectedUnitChanged(0);
}

void cMainWindow::SelectedUnitChanged(int index)
{
    const sUnit unit = unitList->GetUnit(index);
    ui->mIPAddressEdit->setText(unit.address.toString());
    ui->mIPAddressEdit->setEnabled(cUnitList::IsCustomUnit(unit));
    ui->mConnectCheckBox->setChecked(false);
    // The address may be the same text as before, which IPAddressChanged does not hear.
    IPAddressChanged();
}

bool cMainWindow::IsIPAddressValid() const
{
    QString text = ui->mIPAddressEdit->text();
    int pos = 0;
    return ui->mIPAddressEdit->validator()->validate(text, pos) == QValidator::Acceptable;
}

void cMainWindow::IPAddressChanged()
{
    ui->mConnectCheckBox->setEnabled(IsIPAddressValid());
    const QHostAddress address = cIPAddressValidator::ToAddress(ui->mIPAddressEdit->text());
    connectionPolicy->SetChosenUnit(unitList->GetSelectedUnit().name, IsIPAddressValid() ? address : QHostAddress());
}

QHostAddress cMainWindow::GetSavedUnitAddress() const
{
    return cIPAddressValidator::ToAddress(
        QSettings().value(settingsKeys.GetDefaultUnitIPAddressKey(), DEFAULT_UNIT_IP_ADDRESS).toString());
}

void cMainWindow::ConnectCheckBoxToggled(bool checked)
{
    if (checked)
    {
        const QHostAddress address = cIPAddressValidator::ToAddress(ui->mIPAddressEdit->text());
        connectionPolicy->Connect(unitList->GetSelectedUnit().name, address);
        QSettings().setValue(settingsKeys.GetDefaultUnitNameKey(), unitList->GetSelectedUnit().name);
        // In the form connected to: the field's text may hold leading zeros.
        QSettings().setValue(settingsKeys.GetDefaultUnitIPAddressKey(), address.toString());
        unitList->SetCustomUnitAddress(address);
        translatorConfiguration->SetTCPMIDIInputOutput(tcpMIDIInputOutput);
    }
    else
    {
        translatorConfiguration->SetTCPMIDIInputOutput(nullptr);
        connectionPolicy->Disconnect();
    }
    ui->mUnitComboBox->setEnabled(!checked);
    ui->mIPAddressEdit->setEnabled(!checked && cUnitList::IsCustomUnit(unitList->GetSelectedUnit()));
}

void cMainWindow::TCPMIDIConnectionStateStringChanged(QString text)
{
    if (ui->mTCPIPRadioButton->isChecked())
    {
        statusBarView->ShowState(text);
    }
}

void cMainWindow::ShowConnectionState()
{
    const bool tcp = ui->mTCPIPRadioButton->isChecked();
    if (tcp)
    {
        statusBarView->ShowState(connectionStatus->GetStateText(), connectionStatus->GetDetails());
    }
    trayMenu->ShowStatus({ui->mMixerTypeComboBox->currentText(), ui->mDAWTypeComboBox->currentText(),
        tcp ? connectionStatus->GetSummary() : tr("MIDI ports")}, connectionStatus->IsRetrying());
}
