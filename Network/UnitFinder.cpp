#include "Network/UnitFinder.h"

#include <QTimer>
#include <QUdpSocket>

cUnitFinder::cUnitFinder(QString findString, QObject* parent)
    : cUnitFinder(findString, std::chrono::seconds(1), parent)
{
}

cUnitFinder::cUnitFinder(QString findString, std::chrono::milliseconds tickInterval, QObject* parent)
    : QObject(parent),
      socket(new QUdpSocket(this)),
      timer(new QTimer(this)),
      findString(findString),
      findDatagram(findString.toLatin1())
{
    RegisterUnitMetaType();
    timer->start(tickInterval);
    socket->bind(QHostAddress::AnyIPv4, 0);
    connect(timer, &QTimer::timeout, this, &cUnitFinder::TimerFired);
    connect(socket, &QUdpSocket::readyRead, this, &cUnitFinder::UDPRead);
}

cUnitFinder::~cUnitFinder()
{
    timer->stop();
    socket->close();
}

QString cUnitFinder::GetFindString() const
{
    return findString;
}

QHostAddress cUnitFinder::GetHostAddressByUnitName(QString& name) const
{
    for (const sActiveUnit& active : activeUnits)
    {
        if (active.unit.name == name)
        {
            return active.unit.address;
        }
    }
    return QHostAddress();
}

QList<sUnit> cUnitFinder::GetFoundUnits() const
{
    QList<sUnit> units;
    for (const sActiveUnit& active : activeUnits)
    {
        units.append(active.unit);
    }
    return units;
}

void cUnitFinder::TimerFired()
{
    socket->writeDatagram(findDatagram, QHostAddress::Broadcast, DISCOVERY_PORT);

    QList<sUnit> lostUnits;
    QList<int> lostIndices;
    for (int i = 0; i < activeUnits.size(); ++i)
    {
        if (--activeUnits[i].ticksLeft == 0)
        {
            lostUnits.append(activeUnits[i].unit);
            lostIndices.append(i);
        }
    }
    // The indices are taken as recorded, not shifted for the entries removed
    // before them in this tick: with two expiries at once the second removal
    // takes a later neighbour, and the expired unit stays listed (its count
    // below zero) until it answers again. The lost signals still name the
    // expired units. Kept as the program has always behaved.
    for (int index : lostIndices)
    {
        if (index < activeUnits.size())
        {
            activeUnits.removeAt(index);
        }
    }
    for (const sUnit& unit : lostUnits)
    {
        emit UnitLost(unit);
    }
}

void cUnitFinder::UDPRead()
{
    while (socket->hasPendingDatagrams())
    {
        QByteArray payload(static_cast<int>(qMax<qint64>(socket->pendingDatagramSize(), 0)), '\0');
        QHostAddress sender;
        qint64 size = socket->readDatagram(payload.data(), payload.size(), &sender);
        payload.truncate(static_cast<int>(qMax<qint64>(size, 0)));
        // The name ends at the first zero byte; whatever follows is not ours to read.
        int end = payload.indexOf('\0');
        QString name = QString::fromLatin1(end < 0 ? payload : payload.left(end));
        UnitRespond(sUnit{sender, name, findString});
    }
}

void cUnitFinder::UnitRespond(sUnit unit)
{
    for (sActiveUnit& active : activeUnits)
    {
        if (active.unit == unit)
        {
            active.ticksLeft = TICKS_PER_ANSWER;
            return;
        }
    }
    if (activeUnits.size() >= MAX_UNITS)
    {
        return;
    }
    activeUnits.append(sActiveUnit{unit, TICKS_PER_ANSWER});
    emit UnitFound(unit);
}
