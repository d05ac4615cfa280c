#ifndef FITWIDTHTOLAYOUT_H
#define FITWIDTHTOLAYOUT_H

#include <QObject>

class QWidget;

// Keeps a window of fixed size as wide as its layout asks, as lists in it
// grow and shrink with the names they hold: whenever the layout is to be
// worked out anew, the window's fixed width follows its size hint. The
// height stays as it was fixed.
class cFitWidthToLayout : public QObject
{
    Q_OBJECT
public:
    // Watches window, which must have a layout, and is its child.
    explicit cFitWidthToLayout(QWidget* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* window;
};

#endif
