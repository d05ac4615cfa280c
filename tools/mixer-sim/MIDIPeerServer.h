#ifndef MIDIPEERSERVER_H
#define MIDIPEERSERVER_H

#include "Common/MIDI/Text/MIDIMessageSplitter.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

class QTcpServer;
class QTcpSocket;

// The mixer's network MIDI port: one TCP peer at a time, raw MIDI both ways.
// A new peer replaces the connected one. Nothing here waits for the peer;
// bytes written while no one is connected are dropped.
class cMIDIPeerServer : public QObject
{
    Q_OBJECT
public:
    static const quint16 MIDI_PORT = 51325;

    cMIDIPeerServer(const QHostAddress& address, bool echo, QObject* parent = nullptr);

    bool Start(QString& errorText);
    // False when there is no peer to send to.
    bool Send(const QByteArray& bytes);
    void ClosePeer();

signals:
    void PeerConnected(QHostAddress address, quint16 port);
    void PeerDisconnected();
    void MessageReceived(QByteArray message);
    void MessageSent(QByteArray bytes);

private:
    void AcceptPeer();
    void ReadPeer();
    void ForgetPeer();

    QHostAddress address;
    bool echo;
    QTcpServer* server;
    QTcpSocket* peer;
    cMIDIMessageSplitter splitter;
};

#endif
