#ifndef UNITFINDER_H
#define UNITFINDER_H

#include "Network/Unit.h"

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>

#include <chrono>

class QTimer;
class QUdpSocket;

// Finds the mixers of one family: broadcasts the family's find string once a
// tick, keeps every unit that answers, and forgets one that stays silent for
// five ticks.
class cUnitFinder : public QObject
{
    Q_OBJECT
public:
    static const quint16 DISCOVERY_PORT = 51320;
    static const int TICKS_PER_ANSWER = 5;
    static const int MAX_UNITS = 256;

    // Broadcasting starts one tick (a second) after construction.
    cUnitFinder(QString findString, QObject* parent = nullptr);
    // Ticks at the given interval instead; for tests, which cannot wait
    // seconds per scenario.
    cUnitFinder(QString findString, std::chrono::milliseconds tickInterval, QObject* parent = nullptr);
    ~cUnitFinder() override;

    QString GetFindString() const;
    // The first unit found under that name; a null address when there is none.
    QHostAddress GetHostAddressByUnitName(QString& name) const;
    QList<sUnit> GetFoundUnits() const;

public slots:
    void TimerFired();
    void UDPRead();
    void UnitRespond(sUnit unit);

signals:
    void UnitFound(sUnit unit);
    void UnitLost(sUnit unit);

private:
    struct sActiveUnit
    {
        sUnit unit;
        qint32 ticksLeft;
    };

    QUdpSocket* socket;
    QTimer* timer;
    QString findString;
    QByteArray findDatagram;
    QList<sActiveUnit> activeUnits;
};

#endif
