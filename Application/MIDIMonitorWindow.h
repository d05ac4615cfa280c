#ifndef MIDIMONITORWINDOW_H
#define MIDIMONITORWINDOW_H

#include <QPointer>
#include <QWidget>

class QCheckBox;
class QLabel;
class QPushButton;
class QTimer;
class QTreeView;
class cMIDIMonitorModel;
class cMIDITranslatorConfiguration;
class cSetupProblems;

// The "MIDI Monitor" window: what arrives, which rule fired and what went
// out, for finding out at a soundcheck why a fader does nothing. It listens
// to the translation only while it is open and not paused, so a closed
// monitor costs the byte path nothing but a test for a listener. New rows are
// shown a few times a second in one batch, and the list follows them unless
// the user has scrolled up to read. When the rule file did not load as it
// should, a line above the list says so, since then little or nothing shows.
// Selected rows are copied (Ctrl+C, or the context menu) as they are saved.
class cMIDIMonitorWindow : public QWidget
{
    Q_OBJECT
public:
    // Neither is owned; the configuration may go first.
    cMIDIMonitorWindow(cMIDITranslatorConfiguration* configuration, cSetupProblems* problems,
                       QWidget* parent = nullptr);
    ~cMIDIMonitorWindow() override;

    // A line of column titles, then every row as a line of tab-separated
    // text; false when the file cannot be written.
    bool SaveToFile(const QString& path);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void UpdateListening();
    void ShowPendingRows();
    void FitColumns(int firstRow);
    void CopySelectedRows();
    void ShowRuleFileProblem();
    void Save();

    QPointer<cMIDITranslatorConfiguration> configuration;
    cSetupProblems* problems;
    cMIDIMonitorModel* model;
    QLabel* problemLine;
    QTreeView* view;
    QPushButton* pauseButton;
    QCheckBox* hideRealtimeBox;
    QTimer* showTimer;
};

#endif
