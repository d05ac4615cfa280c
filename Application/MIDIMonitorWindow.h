#ifndef MIDIMONITORWINDOW_H
#define MIDIMONITORWINDOW_H

#include <QPointer>
#include <QWidget>

class QPushButton;
class QTimer;
class QTreeView;
class cMIDIMonitorModel;
class cMIDITranslatorConfiguration;

// The "MIDI Monitor" window: what arrives, which rule fired and what went
// out, for finding out at a soundcheck why a fader does nothing. It listens
// to the translation only while it is open and not paused, so a closed
// monitor costs the byte path nothing but a test for a listener. New rows are
// shown a few times a second in one batch, and the list follows them unless
// the user has scrolled up to read.
class cMIDIMonitorWindow : public QWidget
{
    Q_OBJECT
public:
    // The configuration is not owned and may go first.
    explicit cMIDIMonitorWindow(cMIDITranslatorConfiguration* configuration, QWidget* parent = nullptr);
    ~cMIDIMonitorWindow() override;

    // Every row as a line of tab-separated text; false when the file cannot be written.
    bool SaveToFile(const QString& path);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void UpdateListening();
    void ShowPendingRows();
    void Save();

    QPointer<cMIDITranslatorConfiguration> configuration;
    cMIDIMonitorModel* model;
    QTreeView* view;
    QPushButton* pauseButton;
    QTimer* showTimer;
};

#endif
