#include "Application/AutostartEntry.h"

#include "Application/ApplicationStrings.h"
#include "Application/DebugTrace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <utility>

namespace
{
// A desktop entry's string values escape the backslash.
QString EscapeString(QString value)
{
    return value.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
}

// Exec quotes its argument, escaping the characters that stay special inside
// the quotes, and doubles "%", which would start a field code; the result is
// then escaped once more as a string value.
QString ExecArgument(QString path)
{
    QString quoted;
    for (const QChar c : std::as_const(path))
    {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
        {
            quoted += QLatin1Char('\\');
        }
        quoted += c;
    }
    quoted.replace(QLatin1Char('%'), QLatin1String("%%"));
    return EscapeString(QLatin1Char('"') + quoted + QLatin1Char('"'));
}
}

QString cAutostartEntry::GetFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart/")
        + ORGANISATION_DOMAIN_STRING + QLatin1Char('.') + PRODUCT_NAME_STRING + QStringLiteral(".desktop");
}

bool cAutostartEntry::IsEnabled()
{
    QFile file(GetFilePath());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        return false;
    }
    // Sessions switch an entry off with Hidden=true (the autostart standard)
    // or, on GNOME, with X-GNOME-Autostart-enabled=false.
    bool inMainGroup = false;
    while (!file.atEnd())
    {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('[')))
        {
            inMainGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const QString key = line.section(QLatin1Char('='), 0, 0).trimmed();
        const QString value = line.section(QLatin1Char('='), 1).trimmed();
        if (inMainGroup && ((key == QLatin1String("Hidden") && value == QLatin1String("true"))
            || (key == QLatin1String("X-GNOME-Autostart-enabled") && value == QLatin1String("false"))))
        {
            return false;
        }
    }
    return true;
}

bool cAutostartEntry::Create()
{
    // The executable's own path, links resolved: the entry keeps working
    // whatever folder the program was started from.
    const QString program = QCoreApplication::applicationFilePath();
    const QString path = GetFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Text))
    {
        const QString entry = QStringLiteral("[Desktop Entry]\n"
                                             "Type=Application\n"
                                             "Name=%1\n"
                                             "Comment=Starts %1 in the system tray\n"
                                             "Exec=%2\n"
                                             "TryExec=%3\n"
                                             "Icon=%4.%1\n"
                                             "Terminal=false\n")
                                  .arg(PRODUCT_NAME_STRING, ExecArgument(program), EscapeString(program),
                                      ORGANISATION_DOMAIN_STRING);
        file.write(entry.toUtf8());
        if (file.commit())
        {
            return true;
        }
    }
    DebugErrTrace(DEBUG_LOCATION, "Could not write autostart entry: %s", path.toLocal8Bit().constData());
    return false;
}

bool cAutostartEntry::Remove()
{
    const QString path = GetFilePath();
    if (!QFileInfo::exists(path) || QFile::remove(path))
    {
        return true;
    }
    DebugErrTrace(DEBUG_LOCATION, "Could not remove autostart entry: %s", path.toLocal8Bit().constData());
    return false;
}
