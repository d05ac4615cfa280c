#include "Application/WidgetGroup.h"

#include <QWidget>

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
    for (QWidget* widget : qAsConst(widgets))
    {
        widget->show();
    }
}

void cWidgetGroup::Hide()
{
    for (QWidget* widget : qAsConst(widgets))
    {
        widget->hide();
    }
}
