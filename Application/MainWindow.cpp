#include "Application/MainWindow.h"

#include "Application/ApplicationStrings.h"
#include "Application/AutostartEntry.h"
#include "Application/IPAddressValidator.h"
#include "Application/MIDIActiveWidget.h"
#include "Application/MIDIMonitorWindow.h"
#include "Application/WidgetGroup.h"
#include "ui_MainWindow.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"
#include "MIDITranslator/FileLocations.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "Network/MultiUnitFinder.h"
#include "Network/TCPMIDIInptOutput.h"
#include "Network/TCPMIDIReconnector.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QLayout>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

namespace
{
const QString DEFAULT_UNIT_IP_ADDRESS = QStringLiteral("192.168.1.1");
const QString MIDI_MODE_SETTING = QStringLiteral("MIDI");
const QString TCP_MODE_SETTING = QStringLiteral("TCP");
const QString NO_PORT_ENTRY = QStringLiteral("-");
const QString OFFLINE_PORT_PREFIX = QStringLiteral("(Offline) ");
const QString MIDI_CHANNEL_VARIABLE_NAME = QStringLiteral("MIDI Channel");
const QString ICON_PATH = QStringLiteral(":/Images/Icon.svg");

// Each mixer family answers its own discovery datagram.
QString FindStringForMixer(const QString& mixerName)
{
    if (mixerName.contains(QStringLiteral("Tx")))
    {
        return QStringLiteral("TX Find");
    }
    if (mixerName.contains(QStringLiteral("KVR")))
    {
        return QStringLiteral("KVR Find");
    }
    return QString();
}

bool IsCustomUnit(const sUnit& unit)
{
    return unit.name == CUSTOM_UNIT_STRING && unit.findString.isEmpty();
}

// The address field's mask pads groups with blanks and allows leading zeros,
// which an address parser reads as octal ("010" as 8); stores written by
// earlier releases may hold such text too. Each group is read as decimal.
QHostAddress DottedDecimalAddress(const QString& text)
{
    QStringList groups = text.split(QLatin1Char('.'));
    for (QString& group : groups)
    {
        bool isNumber = false;
        const int value = group.trimmed().toInt(&isNumber, 10);
        if (!isNumber)
        {
            return QHostAddress(text);
        }
        group = QString::number(value);
    }
    return QHostAddress(groups.join(QLatin1Char('.')));
}
}

cMainWindow::cMainWindow(cSystemMIDIConfiguration* systemMIDIConfiguration, QWidget* parent)
    : QMainWindow(parent),
      ui(new Ui_MainWindow),
      midiPortsGroup(new cWidgetGroup(this)),
      tcpIPGroup(new cWidgetGroup(this)),
      customUnit{QHostAddress(DEFAULT_UNIT_IP_ADDRESS), CUSTOM_UNIT_STRING, QString()}
{
    RegisterUnitMetaType();
    mixerDawMap.LoadFromFilePath(cFileLocations::GetMixerMapFilePath());

    ui->setupUi(this);
    ui->mIPAddressEdit->setValidator(new cIPAddressValidator(ui->mIPAddressEdit));
    connect(ui->mIPAddressEdit, &QLineEdit::textChanged, this, &cMainWindow::IPAddressChanged);
    setFixedSize(layout()->sizeHint());

    translatorConfiguration = new cMIDITranslatorConfiguration(systemMIDIConfiguration);
    CreateMixerTypeComboBox();

    tcpMIDIInputOutput = new cTCPMIDIInptOutput(this);
    connect(tcpMIDIInputOutput, &cTCPMIDIInptOutput::StateStringChanged,
        this, &cMainWindow::TCPMIDIConnectionStateStringChanged);
    tcpMIDIReconnector = new cTCPMIDIReconnector(tcpMIDIInputOutput, this);
    connect(tcpMIDIReconnector, &cTCPMIDIReconnector::RetryScheduled, this, &cMainWindow::TCPMIDIRetryScheduled);
    connectToSavedUnitTimer = new QTimer(this);
    connectToSavedUnitTimer->setSingleShot(true);
    connectToSavedUnitTimer->setInterval(0);
    connect(connectToSavedUnitTimer, &QTimer::timeout, this, &cMainWindow::ConnectToSavedUnitIfWanted);

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
    // The registry, the link and the finder may still signal while they are
    // torn down; nothing here may answer them any more.
    translatorConfiguration->GetSystemMIDIConfiguration()->disconnect(this);
    tcpMIDIInputOutput->disconnect(this);
    multiUnitFinder->disconnect(this);
    delete translatorConfiguration;
    delete ui;
}

