#ifndef DISCOVERYRESPONDER_H
#define DISCOVERYRESPONDER_H

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

class QUdpSocket;

// Answers the find datagrams of one mixer family the way a mixer does: from
// its own address, straight back to the sender, with its name. Several
// simulators on one machine all hear every broadcast, so the listening
// socket shares the discovery port and the answers leave from a socket bound
// to this unit's own address.
class cDiscoveryResponder : public QObject
{
    Q_OBJECT
public:
    cDiscoveryResponder(const QHostAddress& address, const QByteArray& findString, const QByteArray& answer,
                        QObject* parent = nullptr);

    // False, with the reason in errorText, when a socket cannot be bound.
    bool Start(QString& errorText);

signals:
    void Answered(QHostAddress finder, quint16 port);

private:
    void ReadFindDatagrams();

    QHostAddress address;
    QByteArray findString;
    QByteArray answer;
    QUdpSocket* listenSocket;
    QUdpSocket* answerSocket;
};

#endif
