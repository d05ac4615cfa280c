#include "Common/MIDI/ALSA/SequencerALSA.h"

#include "Application/DebugTrace.h"

#include <QSocketNotifier>

#include <alsa/asoundlib.h>

#include <cerrno>
#include <cstdarg>
#include <poll.h>

namespace
{
const char* const CLIENT_NAME = "Tessera";

// The kernel's largest pools. The input pool holds what arrives while the
// event loop is busy elsewhere; the defaults overflow when a System Exclusive
// burst comes in meanwhile.
const int POOL_SIZE = 2000;
// Must hold the largest single event the input pool can carry, or a long
// System Exclusive could never be read.
const size_t INPUT_BUFFER_SIZE = 128 * 1024;
// Outgoing System Exclusive longer than this goes out as several events, in
// order, the way the kernel's own MIDI device bridge delivers it.
const size_t SYSEX_CHUNK_SIZE = 256;

const unsigned int MIDI_PORT_TYPES =
    SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_SYNTH | SND_SEQ_PORT_TYPE_APPLICATION;

void TraceALSAError(const char* file, int line, const char* function, int error, const char* format, ...)
{
    char message[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    if (error != 0)
    {
        DebugErrTrace(file, line, function, "ALSA %s: %s: %s", function, message, snd_strerror(error));
    }
    else
    {
        DebugErrTrace(file, line, function, "ALSA %s: %s", function, message);
    }
}

void IgnoreALSAError(const char*, int, const char*, int, const char*, ...) {}

bool HasCapabilities(unsigned int capabilities, unsigned int wanted)
{
    return (capabilities & wanted) == wanted;
}

bool ToPortInfo(snd_seq_client_info_t* client, const snd_seq_port_info_t* port, sPortInfoALSA& info)
{
    const unsigned int capabilities = snd_seq_port_info_get_capability(port);
    if (snd_seq_client_info_get_client(client) == SND_SEQ_CLIENT_SYSTEM
        || (capabilities & SND_SEQ_PORT_CAP_NO_EXPORT) != 0
        || (snd_seq_port_info_get_type(port) & MIDI_PORT_TYPES) == 0)
    {
        return false;
    }
    info.address = {snd_seq_port_info_get_client(port), snd_seq_port_info_get_port(port)};
    info.name = QString::fromUtf8(snd_seq_client_info_get_name(client)) + QLatin1Char(':')
        + QString::fromUtf8(snd_seq_port_info_get_name(port));
    info.readable = HasCapabilities(capabilities, SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ);
    info.writable = HasCapabilities(capabilities, SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE);
    return info.readable || info.writable;
}
}

bool operator==(const sPortAddressALSA& left, const sPortAddressALSA& right)
{
    return left.client == right.client && left.port == right.port;
}

std::shared_ptr<cSequencerALSA> cSequencerALSA::Shared()
{
    static std::weak_ptr<cSequencerALSA> shared;
    std::shared_ptr<cSequencerALSA> sequencer = shared.lock();
    if (!sequencer)
    {
        sequencer = std::make_shared<cSequencerALSA>();
        shared = sequencer;
    }
    return sequencer;
}

const sPortAddressALSA cSequencerALSA::SUBSCRIBERS = {SND_SEQ_ADDRESS_SUBSCRIBERS, SND_SEQ_ADDRESS_UNKNOWN};

cSequencerALSA::cSequencerALSA()
{
    qRegisterMetaType<sPortAddressALSA>();
    if (!Open() && handle)
    {
        snd_seq_close(handle);
        handle = nullptr;
    }
}

bool cSequencerALSA::IsOpen() const
{
    return handle != nullptr;
}

cSequencerALSA::~cSequencerALSA()
{
    // Before the descriptors they watch are closed.
    for (QSocketNotifier* notifier : notifiers)
    {
        delete notifier;
    }
    for (const auto& encoder : encoders)
    {
        snd_midi_event_free(encoder.second);
    }
    if (decoder)
    {
        snd_midi_event_free(decoder);
    }
    if (handle)
    {
        snd_seq_drain_output(handle);
        snd_seq_close(handle);
    }
}

bool cSequencerALSA::Open()
{
    // Our own trace line says why opening failed; alsa-lib's would repeat it.
    // Reading must never block the event loop; sending does not wait either
    // way, as every event goes out directly.
    snd_lib_error_set_handler(IgnoreALSAError);
    int result = snd_seq_open(&handle, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK);
    snd_lib_error_set_handler(TraceALSAError);
    if (result < 0)
    {
        handle = nullptr;
        DebugErrTrace(DEBUG_LOCATION, "Failed to open the ALSA sequencer: %s", snd_strerror(result));
        return false;
    }
    clientId = snd_seq_client_id(handle);
    snd_seq_set_client_name(handle, CLIENT_NAME);
    if (snd_seq_set_client_pool_output(handle, POOL_SIZE) < 0 || snd_seq_set_client_pool_input(handle, POOL_SIZE) < 0
        || snd_seq_set_input_buffer_size(handle, INPUT_BUFFER_SIZE) < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Failed to enlarge the ALSA sequencer buffers");
    }

    // Subscribed before anyone enumerates, so that no port can appear unseen
    // between the enumeration and the first announcement.
    announcePort = CreatePort(QStringLiteral("Announcements"),
        SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT, SND_SEQ_PORT_TYPE_APPLICATION);
    if (announcePort < 0 || !ConnectFrom(announcePort, {SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE}))
    {
        return false;
    }

    result = snd_midi_event_new(SYSEX_CHUNK_SIZE, &decoder);
    if (result < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Failed to create the ALSA MIDI decoder: %s", snd_strerror(result));
        return false;
    }
    // Receivers want the status byte on every message.
    snd_midi_event_no_status(decoder, 1);
    decoded.resize(SYSEX_CHUNK_SIZE);

    std::vector<pollfd> descriptors(static_cast<size_t>(snd_seq_poll_descriptors_count(handle, POLLIN)));
    snd_seq_poll_descriptors(handle, descriptors.data(), static_cast<unsigned int>(descriptors.size()), POLLIN);
    for (const pollfd& descriptor : descriptors)
    {
        QSocketNotifier* notifier = new QSocketNotifier(descriptor.fd, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, &cSequencerALSA::ReadEvents);
        notifiers.push_back(notifier);
    }
    return true;
}

QList<sPortInfoALSA> cSequencerALSA::GetPorts() const
{
    QList<sPortInfoALSA> ports;
    if (!handle)
    {
        return ports;
    }
    snd_seq_client_info_t* client;
    snd_seq_client_info_alloca(&client);
    snd_seq_port_info_t* port;
    snd_seq_port_info_alloca(&port);
    snd_seq_client_info_set_client(client, -1);
    while (snd_seq_query_next_client(handle, client) >= 0)
    {
        if (snd_seq_client_info_get_client(client) == clientId)
        {
            continue;
        }
        snd_seq_port_info_set_client(port, snd_seq_client_info_get_client(client));
        snd_seq_port_info_set_port(port, -1);
        while (snd_seq_query_next_port(handle, port) >= 0)
        {
            sPortInfoALSA info;
            if (ToPortInfo(client, port, info))
            {
                ports.append(info);
            }
        }
    }
    return ports;
}

bool cSequencerALSA::GetPort(sPortAddressALSA address, sPortInfoALSA& info) const
{
    if (!handle || address.client == clientId)
    {
        return false;
    }
    snd_seq_client_info_t* client;
    snd_seq_client_info_alloca(&client);
    snd_seq_port_info_t* port;
    snd_seq_port_info_alloca(&port);
    return snd_seq_get_any_client_info(handle, address.client, client) >= 0
        && snd_seq_get_any_port_info(handle, address.client, address.port, port) >= 0
        && ToPortInfo(client, port, info);
}

int cSequencerALSA::CreatePort(const QString& name, unsigned int capabilities, unsigned int type)
{
    if (!handle)
    {
        return -1;
    }
    int port = snd_seq_create_simple_port(handle, name.toUtf8().constData(), capabilities, type);
    if (port < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Failed to create ALSA sequencer port \"%s\": %s", name.toLocal8Bit().constData(),
            snd_strerror(port));
    }
    return port;
}

