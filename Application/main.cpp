#include "Application/ApplicationStrings.h"
#include "Application/DebugTrace.h"
#include "Application/MainWindow.h"
#ifdef TESSERA_ALSA
#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#else
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#endif

#include <QApplication>
#include <QMessageBox>
#include <QSystemTrayIcon>

namespace
{
cSystemMIDIConfiguration* NewSystemMIDIConfiguration()
{
#ifdef TESSERA_ALSA
    return new cSystemMIDIConfigurationALSA;
#else
    // A build without a platform MIDI layer still translates over the TCP
    // link, but its own ports reach no other program.
    DebugTrace(DEBUG_LOCATION, "Built without ALSA: no system MIDI ports, and the DAW ports reach no other program");
    return new cSystemMIDIConfigurationMemory;
#endif
}
}

int main(int argc, char* argv[])
{
    Q_INIT_RESOURCE(MIDITranslator);

    // These three place the per-user settings store.
    QCoreApplication::setOrganizationName(ORGANISATION_NAME_STRING);
    QCoreApplication::setOrganizationDomain(ORGANISATION_DOMAIN_STRING);
    QCoreApplication::setApplicationName(PRODUCT_NAME_STRING);

    QApplication application(argc, argv);

    // The tray menu is the program's only way to be shown or quit.
    if (!QSystemTrayIcon::isSystemTrayAvailable())
    {
        QMessageBox::critical(nullptr, QObject::tr("Systray"),
            QObject::tr("Could not detect any system tray on this system"), QMessageBox::Ok);
        return 1;
    }

    // Closing the preferences window leaves the program running in the tray.
    QApplication::setQuitOnLastWindowClosed(false);

    int result = 0;
    {
        cMainWindow mainWindow(NewSystemMIDIConfiguration());
        mainWindow.setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);
        result = application.exec();
    }
    return result;
}
