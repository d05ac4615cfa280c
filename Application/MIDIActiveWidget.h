#ifndef MIDIACTIVEWIDGET_H
#define MIDIACTIVEWIDGET_H

#include <QWidget>

class QTimer;

// An activity lamp: a small frame that fills while MIDI passes. Each burst
// restarts a short timer, so the lamp stays lit through a burst and goes dark
// one interval after the last byte.
class cMIDIActiveWidget : public QWidget
{
    Q_OBJECT
public:
    explicit cMIDIActiveWidget(QWidget* parent = nullptr);

public slots:
    void MIDIActive();
    void TimerFired();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer* timer;
    bool active = false;
};

#endif
