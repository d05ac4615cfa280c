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

// A MIDI interface of the kernel's own, played through its raw side: snd-virmidi
// makes sequencer clients "Virtual Raw MIDI C-D" with one port each, and what
// is written to /dev/snd/midiCcDd comes out of that port, while what is sent to
// the port can be read there.
class cVirtualRawMIDI
{
public:
    // The snd-virmidi ports among these sequencer port names.
    static QStringList Find(const QStringList& portNames) { return portNames.filter(Pattern()); }

    explicit cVirtualRawMIDI(const QString& portName)
    {
        const QRegularExpressionMatch match = Pattern().match(portName);
        const QString device = QStringLiteral("/dev/snd/midiC%1D%2").arg(match.captured(1), match.captured(2));
        descriptor = open(device.toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        // The device takes MIDI from its port only once a read has started it.
        Take();
    }
    ~cVirtualRawMIDI()
    {
        if (descriptor >= 0)
        {
            close(descriptor);
        }
    }
    cVirtualRawMIDI(const cVirtualRawMIDI&) = delete;
    cVirtualRawMIDI& operator=(const cVirtualRawMIDI&) = delete;

    bool IsOpen() const { return descriptor >= 0; }
    int Descriptor() const { return descriptor; }

    bool Write(const QByteArray& bytes) { return write(descriptor, bytes.constData(), bytes.size()) == bytes.size(); }

    // What waits now, without blocking.
    QByteArray Take()
    {
        char buffer[4096];
        const ssize_t length = read(descriptor, buffer, sizeof buffer);
        return length > 0 ? QByteArray(buffer, static_cast<int>(length)) : QByteArray();
    }

    // Everything that arrives until at least count bytes are in or the time is
    // up; the event loop keeps running.
    QByteArray Read(int count, int timeout = 20000)
    {
        QByteArray received;
        QElapsedTimer timer;
        timer.start();
        pollfd wait = {descriptor, POLLIN, 0};
        while (received.size() < count && !timer.hasExpired(timeout))
        {
            QCoreApplication::processEvents();
            poll(&wait, 1, 10);
            received += Take();
        }
        return received;
    }

private:
    static QRegularExpression Pattern()
    {
        return QRegularExpression(QStringLiteral("^Virtual Raw MIDI (\\d+)-(\\d+):VirMIDI \\d+-\\d+$"));
    }

    int descriptor = -1;
};

#endif
