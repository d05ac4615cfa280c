#ifndef VIRTUALRAWMIDI_H
#define VIRTUALRAWMIDI_H

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QStringList>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// A MIDI interface of the kernel's own, played through its raw side:
// snd-virmidi's sequencer port "Virtual Raw MIDI C-D:VirMIDI C-D" sends what
// is written to /dev/snd/midiCcDd, and what is sent to it can be read there.
// A USB MIDI gadget's raw device is the other end of its USB cable likewise.
struct sVirtualRawMIDI
{
    static QRegularExpression Pattern()
    {
        return QRegularExpression(QStringLiteral("^Virtual Raw MIDI (\\d+)-(\\d+):"));
    }

    explicit sVirtualRawMIDI(const QString& portName)
        : sVirtualRawMIDI(Pattern().match(portName).captured(1).toInt(), Pattern().match(portName).captured(2).toInt())
    {
    }

    sVirtualRawMIDI(int card, int device)
    {
        descriptor = open(qPrintable(QStringLiteral("/dev/snd/midiC%1D%2").arg(card).arg(device)),
            O_RDWR | O_NONBLOCK | O_CLOEXEC);
        Take();  // the device takes MIDI from its port once a read has started it
    }
    ~sVirtualRawMIDI() { close(descriptor); }
    sVirtualRawMIDI(const sVirtualRawMIDI&) = delete;
    sVirtualRawMIDI& operator=(const sVirtualRawMIDI&) = delete;

    bool Write(const QByteArray& bytes) { return write(descriptor, bytes.constData(), bytes.size()) == bytes.size(); }

    QByteArray Take()
    {
        char buffer[4096];
        const ssize_t length = read(descriptor, buffer, sizeof buffer);
        return QByteArray(buffer, static_cast<int>(qMax<ssize_t>(length, 0)));
    }

    // What arrives until count bytes are in or the time is up, while the
    // event loop runs.
    QByteArray Read(int count, int timeout = 20000)
    {
        QByteArray received;
        QElapsedTimer timer;
        timer.start();
        for (pollfd wait = {descriptor, POLLIN, 0}; received.size() < count && !timer.hasExpired(timeout);
             received += Take())
        {
            QCoreApplication::processEvents();
            poll(&wait, 1, 10);
        }
        return received;
    }

    int descriptor;
};

#endif
