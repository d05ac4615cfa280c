#ifndef STATUSBARVIEW_H
#define STATUSBARVIEW_H

#include <QObject>
#include <QString>

class QStatusBar;
class cMIDITranslatorConfiguration;

// What the window's status bar shows: the state of the link to the mixer as
// text, and at its right the two lamps that light while MIDI comes from the
// mixer and goes to it.
class cStatusBarView : public QObject
{
    Q_OBJECT
public:
    // The lamps follow configuration's traffic through the mixer's ports.
    cStatusBarView(QStatusBar* statusBar, cMIDITranslatorConfiguration* configuration);

    // An empty text clears the bar.
    void ShowState(const QString& text);
    // A link that is down and tried again after delayMs.
    void ShowRetry(const QString& stateText, int delayMs);

private:
    void AddActivityLamp(const QString& name, void (cMIDITranslatorConfiguration::*traffic)());

    QStatusBar* statusBar;
    cMIDITranslatorConfiguration* configuration;
};

#endif