void cMainWindow::CreateMixerTypeComboBox()
{
    QStringList mixerNames = mixerDawMap.GetMixerNames();
    mixerNames.sort(Qt::CaseSensitive);
    for (const QString& mixerName : qAsConst(mixerNames))
    {
        ui->mMixerTypeComboBox->addItem(mixerName, FindStringForMixer(mixerName));
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
    setWindowIcon(QIcon(ICON_PATH));
    CreateActions();

    // Help stands above About on purpose: it is what a user looks for first.
    trayIconMenu = new QMenu(this);
    trayIconMenu->addAction(showPreferencesAction);
    trayIconMenu->addAction(midiMonitorAction);
    trayIconMenu->addSeparator();
    trayIconMenu->addAction(stayConnectedAction);
    trayIconMenu->addAction(startAtLoginAction);
    trayIconMenu->addSeparator();
    trayIconMenu->addAction(helpAction);
    trayIconMenu->addAction(aboutAction);
    trayIconMenu->addSeparator();
    trayIconMenu->addAction(quitAction);

    // The entry may be added, removed or switched off behind the program's
    // back, by the session's own settings or by hand: the tick is read afresh
    // each time.
    startAtLoginAction->setChecked(cAutostartEntry::IsEnabled());
    connect(trayIconMenu, &QMenu::aboutToShow, this,
        [this]() { startAtLoginAction->setChecked(cAutostartEntry::IsEnabled()); });

    trayIcon = new QSystemTrayIcon(this);
    trayIcon->setContextMenu(trayIconMenu);
    trayIcon->setIcon(QIcon(ICON_PATH));
    trayIcon->setVisible(true);

    AddActivityLamp(QStringLiteral("mMixerMIDIInActiveWidget"), &cMIDITranslatorConfiguration::MixerMIDIInputRead);
    AddActivityLamp(QStringLiteral("mMixerMIDIOutActiveWidget"), &cMIDITranslatorConfiguration::MixerMIDIOutputWrite);
    statusBar()->layout()->setContentsMargins(0, 0, 5, 0);

    connect(trayIcon, &QSystemTrayIcon::activated, this, &cMainWindow::SystemTrayIconActivated);
    connect(ui->mConnectCheckBox, &QCheckBox::toggled, this, &cMainWindow::ConnectCheckBoxToggled);
    // Only the user's own clicks: the program unticks it in many flows.
    connect(ui->mConnectCheckBox, &QCheckBox::clicked, this, [this](bool checked) { connectHeldOff = !checked; });
}

// A lamp at the right of the status bar that lights while the configuration
// reports traffic through one of the mixer's ports.
void cMainWindow::AddActivityLamp(const QString& name, void (cMIDITranslatorConfiguration::*traffic)())
{
    cMIDIActiveWidget* lamp = new cMIDIActiveWidget;
    lamp->setObjectName(name);
    lamp->setFixedSize(10, 10);
    connect(translatorConfiguration, traffic, lamp, &cMIDIActiveWidget::MIDIActive);
    statusBar()->addPermanentWidget(lamp);
}

void cMainWindow::CreateActions()
{
    showPreferencesAction = new QAction(tr("&Show Preferences"), this);
    connect(showPreferencesAction, &QAction::triggered, this, &cMainWindow::ShowPreferences);
    midiMonitorAction = new QAction(tr("MIDI Monitor"), this);
    connect(midiMonitorAction, &QAction::triggered, this, &cMainWindow::ShowMIDIMonitor);
    // Set from the settings when the mixer type changes, which does not trigger it.
    stayConnectedAction = new QAction(tr("Stay Connected"), this);
    stayConnectedAction->setCheckable(true);
    connect(stayConnectedAction, &QAction::triggered, this, &cMainWindow::StayConnectedToggled);
    aboutAction = new QAction(tr("&About"), this);
    connect(aboutAction, &QAction::triggered, this, &cMainWindow::ShowAboutMessageBox);
    startAtLoginAction = new QAction(tr("Start at Login"), this);
    startAtLoginAction->setCheckable(true);
    connect(startAtLoginAction, &QAction::triggered, this, &cMainWindow::StartAtLoginTriggered);
    helpAction = new QAction(tr("&Help"), this);
    connect(helpAction, &QAction::triggered, this, &cMainWindow::OpenHelpManual);
    quitAction = new QAction(tr("&Quit"), this);
    connect(quitAction, &QAction::triggered, qApp, &QCoreApplication::quit);
}

void cMainWindow::ShowPreferences()
{
    // A tray program is not brought to the front by showing its window alone.
    showNormal();
    raise();
    activateWindow();
}

void cMainWindow::ShowMIDIMonitor()
{
    if (!midiMonitorWindow)
    {
        midiMonitorWindow = new cMIDIMonitorWindow(translatorConfiguration, this);
    }
    midiMonitorWindow->showNormal();
    midiMonitorWindow->raise();
    midiMonitorWindow->activateWindow();
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
    QMessageBox::about(this, ABOUT_TITLE, ABOUT_BODY);
}

void cMainWindow::OpenHelpManual()
{
    // The manual lies in the resources beside the program's own directory,
    // both in the build tree and once installed. A missing file is left to
    // the desktop's handler to report.
    const QString path = QCoreApplication::applicationDirPath() + QDir::separator() + QStringLiteral("..")
        + QDir::separator() + QStringLiteral("Resources") + QDir::separator() + QStringLiteral("HelpManual.pdf");
    QDesktopServices::openUrl(QUrl(QStringLiteral("file:///") + path));
}

void cMainWindow::StartAtLoginTriggered(bool checked)
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
    stayConnectedAction->setChecked(QSettings().value(settingsKeys.GetTryConnectKey(), false).toBool());
    customUnit.address = GetSavedUnitAddress();

    {
        const QSignalBlocker blocker(ui->mDAWTypeComboBox);
        PopulateDAWTypeComboBox();
        LoadDAWSetting();
    }

    translatorConfiguration->LoadFromFile(cFileLocations::GetConfigurationFileDirectory()
        + mixerDawMap.GetFilePathForMixerAndDAW(mixerName, ui->mDAWTypeComboBox->currentText()));
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
    for (const QString& variableName : qAsConst(channelVariableNames))
    {
        translatorConfiguration->SetVariableValue(variableName, channel);
    }
    QSettings().setValue(settingsKeys.GetMIDIChannelKey(), static_cast<unsigned int>(channel));
}

