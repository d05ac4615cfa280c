#include "Network/TCPMIDIInptOutput.h"

#include <QTcpSocket>

namespace
{
// A single read per readyRead takes at most this much; the rest waits in the
// socket for the next readyRead.
const qint64 MAX_READ_SIZE = 1024;
const int DISCONNECT_WAIT_MS = 1000;
}

cTCPMIDIInptOutput::cTCPMIDIInptOutput(QObject* parent)
    : cMIDIInputOutput(parent), socket(nullptr)
{
    qRegisterMetaType<QAbstractSocket::SocketState>("QAbstractSocket::SocketState");
}

cTCPMIDIInptOutput::~cTCPMIDIInptOutput()
{
    DisconnectFromHost();
}

void cTCPMIDIInptOutput::ConnectToHost(QHostAddress address)
{
    DisconnectFromHost();
    hostAddress = address;
    socket = new QTcpSocket(this);
    connect(socket, &QTcpSocket::readyRead, this, &cTCPMIDIInptOutput::TCPRead);
    connect(socket, &QTcpSocket::stateChanged, this, &cTCPMIDIInptOutput::StateChanged);
    socket->connectToHost(hostAddress, MIXER_MIDI_PORT, QIODevice::ReadWrite);
    // Each MIDI message must leave at once, not wait to be coalesced.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

void cTCPMIDIInptOutput::DisconnectFromHost()
{
    if (socket)
    {
        if (socket->state() == QAbstractSocket::HostLookupState || socket->state() == QAbstractSocket::ConnectingState)
        {
            // Nothing can have reached the mixer yet, and a graceful close
            // would first wait for the attempt to succeed or fail.
            socket->abort();
        }
        socket->disconnectFromHost();
        if (socket->state() != QAbstractSocket::UnconnectedState)
        {
            socket->waitForDisconnected(DISCONNECT_WAIT_MS);
        }
        // We may be inside one of the socket's own signals (an owner that
        // reconnects on a state change), so it must not be deleted under its
        // feet; silenced, it goes when control is back in the event loop.
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
    socket = nullptr;
    receivedData.clear();
    StateChanged(QAbstractSocket::UnconnectedState);
}

bool cTCPMIDIInptOutput::IsConnected() const
{
    return socket && socket->state() == QAbstractSocket::ConnectedState;
}

QString cTCPMIDIInptOutput::GetCurrentSocketStateDescription() const
{
    return GetSocketStateDescription(socket ? socket->state() : QAbstractSocket::UnconnectedState);
}

QString cTCPMIDIInptOutput::GetSocketStateDescription(QAbstractSocket::SocketState state)
{
    switch (state)
    {
    case QAbstractSocket::UnconnectedState:
        return QStringLiteral("Not Connected");
    case QAbstractSocket::HostLookupState:
        return QStringLiteral("Looking up host");
    case QAbstractSocket::ConnectingState:
        return QStringLiteral("Connecting...");
    case QAbstractSocket::ConnectedState:
        return QStringLiteral("Connected");
    case QAbstractSocket::BoundState:
        return QStringLiteral("Bound");
    case QAbstractSocket::ListeningState:
        return QStringLiteral("Listening");
    case QAbstractSocket::ClosingState:
        return QStringLiteral("Closing...");
    }
    return QString();
}

void cTCPMIDIInptOutput::StateChanged(QAbstractSocket::SocketState state)
{
    emit StateStringChanged(GetSocketStateDescription(state));
}

void cTCPMIDIInptOutput::TCPRead()
{
    receivedData.append(socket->read(MAX_READ_SIZE));
    emit MIDIReadReady();
}

void cTCPMIDIInptOutput::ReadMIDIData(QByteArray& data)
{
    data = receivedData;
    receivedData.clear();
}

void cTCPMIDIInptOutput::WriteMIDIData(QByteArray& data)
{
    if (socket)
    {
        socket->write(data);
        // Hand the bytes to the system now rather than on the next pass of
        // the event loop; this never waits for the peer.
        socket->flush();
    }
}
