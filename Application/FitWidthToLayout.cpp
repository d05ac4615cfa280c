#include "Application/FitWidthToLayout.h"

#include <QEvent>
#include <QLayout>
#include <QWidget>

cFitWidthToLayout::cFitWidthToLayout(QWidget* window) : QObject(window), window(window)
{
    window->installEventFilter(this);
}

bool cFitWidthToLayout::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window && event->type() == QEvent::LayoutRequest)
    {
        const int width = window->layout()->sizeHint().width();
        if (width != window->width())
        {
            window->setFixedWidth(width);
        }
    }
    return false;
}
