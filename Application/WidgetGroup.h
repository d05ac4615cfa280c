#ifndef WIDGETGROUP_H
#define WIDGETGROUP_H

#include <QList>
#include <QObject>

class QWidget;

// Controls that appear and disappear together, such as everything that belongs
// to one connection mode. The widgets belong to their layout, not to the group.
class cWidgetGroup : public QObject
{
    Q_OBJECT
public:
    explicit cWidgetGroup(QObject* parent = nullptr);

    void AddWidget(QWidget* widget);
    void Show();
    void Hide();

private:
    QList<QWidget*> widgets;
};

#endif