void cSequencerALSA::DeletePort(int port)
{
    if (!handle || port < 0)
    {
        return;
    }
    auto encoder = encoders.find(port);
    if (encoder != encoders.end())
    {
        snd_midi_event_free(encoder->second);
        encoders.erase(encoder);
    }
    snd_seq_delete_simple_port(handle, port);
}

bool cSequencerALSA::ConnectFrom(int port, sPortAddressALSA source)
{
    if (!handle || port < 0)
    {
        return false;
    }
    const int result = Subscribe(source, {clientId, port});
    if (result < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Failed to connect ALSA sequencer port %d:%d to %d:%d: %s", source.client,
            source.port, clientId, port, snd_strerror(result));
    }
    return result == 0;
}

int cSequencerALSA::ConnectTo(int port, sPortAddressALSA destination)
{
    // Without a sequencer or a port there was a report already.
    return handle && port >= 0 ? Subscribe({clientId, port}, destination) : -ENODEV;
}

int cSequencerALSA::Subscribe(sPortAddressALSA sender, sPortAddressALSA destination)
{
    snd_seq_port_subscribe_t* subscription;
    snd_seq_port_subscribe_alloca(&subscription);
    auto address = [](sPortAddressALSA port) {
        return snd_seq_addr_t{static_cast<unsigned char>(port.client), static_cast<unsigned char>(port.port)};
    };
    const snd_seq_addr_t from = address(sender);
    const snd_seq_addr_t to = address(destination);
    snd_seq_port_subscribe_set_sender(subscription, &from);
    snd_seq_port_subscribe_set_dest(subscription, &to);
    return snd_seq_subscribe_port(handle, subscription);
}

