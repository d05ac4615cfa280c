#include "Application/WidgetGroup.h"

#include <QWidget>

#include <utility>

cWidgetGroup::cWidgetGroup(QObject* parent)
    : QObject(parent)
{
}

void cWidgetGroup::AddWidget(QWidget* widget)
{
    widgets.append(widget);
}

void cWidgetGroup::Show()
{
    for (QWidget* widget : std::as_const(widgets))
    {
        widget->show();
    }
}

void cWidgetGroup::Hide()
{
    for (QWidget* widget : std::as_const(widgets))
    {
        widget->hide();
    }
}
