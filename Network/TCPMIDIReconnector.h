#ifndef TCPMIDIRECONNECTOR_H
#define TCPMIDIRECONNECTOR_H

#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <QTimer>

class cTCPMIDIInptOutput;

// Keeps a TCP MIDI link up: whenever the link is down, it is connected again,
// first after half a second, then after twice the previous wait, up to eight
// seconds, for as long as it is kept. Only one attempt is under way at a
// time; a new one starts when the previous has failed and its wait is over.
class cTCPMIDIReconnector : public QObject
{
    Q_OBJECT
public:
    static constexpr int FIRST_RETRY_DELAY_MS = 500;
    static constexpr int LONGEST_RETRY_DELAY_MS = 8000;

    // With a timeDivisor above 1 every wait is that many times shorter (for
    // tests); the delays it reports stay the real ones.
    explicit cTCPMIDIReconnector(cTCPMIDIInptOutput* link, QObject* parent = nullptr, int timeDivisor = 1);

    // From now on connects the link to address whenever it is down. The owner
    // starts the first attempt itself.
    void Keep(const QHostAddress& address);
    // Stops retrying at once; the link is left as it is.
    void Release();

    bool IsKeeping() const;
    QHostAddress GetAddress() const;

signals:
    // The link is down and is tried again in delayMs.
    void RetryScheduled(int delayMs);

private slots:
    void LinkStateChanged();
    void Retry();

private:
    cTCPMIDIInptOutput* link;
    const int timeDivisor;
    QTimer retryTimer;
    QElapsedTimer connectedClock;
    QHostAddress address;
    int nextDelayMs = FIRST_RETRY_DELAY_MS;
    bool keeping = false;
};

#endif
