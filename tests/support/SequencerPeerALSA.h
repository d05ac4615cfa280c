#ifndef SEQUENCERPEERALSA_H
#define SEQUENCERPEERALSA_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QTest>

#include <alsa/asoundlib.h>

// A second sequencer client, written straight against alsa-lib, standing in
// for the mixer or the DAW on the other side of the program's ports.
class cSequencerPeerALSA
{
public:
    // The destination of what a port sends to everyone subscribed to it.
    static constexpr snd_seq_addr_t SUBSCRIBERS = {SND_SEQ_ADDRESS_SUBSCRIBERS, SND_SEQ_ADDRESS_UNKNOWN};

    explicit cSequencerPeerALSA(const char* name)
    {
        if (snd_seq_open(&handle, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0)
        {
            handle = nullptr;
            return;
        }
        snd_seq_set_client_name(handle, name);
        snd_midi_event_new(4096, &encoder);
        snd_midi_event_new(4096, &decoder);
        snd_midi_event_no_status(decoder, 1);
    }

    ~cSequencerPeerALSA()
    {
        if (handle)
        {
            snd_midi_event_free(encoder);
            snd_midi_event_free(decoder);
            snd_seq_close(handle);
        }
    }

    cSequencerPeerALSA(const cSequencerPeerALSA&) = delete;
    cSequencerPeerALSA& operator=(const cSequencerPeerALSA&) = delete;

    bool IsOpen() const { return handle != nullptr; }

    // A port that the program can both read and write with subscription.
    int CreatePort(const char* name)
    {
        return snd_seq_create_simple_port(handle, name,
            SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE,
            SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_HARDWARE);
    }

    void DeletePort(int port) { snd_seq_delete_simple_port(handle, port); }

    // The address of the port of that name on the client of that name, with
    // its details in info if asked for; SND_SEQ_ADDRESS_UNKNOWN if none.
    snd_seq_addr_t FindPort(const char* clientName, const char* portName, snd_seq_port_info_t* info = nullptr)
    {
        snd_seq_port_info_t* port;
        snd_seq_port_info_alloca(&port);
        snd_seq_client_info_t* client;
        snd_seq_client_info_alloca(&client);
        snd_seq_client_info_set_client(client, -1);
        while (snd_seq_query_next_client(handle, client) >= 0)
        {
            if (qstrcmp(snd_seq_client_info_get_name(client), clientName) != 0)
            {
                continue;
            }
            snd_seq_port_info_set_client(port, snd_seq_client_info_get_client(client));
            snd_seq_port_info_set_port(port, -1);
            while (snd_seq_query_next_port(handle, port) >= 0)
            {
                if (qstrcmp(snd_seq_port_info_get_name(port), portName) == 0)
                {
                    if (info)
                    {
                        snd_seq_port_info_copy(info, port);
                    }
                    return *snd_seq_port_info_get_addr(port);
                }
            }
        }
        return {SND_SEQ_ADDRESS_UNKNOWN, SND_SEQ_ADDRESS_UNKNOWN};
    }

    // Subscribes our port to read what the other port sends to its subscribers.
    bool ConnectFrom(int port, snd_seq_addr_t other)
    {
        return snd_seq_connect_from(handle, port, other.client, other.port) >= 0;
    }

    // Raw MIDI bytes, running status allowed, sent at once from our port to
    // another, or to our subscribers.
    void Send(int port, snd_seq_addr_t destination, const QByteArray& bytes)
    {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        for (char byte : bytes)
        {
            if (snd_midi_event_encode_byte(encoder, static_cast<unsigned char>(byte), &event) == 1)
            {
                snd_seq_ev_set_source(&event, port);
                event.dest = destination;
                snd_seq_ev_set_direct(&event);
                snd_seq_event_output_direct(handle, &event);
                snd_seq_ev_clear(&event);
            }
        }
    }

    // Everything that arrives, as raw bytes with full status, until at least
    // count bytes are in or the time is up; the event loop keeps running.
    QByteArray Receive(int count, int timeout = 20000)
    {
        QByteArray received;
        QElapsedTimer timer;
        timer.start();
        while (received.size() < count && !timer.hasExpired(timeout))
        {
            QTest::qWait(5);
            snd_seq_event_t* event = nullptr;
            while (snd_seq_event_input(handle, &event) >= 0 && event)
            {
                unsigned char bytes[4096];
                long length = snd_midi_event_decode(decoder, bytes, sizeof bytes, event);
                if (length > 0)
                {
                    received.append(reinterpret_cast<const char*>(bytes), static_cast<int>(length));
                }
            }
        }
        return received;
    }

private:
    snd_seq_t* handle = nullptr;
    snd_midi_event_t* encoder = nullptr;
    snd_midi_event_t* decoder = nullptr;
};

#endif
