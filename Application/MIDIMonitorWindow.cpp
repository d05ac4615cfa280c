#include "Application/MIDIMonitorWindow.h"

#include "Application/MIDIMonitorModel.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace
{
// Often enough to look live, seldom enough that a burst of thousands of
// messages a second costs a handful of repaints.
const int SHOW_INTERVAL_MS = 100;
}

cMIDIMonitorWindow::cMIDIMonitorWindow(cMIDITranslatorConfiguration* configuration, QWidget* parent)
    : QWidget(parent, Qt::Window),
      configuration(configuration),
      model(new cMIDIMonitorModel(configuration, this)),
      view(new QTreeView),
      pauseButton(new QPushButton(tr("Pause"))),
      showTimer(new QTimer(this))
{
    setWindowTitle(tr("MIDI Monitor"));

    view->setModel(model);
    view->setRootIsDecorated(false);
    view->setUniformRowHeights(true);
    view->setAlternatingRowColors(true);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    const int digitWidth = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    // In digits: wide enough for a port name with its alias and a message
    // of three bytes; the rule takes the rest.
    const int columnWidths[] = {10, 4, 36, 24, 26};
    for (int column = 0; column < cMIDIMonitorModel::RULE_COLUMN; ++column)
    {
        view->header()->resizeSection(column, columnWidths[column] * digitWidth);
    }

    pauseButton->setCheckable(true);
    QPushButton* clearButton = new QPushButton(tr("Clear"));
    QPushButton* saveButton = new QPushButton(tr("Save..."));
    connect(pauseButton, &QPushButton::toggled, this, &cMIDIMonitorWindow::UpdateListening);
    connect(clearButton, &QPushButton::clicked, model, &cMIDIMonitorModel::Clear);
    connect(saveButton, &QPushButton::clicked, this, &cMIDIMonitorWindow::Save);
    connect(showTimer, &QTimer::timeout, this, &cMIDIMonitorWindow::ShowPendingRows);
    showTimer->setInterval(SHOW_INTERVAL_MS);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(pauseButton);
    buttons->addWidget(clearButton);
    buttons->addStretch();
    buttons->addWidget(saveButton);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(view);
    layout->addLayout(buttons);
    resize(QSize(125 * digitWidth, 30 * fontMetrics().height()).boundedTo(screen()->availableGeometry().size()));
}

cMIDIMonitorWindow::~cMIDIMonitorWindow()
{
    if (configuration)
    {
        configuration->SetMIDITrafficListener(nullptr);
    }
}

bool cMIDIMonitorWindow::SaveToFile(const QString& path)
{
    ShowPendingRows();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
    {
        return false;
    }
    for (int row = 0; row < model->rowCount(); ++row)
    {
        file.write(model->GetRowText(row).toUtf8() + '\n');
    }
    return file.commit();
}

void cMIDIMonitorWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    UpdateListening();
}

void cMIDIMonitorWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    UpdateListening();
}

void cMIDIMonitorWindow::UpdateListening()
{
    if (!configuration)
    {
        return;
    }
    const bool listening = isVisible() && !pauseButton->isChecked();
    configuration->SetMIDITrafficListener(listening ? model : nullptr);
    if (listening)
    {
        showTimer->start();
    }
    else
    {
        // What was recorded up to now stays to be read.
        showTimer->stop();
        ShowPendingRows();
    }
}

void cMIDIMonitorWindow::ShowPendingRows()
{
    QScrollBar* scrollBar = view->verticalScrollBar();
    const bool following = scrollBar->value() == scrollBar->maximum();
    model->ShowPendingRows();
    if (following)
    {
        view->scrollToBottom();
    }
}

void cMIDIMonitorWindow::Save()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save MIDI Monitor"),
        QDir::home().filePath(QStringLiteral("midi-monitor.txt")), tr("Text files (*.txt)"));
    if (!path.isEmpty() && !SaveToFile(path))
    {
        QMessageBox::warning(this, windowTitle(), tr("Could not save the monitor to %1.").arg(path));
    }
}
