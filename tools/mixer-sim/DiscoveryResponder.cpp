#include "DiscoveryResponder.h"

#include <QUdpSocket>

namespace
{
const quint16 DISCOVERY_PORT = 51320;
}

cDiscoveryResponder::cDiscoveryResponder(const QHostAddress& address, const QByteArray& findString,
                                         const QByteArray& answer, QObject* parent)
    : QObject(parent),
      address(address),
      findString(findString),
      answer(answer),
      listenSocket(new QUdpSocket(this)),
      answerSocket(new QUdpSocket(this))
{
    connect(listenSocket, &QUdpSocket::readyRead, this, &cDiscoveryResponder::ReadFindDatagrams);
}

bool cDiscoveryResponder::Start(QString& errorText)
{
    // Broadcasts are addressed to no unit in particular, so only a socket on
    // the wildcard address receives them.
    if (!listenSocket->bind(QHostAddress::AnyIPv4, DISCOVERY_PORT,
                            QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint))
    {
        errorText = QStringLiteral("cannot listen for find datagrams on port %1: %2")
                        .arg(DISCOVERY_PORT)
                        .arg(listenSocket->errorString());
        return false;
    }
    if (!answerSocket->bind(address, 0))
    {
        errorText = QStringLiteral("cannot answer from %1: %2").arg(address.toString(), answerSocket->errorString());
        return false;
    }
    return true;
}

void cDiscoveryResponder::ReadFindDatagrams()
{
    while (listenSocket->hasPendingDatagrams())
    {
        QByteArray datagram(static_cast<int>(qMax<qint64>(listenSocket->pendingDatagramSize(), 0)), '\0');
        QHostAddress sender;
        quint16 senderPort = 0;
        qint64 size = listenSocket->readDatagram(datagram.data(), datagram.size(), &sender, &senderPort);
        if (size < 0 || datagram.left(static_cast<int>(size)) != findString)
        {
            continue;
        }
        answerSocket->writeDatagram(answer, sender, senderPort);
        emit Answered(sender, senderPort);
    }
}