void cSequencerALSA::SetReceiver(int port, cSequencerReceiverALSA* receiver)
{
    if (receiver)
    {
        receivers[port] = receiver;
    }
    else
    {
        receivers.erase(port);
    }
}

int cSequencerALSA::Send(int port, sPortAddressALSA destination, const QByteArray& bytes)
{
    snd_midi_event_t* encoder = GetEncoder(port);
    if (!encoder)
    {
        // Without a sequencer or a port there was a report already.
        return 0;
    }
    int failure = 0;
    for (char byte : bytes)
    {
        // The encoder keeps a partial message to itself; only a completed one
        // comes back as an event.
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        if (snd_midi_event_encode_byte(encoder, static_cast<unsigned char>(byte), &event) != 1)
        {
            continue;
        }
        snd_seq_ev_set_source(&event, port);
        if (destination == SUBSCRIBERS)
        {
            snd_seq_ev_set_subs(&event);
        }
        else
        {
            snd_seq_ev_set_dest(&event, destination.client, destination.port);
        }
        snd_seq_ev_set_direct(&event);
        int result = snd_seq_event_output_direct(handle, &event);
        if (result < 0 && failure == 0)
        {
            failure = result;
        }
    }
    return failure;
}

snd_midi_event_t* cSequencerALSA::GetEncoder(int port)
{
    if (!handle || port < 0)
    {
        return nullptr;
    }
    auto found = encoders.find(port);
    if (found != encoders.end())
    {
        return found->second;
    }
    snd_midi_event_t* encoder = nullptr;
    int result = snd_midi_event_new(SYSEX_CHUNK_SIZE, &encoder);
    if (result < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Failed to create an ALSA MIDI encoder: %s", snd_strerror(result));
        return nullptr;
    }
    encoders[port] = encoder;
    return encoder;
}

// The first read fetches everything the kernel holds for us (the input
// buffer takes more than the input pool can hold); the following ones hand
// out what it fetched. So a burst is read in one go, and once the buffer is
// used up nothing is left unseen: whatever arrived meanwhile waits in the
// kernel, where the event loop sees it on its next pass.
void cSequencerALSA::ReadEvents()
{
    do
    {
        snd_seq_event_t* event = nullptr;
        const int result = snd_seq_event_input(handle, &event);
        if (result == -ENOSPC)
        {
            // The kernel found our input pool full and refused what came
            // next, and has now thrown away all that waited too.
            DebugErrTrace(DEBUG_LOCATION, "ALSA sequencer input overrun: MIDI and port announcements that arrived "
                "while the program was busy were lost");
        }
        else if (result < 0 && result != -EAGAIN)
        {
            DebugErrTrace(DEBUG_LOCATION, "Reading the ALSA sequencer failed, no more MIDI is received: %s",
                snd_strerror(result));
            for (QSocketNotifier* notifier : notifiers)
            {
                notifier->setEnabled(false);
            }
        }
        else if (event)
        {
            DispatchEvent(event);
        }
    } while (snd_seq_event_input_pending(handle, 0) > 0);
}

void cSequencerALSA::DispatchEvent(const snd_seq_event_t* event)
{
    if (event->dest.port == announcePort)
    {
        const sPortAddressALSA address = {event->data.addr.client, event->data.addr.port};
        if (event->source.client != SND_SEQ_CLIENT_SYSTEM || address.client == clientId)
        {
            return;
        }
        switch (event->type)
        {
        case SND_SEQ_EVENT_PORT_START:
            emit PortStarted(address);
            break;
        case SND_SEQ_EVENT_PORT_EXIT:
            emit PortExited(address);
            break;
        case SND_SEQ_EVENT_PORT_CHANGE:
            emit PortChanged(address);
            break;
        case SND_SEQ_EVENT_CLIENT_CHANGE:
            emit ClientChanged(address.client);
            break;
        default:
            break;
        }
        return;
    }

    // The decoder needs room for a whole System Exclusive event.
    if (snd_seq_ev_is_variable(event) && event->data.ext.len > decoded.size())
    {
        decoded.resize(event->data.ext.len);
    }
    long length = snd_midi_event_decode(decoder, decoded.data(), static_cast<long>(decoded.size()), event);
    if (length <= 0)
    {
        // Not a MIDI message: subscription notices, timer and queue events.
        return;
    }
    auto found = receivers.find(event->dest.port);
    if (found != receivers.end())
    {
        found->second->MIDIDataReceived(reinterpret_cast<const char*>(decoded.data()), static_cast<int>(length));
    }
}
