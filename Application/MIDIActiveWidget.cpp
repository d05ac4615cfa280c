#include "Application/MIDIActiveWidget.h"

#include <QPainter>
#include <QTimer>

namespace
{
const int LAMP_INTERVAL_MS = 20;
}

cMIDIActiveWidget::cMIDIActiveWidget(QWidget* parent)
    : QWidget(parent), timer(new QTimer(this))
{
    // The timer repeats and is never stopped: clearing an already dark lamp
    // costs nothing, and stopping it would need care against restarts.
    timer->setInterval(LAMP_INTERVAL_MS);
    connect(timer, &QTimer::timeout, this, &cMIDIActiveWidget::TimerFired);
}

void cMIDIActiveWidget::MIDIActive()
{
    active = true;
    timer->start();
    update();
}

void cMIDIActiveWidget::TimerFired()
{
    active = false;
    update();
}

void cMIDIActiveWidget::paintEvent(QPaintEvent* /*event*/)
{
    // A one-pixel pen strokes one pixel beyond the rectangle's size, so these
    // cover (0, 0)-(width - 2, height - 2) and (2, 2)-(width - 4, height - 4):
    // a frame with a one-pixel gap around the filled square.
    QPainter painter(this);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(QBrush(Qt::transparent, Qt::SolidPattern));
    painter.drawRect(0, 0, width() - 2, height() - 2);
    if (active)
    {
        painter.setBrush(QBrush(Qt::black, Qt::SolidPattern));
        painter.drawRect(2, 2, width() - 6, height() - 6);
    }
}
