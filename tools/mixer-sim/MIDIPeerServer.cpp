#include "MIDIPeerServer.h"

#include <QTcpServer>
#include <QTcpSocket>

cMIDIPeerServer::cMIDIPeerServer(const QHostAddress& address, bool echo, QObject* parent)
    : QObject(parent), address(address), echo(echo), server(new QTcpServer(this)), peer(nullptr)
{
    connect(server, &QTcpServer::newConnection, this, &cMIDIPeerServer::AcceptPeer);
}

bool cMIDIPeerServer::Start(QString& errorText)
{
    if (!server->listen(address, MIDI_PORT))
    {
        errorText = QStringLiteral("cannot listen on %1 port %2: %3")
                        .arg(address.toString())
                        .arg(MIDI_PORT)
                        .arg(server->errorString());
        return false;
    }
    return true;
}

bool cMIDIPeerServer::Send(const QByteArray& bytes)
{
    if (!peer)
    {
        return false;
    }
    peer->write(bytes);
    emit MessageSent(bytes);
    return true;
}

void cMIDIPeerServer::ClosePeer()
{
    if (peer)
    {
        // Whatever was queued for the peer still goes out before the close.
        peer->disconnectFromHost();
    }
}

void cMIDIPeerServer::AcceptPeer()
{
    while (QTcpSocket* incoming = server->nextPendingConnection())
    {
        // A client that connects again has usually lost the old connection
        // without our noticing yet, so the newcomer wins.
        if (peer)
        {
            peer->abort();
        }
        peer = incoming;
        peer->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(peer, &QTcpSocket::readyRead, this, &cMIDIPeerServer::ReadPeer);
        connect(peer, &QTcpSocket::disconnected, this, &cMIDIPeerServer::ForgetPeer);
        emit PeerConnected(peer->peerAddress(), peer->peerPort());
    }
}

void cMIDIPeerServer::ReadPeer()
{
    const QByteArray bytes = peer->readAll();
    if (echo)
    {
        peer->write(bytes);
    }
    for (const QByteArray& message : splitter.Feed(bytes))
    {
        emit MessageReceived(message);
    }
}

void cMIDIPeerServer::ForgetPeer()
{
    const QByteArray unfinished = splitter.Flush();
    if (!unfinished.isEmpty())
    {
        emit MessageReceived(unfinished);
    }
    peer->disconnect(this);
    peer->deleteLater();
    peer = nullptr;
    emit PeerDisconnected();
}
