#ifndef AUTOSTARTENTRY_H
#define AUTOSTARTENTRY_H

#include <QString>

// The user's XDG autostart entry for this program: a desktop entry in
// $XDG_CONFIG_HOME/autostart that the desktop session starts at login. It is
// named after the menu entry ("com.kestrel.Tessera.desktop"), so the session's
// own start-up settings and the tray menu's tick speak of the same file.
class cAutostartEntry
{
public:
    static QString GetFilePath();
    static bool Exists();
    // Writes the entry, pointing at the running program's executable. Reports
    // and returns false when the file cannot be written.
    static bool Create();
    // Reports and returns false when an existing entry cannot be removed.
    static bool Remove();
};

#endif
