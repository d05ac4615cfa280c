#include "Application/HelpManual.h"

#include "Application/DebugTrace.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>

namespace
{
QtMessageHandler previousHandler = nullptr;
QString heldBackUrl;

// Passes on everything but warnings about the URL being opened.
void HoldBackUrlWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type != QtWarningMsg || !message.contains(heldBackUrl))
    {
        previousHandler(type, context, message);
    }
}
}

QString cHelpManual::GetPath()
{
    return QCoreApplication::applicationDirPath() + QDir::separator() + QStringLiteral("..") + QDir::separator()
        + QStringLiteral("Resources") + QDir::separator() + QStringLiteral("HelpManual.pdf");
}

QString cHelpManual::GetFile()
{
    return QDir::cleanPath(GetPath());
}

QString cHelpManual::GetAboutLine()
{
    return QCoreApplication::translate("cHelpManual",
               "Tessera translates MIDI between a DAW and a mixing console. Its manual: Help in the tray menu, or %1.")
        .arg(GetFile());
}

bool cHelpManual::Open(const QUrl& url)
{
    heldBackUrl = url.toString();
    previousHandler = qInstallMessageHandler(HoldBackUrlWarnings);
    const bool opened = QDesktopServices::openUrl(url);
    qInstallMessageHandler(previousHandler);
    if (!opened)
    {
        DebugErrTrace(DEBUG_LOCATION, "No viewer opened the help manual: %s",
                      QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile())).toEncoded().constData());
    }
    return opened;
}
