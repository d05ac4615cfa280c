#ifndef UNIT_H
#define UNIT_H

#include <QHostAddress>
#include <QMetaType>
#include <QString>

// A mixer that answered a find datagram: where it answered from, the name it
// gave, and the find string (mixer family) it answered to.
struct sUnit
{
    QHostAddress address;
    QString name;
    QString findString;

    bool operator==(const sUnit& other) const
    {
        return address == other.address && name == other.name && findString == other.findString;
    }
    bool operator!=(const sUnit& other) const { return !(*this == other); }
};

Q_DECLARE_METATYPE(sUnit)

// Units travel in signals, also across queued connections and signal spies,
// which look the type up by its name.
inline void RegisterUnitMetaType()
{
    qRegisterMetaType<sUnit>("sUnit");
}

#endif
