#include "StopSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{
// A signal handler may do next to nothing; it writes the signal number down a
// pipe that the event loop watches.
int signalPipe[2] = {-1, -1};

void WriteSignalToPipe(int signalNumber)
{
    unsigned char byte = static_cast<unsigned char>(signalNumber);
    ssize_t ignored = ::write(signalPipe[1], &byte, 1);
    (void)ignored;
}
}

cStopSignals::cStopSignals(QObject* parent) : QObject(parent), notifier(nullptr)
{
    // Without the pipe the signals keep their default action, which also stops us.
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
    {
        return;
    }
    notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &cStopSignals::ReadSignal);

    struct sigaction action = {};
    action.sa_handler = WriteSignalToPipe;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void cStopSignals::ReadSignal()
{
    unsigned char byte = 0;
    if (::read(signalPipe[0], &byte, 1) == 1)
    {
        emit StopRequested(byte);
    }
}