void cMainWindow::MixerConnectionModeToggled()
{
    cSystemMIDIConfiguration* registry = translatorConfiguration->GetSystemMIDIConfiguration();
    if (ui->mMIDIPortsRadioButton->isChecked())
    {
        QSettings().setValue(settingsKeys.GetMixerConnectionTypeKey(), MIDI_MODE_SETTING);
        tcpIPGroup->Hide();
        midiPortsGroup->Show();
        ui->mConnectCheckBox->setChecked(false);
        statusBar()->clearMessage();
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
        statusBar()->showMessage(tcpMIDIInputOutput->GetCurrentSocketStateDescription());
        registry->disconnect(this);
        translatorConfiguration->SetMixerInputPortName(QString::fromLatin1(TCP_MIDI_PORT_NAME));
        translatorConfiguration->SetMixerOutputPortName(QString::fromLatin1(TCP_MIDI_PORT_NAME));
        connectToSavedUnitTimer->start();
    }
}

void cMainWindow::RepopulateMixerMIDIInputComboBox()
{
    RepopulateMixerMIDIPortComboBox(ui->mMixerMIDIInComboBox,
        translatorConfiguration->GetSystemMIDIConfiguration()->GetSystemMIDIInputNames(),
        settingsKeys.GetMIDIInputPortKey(), &cMIDITranslatorConfiguration::SetMixerInputPortName);
}

void cMainWindow::RepopulateMixerMIDIOutputComboBox()
{
    RepopulateMixerMIDIPortComboBox(ui->mMixerMIDIOutComboBox,
        translatorConfiguration->GetSystemMIDIConfiguration()->GetSystemMIDIOutputNames(),
        settingsKeys.GetMIDIOutputPortKey(), &cMIDITranslatorConfiguration::SetMixerOutputPortName);
}

void cMainWindow::RepopulateMixerMIDIPortComboBox(QComboBox* comboBox, QStringList portNames,
    const QString& settingsKey, void (cMIDITranslatorConfiguration::*setPortName)(QString))
{
    portNames.sort(Qt::CaseSensitive);

    // The saved port stays the configured one even while it is unplugged, so
    // traffic resumes by itself when it comes back.
    const QString savedPortName = QSettings().value(settingsKey).toString();
    (translatorConfiguration->*setPortName)(savedPortName);

    const QSignalBlocker blocker(comboBox);
    comboBox->clear();
    comboBox->addItem(NO_PORT_ENTRY);
    for (const QString& portName : qAsConst(portNames))
    {
        comboBox->addItem(portName, portName);
    }
    if (savedPortName.isEmpty())
    {
        comboBox->setCurrentIndex(0);
    }
    else if (portNames.contains(savedPortName))
    {
        comboBox->setCurrentIndex(portNames.indexOf(savedPortName) + 1);
    }
    else
    {
        comboBox->addItem(OFFLINE_PORT_PREFIX + savedPortName);
        comboBox->setCurrentIndex(comboBox->count() - 1);
    }
}

