#ifndef RETRYTIMER_H
#define RETRYTIMER_H

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

// The wait before the next connection attempt, and the clock that waits and
// connections are measured on. The program runs on the event loop's own time;
// a test moves time by hand, so that waits of seconds take none and are exact.
class cRetryTimer : public QObject
{
    Q_OBJECT
public:
    explicit cRetryTimer(QObject* parent = nullptr);

    // Milliseconds on a clock that only goes forward.
    virtual qint64 GetNowMs() const;
    // Timeout() once, delayMs from now; a wait under way is replaced.
    virtual void Start(int delayMs);
    virtual void Stop();
    virtual bool IsActive() const;

signals:
    void Timeout();

private:
    QTimer timer;
    QElapsedTimer clock;
};

#endif
