#include "Application/ApplicationStrings.h"
#include "Application/DebugTrace.h"
#include "Application/MainWindow.h"
#include "Application/SingleInstance.h"
#ifdef TESSERA_ALSA
#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#else
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#endif

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QThread>

#include <cstdio>
#include <cstring>

namespace
{
const char* const USAGE = "Usage: tessera [--help | --version]\n";
const char* const HELP =
    "Controls a DAW from a digital mixing console, and the console from the DAW,\n"
    "from the system tray. Started while it runs, it shows the running Tessera's\n"
    "preferences window and ends. It waits up to 30 seconds for a system tray.\n"
    "\n"
    "  --help     print this and end\n"
    "  --version  print the version and end\n";

// At login the desktop may start us before its tray is there.
const int TRAY_WAIT_MS = 30000;
const int TRAY_CHECK_INTERVAL_MS = 500;

int UnknownArgument(const char* argument)
{
    std::fprintf(stderr, "tessera: unknown argument: %s\n%s", argument, USAGE);
    return 2;
}

// Tessera has no options of its own; these are answered with no display and
// without a word to a running Tessera. Returns the exit status.
int AnswerArguments(int argc, char* argv[])
{
    const bool help = std::strcmp(argv[1], "--help") == 0;
    if (!help && std::strcmp(argv[1], "--version") != 0)
    {
        return UnknownArgument(argv[1]);
    }
    if (argc > 2)
    {
        return UnknownArgument(argv[2]);
    }
    if (help)
    {
        std::fputs(USAGE, stdout);
        std::fputs(HELP, stdout);
    }
    else
    {
        std::printf("Tessera %s\n", TESSERA_VERSION_STRING);
    }
    return 0;
}

// Options with a single dash are Qt's, which QApplication takes out of argv:
// a desktop that restores its session starts us with "-session ID", and a
// user may give "-platform" or "-display".
bool IsQtOption(const char* argument)
{
    return argument[0] == '-' && argument[1] != '-' && argument[1] != '\0';
}

bool WaitForSystemTray()
{
    QElapsedTimer waited;
    waited.start();
    while (!QSystemTrayIcon::isSystemTrayAvailable())
    {
        if (waited.elapsed() >= TRAY_WAIT_MS)
        {
            return false;
        }
        QThread::msleep(TRAY_CHECK_INTERVAL_MS);
    }
    return true;
}

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
    if (argc > 1 && !IsQtOption(argv[1]))
    {
        return AnswerArguments(argc, argv);
    }

    Q_INIT_RESOURCE(MIDITranslator);

    // These three place the per-user settings store.
    QCoreApplication::setOrganizationName(ORGANISATION_NAME_STRING);
    QCoreApplication::setOrganizationDomain(ORGANISATION_DOMAIN_STRING);
    QCoreApplication::setApplicationName(PRODUCT_NAME_STRING);

    QApplication application(argc, argv);
    if (argc > 1)
    {
        return UnknownArgument(argv[1]);
    }

    cSingleInstance instance(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
    if (!instance.Claim())
    {
        return 0;
    }

    // The tray menu is the program's only way to be shown or quit. Nothing is
    // shown while we wait for one; a later start's request waits with us.
    if (!WaitForSystemTray())
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
        // As a double click on the tray icon does.
        QObject::connect(&instance, &cSingleInstance::ShowRequested, &mainWindow, &cMainWindow::ShowPreferences);
        result = application.exec();
    }
    return result;
}