void cMainWindow::MixerMIDIInputSelected(int index)
{
    MixerMIDIPortSelected(ui->mMixerMIDIInComboBox, index, settingsKeys.GetMIDIInputPortKey(),
        &cMIDITranslatorConfiguration::SetMixerInputPortName);
}

void cMainWindow::MixerMIDIOutputSelected(int index)
{
    MixerMIDIPortSelected(ui->mMixerMIDIOutComboBox, index, settingsKeys.GetMIDIOutputPortKey(),
        &cMIDITranslatorConfiguration::SetMixerOutputPortName);
}

void cMainWindow::MixerMIDIPortSelected(QComboBox* comboBox, int index, const QString& settingsKey,
    void (cMIDITranslatorConfiguration::*setPortName)(QString))
{
    // "-" clears the port; the offline entry carries no name and changes nothing.
    const QString portName = comboBox->itemData(index).toString();
    if (index == 0 || !portName.isEmpty())
    {
        (translatorConfiguration->*setPortName)(portName);
        QSettings().setValue(settingsKey, portName);
    }
}

void cMainWindow::FoundUnitsChanged()
{
    // While connected the list stays as it is, so the connected unit cannot
    // vanish from under the user. While retrying too, so that the saved unit
    // is still tried after it has stopped answering; only its answering again
    // (perhaps from a new address) has it taken at once where it answers.
    if (tcpMIDIInputOutput->IsConnected() || (tcpMIDIReconnector->IsKeeping() && !IsSavedUnitAnsweringAnew()))
    {
        return;
    }
    {
        const QSignalBlocker blocker(ui->mUnitComboBox);
        ui->mUnitComboBox->clear();
        ui->mUnitComboBox->addItem(customUnit.name, QVariant::fromValue(customUnit));
        const QList<sUnit> foundUnits = multiUnitFinder->GetFoundUnits();
        for (const sUnit& unit : foundUnits)
        {
            ui->mUnitComboBox->addItem(unit.name, QVariant::fromValue(unit));
        }
    }

    const QString defaultUnitName = QSettings().value(settingsKeys.GetDefaultUnitNameKey()).toString();
    if (defaultUnitName.isEmpty() && ui->mUnitComboBox->count() > 1)
    {
        const QSignalBlocker blocker(ui->mUnitComboBox);
        ui->mUnitComboBox->setCurrentIndex(1);
        SelectedUnitChanged(1);
        return;
    }
    ForceSelectUnit(defaultUnitName, GetSavedUnitAddress());
    connectToSavedUnitTimer->start();
}

bool cMainWindow::IsSavedUnitAnsweringAnew() const
{
    const QString savedName = QSettings().value(settingsKeys.GetDefaultUnitNameKey()).toString();
    const QList<sUnit> foundUnits = multiUnitFinder->GetFoundUnits();
    for (const sUnit& unit : foundUnits)
    {
        if (unit.name == savedName)
        {
            // An attempt under way at that address is left to finish.
            return unit.address != tcpMIDIReconnector->GetAddress()
                || tcpMIDIInputOutput->GetSocketState() == QAbstractSocket::UnconnectedState;
        }
    }
    return false;
}

bool cMainWindow::TrySelectUnit(QString name)
{
    for (int index = 1; index < ui->mUnitComboBox->count(); ++index)
    {
        const sUnit unit = ui->mUnitComboBox->itemData(index).value<sUnit>();
        if (unit.name == name)
        {
            {
                const QSignalBlocker blocker(ui->mUnitComboBox);
                ui->mUnitComboBox->setCurrentIndex(index);
            }
            SelectedUnitChanged(index);
            QSettings().setValue(settingsKeys.GetDefaultUnitIPAddressKey(), unit.address.toString());
            SetCustomUnitAddress(unit.address);
            return true;
        }
    }
    return false;
}

