#include "Network/RetryTimer.h"

cRetryTimer::cRetryTimer(QObject* parent) : QObject(parent)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &cRetryTimer::Timeout);
    clock.start();
}

qint64 cRetryTimer::GetNowMs() const
{
    return clock.elapsed();
}

void cRetryTimer::Start(int delayMs)
{
    timer.start(delayMs);
}

void cRetryTimer::Stop()
{
    timer.stop();
}

bool cRetryTimer::IsActive() const
{
    return timer.isActive();
}
