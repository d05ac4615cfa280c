#include "Application/MIDIMonitorWindow.h"

#include "Application/MIDIMonitorModel.h"
#include "Application/SetupProblems.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace
{
// Often enough to look live, seldom enough that a burst of thousands of
// messages a second costs a handful of repaints.
const int SHOW_INTERVAL_MS = 100;
// Room around a cell's text, in pixels.
const int COLUMN_PADDING = 16;
const int MAXIMUM_MEASURED_ROWS = 200;
// A column grows with its texts up to this many digits' width, so that the
// rule stays in view; longer texts are cut, and shown whole as tooltips.
const int MAXIMUM_COLUMN_DIGITS = 48;
}

cMIDIMonitorWindow::cMIDIMonitorWindow(cMIDITranslatorConfiguration* configuration, cSetupProblems* problems,
                                       QWidget* parent)
    : QWidget(parent, Qt::Window),
      configuration(configuration),
      problems(problems),
      model(new cMIDIMonitorModel(configuration, this)),
      problemLine(new QLabel),
      view(new QTreeView),
      pauseButton(new QPushButton(tr("Pause"))),
      hideRealtimeBox(new QCheckBox(tr("Hide clock and Active Sensing"))),
      showTimer(new QTimer(this))
{
    setWindowTitle(tr("MIDI Monitor"));

    problemLine->setObjectName(QStringLiteral("mRuleFileProblem"));
    problemLine->setWordWrap(true);
    problemLine->setTextInteractionFlags(Qt::TextSelectableByMouse);
    connect(problems, &cSetupProblems::Changed, this, &cMIDIMonitorWindow::ShowRuleFileProblem);
    ShowRuleFileProblem();

    view->setModel(model);
    view->setRootIsDecorated(false);
    view->setUniformRowHeights(true);
    view->setAlternatingRowColors(true);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    const QFontMetrics metrics = view->fontMetrics();
    // Wide enough for a time of day, a port with its role and a message of
    // three bytes; wider texts widen their column as they come, and the rule
    // takes the rest.
    const QString samples[] = {QStringLiteral("00:00:00.000"), QStringLiteral("out"),
        QStringLiteral("Mixer Out (TCP 000.000.000.000)"), QStringLiteral("00 00 00 00"),
        QStringLiteral("Note On 000 vel 000, ch 00")};
    for (int column = 0; column < cMIDIMonitorModel::RULE_COLUMN; ++column)
    {
        view->header()->resizeSection(column, metrics.horizontalAdvance(samples[column]) + COLUMN_PADDING);
    }
    connect(model, &QAbstractItemModel::rowsInserted, this,
        [this](const QModelIndex&, int first) { FitColumns(first); });

    QAction* copyAction = new QAction(tr("Copy"), view);
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setShortcutContext(Qt::WidgetShortcut);
    connect(copyAction, &QAction::triggered, this, &cMIDIMonitorWindow::CopySelectedRows);
    view->addAction(copyAction);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);

    pauseButton->setCheckable(true);
    hideRealtimeBox->setChecked(true);
    QPushButton* clearButton = new QPushButton(tr("Clear"));
    QPushButton* saveButton = new QPushButton(tr("Save..."));
    connect(pauseButton, &QPushButton::toggled, this, &cMIDIMonitorWindow::UpdateListening);
    connect(hideRealtimeBox, &QCheckBox::toggled, model, &cMIDIMonitorModel::SetHidingRealtime);
    connect(clearButton, &QPushButton::clicked, model, &cMIDIMonitorModel::Clear);
    connect(saveButton, &QPushButton::clicked, this, &cMIDIMonitorWindow::Save);
    connect(showTimer, &QTimer::timeout, this, &cMIDIMonitorWindow::ShowPendingRows);
    showTimer->setInterval(SHOW_INTERVAL_MS);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(pauseButton);
    buttons->addWidget(clearButton);
    buttons->addWidget(hideRealtimeBox);
    buttons->addStretch();
    buttons->addWidget(saveButton);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(problemLine);
    layout->addWidget(view);
    layout->addLayout(buttons);
    const int digitWidth = metrics.horizontalAdvance(QLatin1Char('0'));
    resize(QSize(160 * digitWidth, 30 * metrics.height()).boundedTo(screen()->availableGeometry().size()));
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
    file.write(model->GetHeaderText().toUtf8() + '\n');
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

// Only the newest rows of a large batch are measured: they are what the user
// reads, and measuring thousands of texts would stall a burst.
void cMIDIMonitorWindow::FitColumns(int firstRow)
{
    const int lastRow = model->rowCount() - 1;
    const QFontMetrics metrics = view->fontMetrics();
    const int maximumWidth = MAXIMUM_COLUMN_DIGITS * metrics.horizontalAdvance(QLatin1Char('0'));
    for (const int column : {cMIDIMonitorModel::PORT_COLUMN, cMIDIMonitorModel::BYTES_COLUMN,
                             cMIDIMonitorModel::MESSAGE_COLUMN})
    {
        int wanted = 0;
        for (int row = std::max(firstRow, lastRow - MAXIMUM_MEASURED_ROWS); row <= lastRow; ++row)
        {
            wanted = std::max(wanted, metrics.horizontalAdvance(model->index(row, column).data().toString()));
        }
        // Never narrower: the user may have widened it.
        const int width = std::min(wanted + COLUMN_PADDING, maximumWidth);
        if (width > view->header()->sectionSize(column))
        {
            view->header()->resizeSection(column, width);
        }
    }
}

void cMIDIMonitorWindow::CopySelectedRows()
{
    QModelIndexList rows = view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const QModelIndex& row : std::as_const(rows))
    {
        text += model->GetRowText(row.row()) + QLatin1Char('\n');
    }
    QGuiApplication::clipboard()->setText(text);
}

void cMIDIMonitorWindow::ShowRuleFileProblem()
{
    const QString problem = problems->GetText(cSetupProblems::eKind::RuleFile);
    const bool nothingTranslated = configuration && configuration->GetMIDITranslatorRules().isEmpty();
    problemLine->setText(nothingTranslated ? tr("No rules are loaded, so no MIDI shows here: %1").arg(problem)
                                           : tr("Some rules are missing: %1").arg(problem));
    problemLine->setVisible(!problem.isEmpty());
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
