#ifndef AUTOSTARTENTRY_H
#define AUTOSTARTENTRY_H

#include <QString>

// The user's XDG autostart entry for this program: a desktop entry in
// $XDG_CONFIG_HOME/autostart that the desktop session starts at login. It is
// named after the menu entry ("com.kestrel.Tessera.desktop"), so the session's
// own start-up settings and the tray menu's tick speak of the same file: a
// session that switches the entry off marks it hidden rather than removing it.
class cAutostartEntry
{
public:
    static QString GetFilePath();
    // The entry is there and the session would start it.
    static bool IsEnabled();
    // Writes the entry, pointing at the running program's executable, over
    // whatever was there (a hidden entry included). Reports
    // and returns false when the file cannot be written.
    static bool Create();
    // Reports and returns false when an existing entry cannot be removed.
    static bool Remove();
};

#endif
