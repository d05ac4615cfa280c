#ifndef STOPSIGNALS_H
#define STOPSIGNALS_H

#include <QObject>

class QSocketNotifier;

// Turns SIGINT and SIGTERM into a Qt signal on the event loop, so that the
// program can close its sockets and leave normally.
class cStopSignals : public QObject
{
    Q_OBJECT
public:
    explicit cStopSignals(QObject* parent = nullptr);

signals:
    void StopRequested(int signalNumber);

private:
    void ReadSignal();

    QSocketNotifier* notifier;
};

#endif
