#ifndef TCPMIDIINPTOUTPUT_H
#define TCPMIDIINPTOUTPUT_H

#include "Common/MIDI/MIDIInputOutput.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QHostAddress>
#include <QString>

class QTcpSocket;

// The mixer's network MIDI port seen as an ordinary MIDI port: raw MIDI bytes
// both ways over one TCP connection, with no framing of our own. A mixer that
// vanishes without closing the connection (switched off, its cable pulled)
// is noticed within about 5 s, with or without traffic, and the link then
// goes down as when the mixer closes it. It never reconnects by itself; the
// owner decides when to try again.
class cTCPMIDIInptOutput : public cMIDIInputOutput
{
    Q_OBJECT
public:
    static const quint16 MIXER_MIDI_PORT = 51325;

    // Why the link last went down by itself: the attempt was refused, had no
    // answer or could not reach the address, or the console closed the link.
    enum class eFailure
    {
        None,
        Refused,
        NoAnswer,
        Unreachable,
        ClosedByPeer,
        Other
    };

    explicit cTCPMIDIInptOutput(QObject* parent = nullptr);
    ~cTCPMIDIInptOutput() override;

    // Tears down any previous connection first (announcing "Not Connected"),
    // then starts connecting; progress arrives through StateStringChanged.
    // Either may be called from a StateStringChanged handler.
    void ConnectToHost(QHostAddress address);
    // Blocks the event loop for at most a second while the socket closes.
    void DisconnectFromHost();

    bool IsConnected() const;
    // UnconnectedState while there is no socket.
    QAbstractSocket::SocketState GetSocketState() const;
    QString GetCurrentSocketStateDescription() const;
    static QString GetSocketStateDescription(QAbstractSocket::SocketState state);
    // The address last connected to.
    QHostAddress GetHostAddress() const;
    // Kept until a connection is made; disconnecting on purpose, also to
    // try again, leaves it as it was. GetLastFailureText is the socket's own
    // words for it.
    eFailure GetLastFailure() const;
    QString GetLastFailureText() const;

    void ReadMIDIData(QByteArray& data) override;
    // Sent only while connected; dropped otherwise.
    void WriteMIDIData(QByteArray& data) override;

signals:
    void StateStringChanged(QString state);

public slots:
    void TCPRead();
    void StateChanged(QAbstractSocket::SocketState state);

private:
    static eFailure ClassifyFailure(QAbstractSocket::SocketError error, const QString& text);

    QTcpSocket* socket;
    QHostAddress hostAddress;
    QByteArray receivedData;
    eFailure lastFailure = eFailure::None;
    QString lastFailureText;
};

#endif
