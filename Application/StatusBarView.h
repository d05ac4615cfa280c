#ifndef STATUSBARVIEW_H
#define STATUSBARVIEW_H

#include <QObject>
#include <QString>

class QLabel;
class QStatusBar;
class cMIDITranslatorConfiguration;
class cSetupProblems;

// What the window's status bar shows: the state of the link to the mixer as
// text, a warning sign while a problem of the setup stands (its tooltip says
// which), and at the right the two lamps that light while MIDI comes from the
// mixer and goes to it. The state stays as it is while menus pass their
// entries' tips to the bar.
class cStatusBarView : public QObject
{
    Q_OBJECT
public:
    // The lamps follow configuration's traffic through the mixer's ports;
    // neither it nor problems is owned.
    cStatusBarView(QStatusBar* statusBar, cMIDITranslatorConfiguration* configuration, cSetupProblems* problems);

    // An empty text clears the state; details go to its tooltip.
    void ShowState(const QString& text, const QString& details = QString());

private:
    void AddActivityLamp(const QString& name, void (cMIDITranslatorConfiguration::*traffic)());
    void ShowProblems();

    QStatusBar* statusBar;
    cMIDITranslatorConfiguration* configuration;
    cSetupProblems* problems;
    QLabel* stateLabel;
    QLabel* warningSign;
};

#endif
