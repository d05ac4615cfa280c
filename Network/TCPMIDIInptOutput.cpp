#include "Network/TCPMIDIInptOutput.h"

#include "Application/DebugTrace.h"

#include <QTcpSocket>

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace
{
// A single read per readyRead takes at most this much; the rest waits in the
// socket for the next readyRead.
const qint64 MAX_READ_SIZE = 1024;
const int DISCONNECT_WAIT_MS = 1000;

// A mixer that loses power sends no FIN or RST, and on a quiet link nothing
// else would ever tell: the kernel asks after 2 s of silence, once a second,
// and gives up after 5 s without an answer, as it does for bytes that go
// unacknowledged that long (the user timeout also bounds the probes).
const int KEEPALIVE_IDLE_S = 2;
const int KEEPALIVE_INTERVAL_S = 1;
const int KEEPALIVE_PROBES = 3;
const unsigned int USER_TIMEOUT_MS = 5000;

void DetectVanishedPeer(qintptr descriptor)
{
    const int on = 1;
    const struct
    {
        int level;
        int option;
        const void* value;
        socklen_t size;
    } options[] = {{SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on},
        {IPPROTO_TCP, TCP_KEEPIDLE, &KEEPALIVE_IDLE_S, sizeof KEEPALIVE_IDLE_S},
        {IPPROTO_TCP, TCP_KEEPINTVL, &KEEPALIVE_INTERVAL_S, sizeof KEEPALIVE_INTERVAL_S},
        {IPPROTO_TCP, TCP_KEEPCNT, &KEEPALIVE_PROBES, sizeof KEEPALIVE_PROBES},
        {IPPROTO_TCP, TCP_USER_TIMEOUT, &USER_TIMEOUT_MS, sizeof USER_TIMEOUT_MS}};
    for (const auto& option : options)
    {
        if (setsockopt(static_cast<int>(descriptor), option.level, option.option, option.value, option.size) != 0)
        {
            DebugErrTrace(DEBUG_LOCATION, "Cannot watch the mixer's link for silence: %s", std::strerror(errno));
            return;
        }
    }
}
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
    // The socket's own descriptor is known only once connected.
    connect(socket, &QTcpSocket::connected, this, [this]() { DetectVanishedPeer(socket->socketDescriptor()); });
    socket->connectToHost(hostAddress, MIXER_MIDI_PORT, QIODevice::ReadWrite);
    // Each MIDI message must leave at once, not wait to be coalesced.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

void cTCPMIDIInptOutput::DisconnectFromHost()
{
    // The link is idle before anything is said: whoever hears the socket go
    // may connect again (or disconnect) at once, and must find no socket of
    // ours half torn down. The old socket is silenced, so its last states
    // cannot be taken for the new one's, and it is deleted only once control
    // is back in the event loop, as this may run inside one of its signals.
    QTcpSocket* closing = socket;
    socket = nullptr;
    receivedData.clear();
    if (closing)
    {
        closing->disconnect(this);
        if (closing->state() == QAbstractSocket::HostLookupState || closing->state() == QAbstractSocket::ConnectingState)
        {
            // Nothing can have reached the mixer yet, and a graceful close
            // would first wait for the attempt to succeed or fail.
            closing->abort();
        }
        closing->disconnectFromHost();
        if (closing->state() != QAbstractSocket::UnconnectedState)
        {
            closing->waitForDisconnected(DISCONNECT_WAIT_MS);
        }
        closing->abort();
        closing->deleteLater();
    }
    StateChanged(QAbstractSocket::UnconnectedState);
}

bool cTCPMIDIInptOutput::IsConnected() const
{
    return GetSocketState() == QAbstractSocket::ConnectedState;
}

QAbstractSocket::SocketState cTCPMIDIInptOutput::GetSocketState() const
{
    return socket ? socket->state() : QAbstractSocket::UnconnectedState;
}

QString cTCPMIDIInptOutput::GetCurrentSocketStateDescription() const
{
    return GetSocketStateDescription(GetSocketState());
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

QHostAddress cTCPMIDIInptOutput::GetHostAddress() const
{
    return hostAddress;
}

cTCPMIDIInptOutput::eFailure cTCPMIDIInptOutput::GetLastFailure() const
{
    return lastFailure;
}

QString cTCPMIDIInptOutput::GetLastFailureText() const
{
    return lastFailureText;
}

void cTCPMIDIInptOutput::StateChanged(QAbstractSocket::SocketState state)
{
    // Only the socket's own changes tell something; the socket records its
    // error before it announces the state the error leads to.
    if (socket && state == QAbstractSocket::ConnectedState)
    {
        lastFailure = eFailure::None;
        lastFailureText.clear();
    }
    else if (socket && state == QAbstractSocket::UnconnectedState)
    {
        lastFailure = ClassifyFailure(socket->error(), socket->errorString());
        lastFailureText = socket->errorString();
    }
    emit StateStringChanged(GetSocketStateDescription(state));
}

cTCPMIDIInptOutput::eFailure cTCPMIDIInptOutput::ClassifyFailure(QAbstractSocket::SocketError error,
                                                                 const QString& text)
{
    switch (error)
    {
    case QAbstractSocket::ConnectionRefusedError:
        return eFailure::Refused;
    case QAbstractSocket::RemoteHostClosedError:
        return eFailure::ClosedByPeer;
    case QAbstractSocket::SocketTimeoutError:
        return eFailure::NoAnswer;
    case QAbstractSocket::NetworkError:
        // The system's reasons for an attempt that failed on the way (no
        // route, no host, no answer) all come as this one error; only the
        // socket's text, which is not translated, tells them apart.
        return text.contains(QLatin1String("timed out"), Qt::CaseInsensitive) ? eFailure::NoAnswer
                                                                               : eFailure::Unreachable;
    default:
        return eFailure::Other;
    }
}

// Read straight into the buffer, which keeps its room from read to read.
void cTCPMIDIInptOutput::TCPRead()
{
    const int size = receivedData.size();
    receivedData.resize(size + MAX_READ_SIZE);
    const qint64 read = socket->read(receivedData.data() + size, MAX_READ_SIZE);
    receivedData.resize(size + static_cast<int>(qMax<qint64>(read, 0)));
    emit MIDIReadReady();
}

// The buffers change hands, so a reader that keeps its array from read to
// read lends its room back and nothing is allocated.
void cTCPMIDIInptOutput::ReadMIDIData(QByteArray& data)
{
    data.swap(receivedData);
    receivedData.truncate(0);
}

void cTCPMIDIInptOutput::WriteMIDIData(QByteArray& data)
{
    // Bytes for a link that is not up are dropped. A socket still connecting
    // would keep them and send them late, in a burst, once it is up (stale
    // fader moves for the mixer), and flushing it would end the attempt.
    if (!IsConnected())
    {
        return;
    }
    // The bytes go to the system at once, past the socket's own buffer: that
    // way would watch the socket for room and stop watching again for every
    // message, each a wake-up call to the event loop. Only what the system
    // does not take now, or what would overtake bytes still queued, goes
    // through the socket's buffer, which sends it as room comes.
    qint64 sent = 0;
    if (socket->bytesToWrite() == 0)
    {
        sent = qMax<qint64>(::send(static_cast<int>(socket->socketDescriptor()), data.constData(),
            static_cast<size_t>(data.size()), MSG_NOSIGNAL | MSG_DONTWAIT), 0);
    }
    if (sent < data.size())
    {
        socket->write(data.constData() + sent, data.size() - sent);
    }
}
