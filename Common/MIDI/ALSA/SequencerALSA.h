#ifndef SEQUENCERALSA_H
#define SEQUENCERALSA_H

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

#include <map>
#include <memory>
#include <vector>

class QSocketNotifier;

// Kept opaque here so that users of the registry need no ALSA headers.
typedef struct _snd_seq snd_seq_t;
typedef struct snd_midi_event snd_midi_event_t;
typedef struct snd_seq_event snd_seq_event_t;

// Takes the MIDI that arrives at one of our ports, as raw bytes, on the
// event-loop thread while the sequencer is being read.
class cSequencerReceiverALSA
{
public:
    virtual void MIDIDataReceived(const char* bytes, int length) = 0;

protected:
    ~cSequencerReceiverALSA() = default;
};

// A sequencer port: client and port number. Numbers change when a device is
// replugged, so they never reach the user; names do.
struct sPortAddressALSA
{
    int client = -1;
    int port = -1;
};
bool operator==(const sPortAddressALSA& left, const sPortAddressALSA& right);
Q_DECLARE_METATYPE(sPortAddressALSA)

// What the registry needs to know of another client's port.
struct sPortInfoALSA
{
    sPortAddressALSA address;
    QString name;  // "client name:port name"
    bool readable = false;  // can be read with subscription: a system input
    bool writable = false;  // can be written with subscription: a system output
};

// The program's one sequencer client. The event loop of the thread that made
// it watches the sequencer, and whenever events come it reads all that wait:
// MIDI events for our ports are decoded to raw bytes and handed to the port's
// receiver, and port announcements are emitted as signals, at once, on that
// thread, which every other call belongs to as well. A burst of MIDI thus
// costs one wake-up of the event loop, with no other thread in between.
class cSequencerALSA : public QObject
{
    Q_OBJECT
public:
    // The process's one client, opened on first use and closed when its last
    // user lets go of it.
    static std::shared_ptr<cSequencerALSA> Shared();

    // Opens the sequencer; on failure reports once and stays closed, and every
    // call below then does nothing.
    cSequencerALSA();
    ~cSequencerALSA() override;

    bool IsOpen() const;

    // The ports of every other client (not of the system client) that carry
    // MIDI and may be shown to users, in client and port order.
    QList<sPortInfoALSA> GetPorts() const;
    // False when the port is gone or is not one GetPorts would list.
    bool GetPort(sPortAddressALSA address, sPortInfoALSA& info) const;

    // A port of our own client; -1 when it cannot be made.
    int CreatePort(const QString& name, unsigned int capabilities, unsigned int type);
    void DeletePort(int port);
    // Subscribes our port to read from another client's port (a refusal is
    // reported), or another client's port to what our port sends (returns 0
    // or the kernel's refusal, for the caller to report).
    bool ConnectFrom(int port, sPortAddressALSA source);
    int ConnectTo(int port, sPortAddressALSA destination);

    // Bytes arriving at our port go to receiver; null stops the delivery.
    void SetReceiver(int port, cSequencerReceiverALSA* receiver);

    // Encodes raw bytes (running status allowed, messages may span calls) and
    // sends every complete event from our port at once, to destination or,
    // with SUBSCRIBERS, to everyone subscribed to the port. Returns 0, or the
    // first error the kernel gave for an event (the rest are still sent).
    int Send(int port, sPortAddressALSA destination, const QByteArray& bytes);
    static const sPortAddressALSA SUBSCRIBERS;

signals:
    void PortStarted(sPortAddressALSA address);
    void PortExited(sPortAddressALSA address);
    void PortChanged(sPortAddressALSA address);
    // A client changed its name or other details; its ports are announced
    // only if they change themselves.
    void ClientChanged(int client);

private:
    bool Open();
    int Subscribe(sPortAddressALSA sender, sPortAddressALSA destination);
    snd_midi_event_t* GetEncoder(int port);
    void ReadEvents();
    void DispatchEvent(const snd_seq_event_t* event);

    snd_seq_t* handle = nullptr;
    int clientId = -1;
    int announcePort = -1;
    std::vector<QSocketNotifier*> notifiers;

    snd_midi_event_t* decoder = nullptr;
    std::vector<unsigned char> decoded;

    // One encoder per sending port, so that running status and a message
    // split across writes stay with their port.
    std::map<int, snd_midi_event_t*> encoders;

    std::map<int, cSequencerReceiverALSA*> receivers;
};

#endif
