#include "ConsoleInput.h"

#include <QSocketNotifier>

#include <cerrno>
#include <unistd.h>

cConsoleInput::cConsoleInput(QObject* parent)
    : QObject(parent), notifier(new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this))
{
    connect(notifier, &QSocketNotifier::activated, this, &cConsoleInput::ReadAvailable);
}

void cConsoleInput::ReadAvailable()
{
    char buffer[4096];
    ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
    {
        return;
    }
    if (count <= 0)
    {
        notifier->setEnabled(false);
        if (!partialLine.isEmpty())
        {
            emit LineRead(QString::fromLocal8Bit(partialLine));
            partialLine.clear();
        }
        emit EndOfInput();
        return;
    }
    partialLine.append(buffer, static_cast<int>(count));
    int end;
    while ((end = partialLine.indexOf('\n')) >= 0)
    {
        emit LineRead(QString::fromLocal8Bit(partialLine.left(end)));
        partialLine.remove(0, end + 1);
    }
}