void cMainWindow::ForceSelectUnit(QString name, QHostAddress address)
{
    if (TrySelectUnit(name))
    {
        return;
    }
    {
        const QSignalBlocker blocker(ui->mUnitComboBox);
        ui->mUnitComboBox->setCurrentIndex(0);
    }
    ui->mIPAddressEdit->setText(address.toString());
    SelectedUnitChanged(0);
}

void cMainWindow::SelectedUnitChanged(int index)
{
    const sUnit unit = ui->mUnitComboBox->itemData(index).value<sUnit>();
    ui->mIPAddressEdit->setText(unit.address.toString());
    ui->mIPAddressEdit->setEnabled(IsCustomUnit(unit));
    ui->mConnectCheckBox->setChecked(false);
}

void cMainWindow::SetCustomUnitAddress(const QHostAddress& address)
{
    // The list's first entry carries its own copy of the custom unit.
    customUnit.address = address;
    if (ui->mUnitComboBox->count() > 0)
    {
        ui->mUnitComboBox->setItemData(0, QVariant::fromValue(customUnit));
    }
}

sUnit cMainWindow::GetSelectedUnit() const
{
    return ui->mUnitComboBox->currentData().value<sUnit>();
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
}

QHostAddress cMainWindow::GetEnteredAddress() const
{
    return DottedDecimalAddress(ui->mIPAddressEdit->text());
}

QHostAddress cMainWindow::GetSavedUnitAddress() const
{
    return DottedDecimalAddress(
        QSettings().value(settingsKeys.GetDefaultUnitIPAddressKey(), DEFAULT_UNIT_IP_ADDRESS).toString());
}

void cMainWindow::ConnectCheckBoxToggled(bool checked)
{
    if (checked)
    {
        const QHostAddress address = GetEnteredAddress();
        tcpMIDIInputOutput->ConnectToHost(address);
        QSettings().setValue(settingsKeys.GetDefaultUnitNameKey(), GetSelectedUnit().name);
        // In the form connected to: the field's text may hold leading zeros.
        QSettings().setValue(settingsKeys.GetDefaultUnitIPAddressKey(), address.toString());
        SetCustomUnitAddress(address);
        translatorConfiguration->SetTCPMIDIInputOutput(tcpMIDIInputOutput);
        if (stayConnectedAction->isChecked())
        {
            tcpMIDIReconnector->Keep(address);
        }
    }
    else
    {
        tcpMIDIReconnector->Release();
        translatorConfiguration->SetTCPMIDIInputOutput(nullptr);
        tcpMIDIInputOutput->DisconnectFromHost();
    }
    ui->mUnitComboBox->setEnabled(!checked);
    ui->mIPAddressEdit->setEnabled(!checked && IsCustomUnit(GetSelectedUnit()));
}

void cMainWindow::TCPMIDIConnectionStateStringChanged(QString text)
{
    if (ui->mTCPIPRadioButton->isChecked())
    {
        statusBar()->showMessage(text);
    }
}

void cMainWindow::TCPMIDIRetryScheduled(int delayMs)
{
    TCPMIDIConnectionStateStringChanged(tr("%1, next try in %2 s")
        .arg(tcpMIDIInputOutput->GetCurrentSocketStateDescription())
        .arg(delayMs / 1000.0));
}

void cMainWindow::StayConnectedToggled(bool checked)
{
    QSettings().setValue(settingsKeys.GetTryConnectKey(), checked);
    if (!checked)
    {
        tcpMIDIReconnector->Release();
        // No next try to announce any more.
        TCPMIDIConnectionStateStringChanged(tcpMIDIInputOutput->GetCurrentSocketStateDescription());
        return;
    }
    connectHeldOff = false;
    if (ui->mConnectCheckBox->isChecked())
    {
        tcpMIDIReconnector->Keep(GetEnteredAddress());
    }
    else
    {
        connectToSavedUnitTimer->start();
    }
}

void cMainWindow::ConnectToSavedUnitIfWanted()
{
    if (!stayConnectedAction->isChecked() || connectHeldOff || !ui->mTCPIPRadioButton->isChecked()
        || ui->mConnectCheckBox->isChecked() || !ui->mConnectCheckBox->isEnabled())
    {
        return;
    }
    // The saved unit: found again under its saved name, or the custom entry,
    // at the saved address either way.
    const QString savedName = QSettings().value(settingsKeys.GetDefaultUnitNameKey()).toString();
    if (!savedName.isEmpty() && GetSelectedUnit().name == savedName && GetEnteredAddress() == GetSavedUnitAddress())
    {
        ui->mConnectCheckBox->setChecked(true);
    }
}
