#include "Application/StatusBarView.h"

#include "Application/MIDIActiveWidget.h"
#include "Application/SetupProblems.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QLabel>
#include <QLayout>
#include <QStatusBar>
#include <QStyle>

cStatusBarView::cStatusBarView(QStatusBar* statusBar, cMIDITranslatorConfiguration* configuration,
                               cSetupProblems* problems)
    : QObject(statusBar),
      statusBar(statusBar),
      configuration(configuration),
      problems(problems),
      stateLabel(new QLabel),
      warningSign(new QLabel)
{
    // A permanent widget, not the bar's message: menus clear the message
    // whenever the pointer passes an entry. A long text is cut rather than
    // widening the window; the tooltip has it all.
    stateLabel->setObjectName(QStringLiteral("mStateLabel"));
    stateLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar->addPermanentWidget(stateLabel, 1);

    const int signSize = statusBar->fontMetrics().height();
    warningSign->setObjectName(QStringLiteral("mWarningSign"));
    warningSign->setPixmap(statusBar->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(signSize, signSize));
    warningSign->hide();
    statusBar->addPermanentWidget(warningSign);
    connect(problems, &cSetupProblems::Changed, this, &cStatusBarView::ShowProblems);

    AddActivityLamp(QStringLiteral("mMixerMIDIInActiveWidget"), &cMIDITranslatorConfiguration::MixerMIDIInputRead);
    AddActivityLamp(QStringLiteral("mMixerMIDIOutActiveWidget"), &cMIDITranslatorConfiguration::MixerMIDIOutputWrite);
    statusBar->layout()->setContentsMargins(0, 0, 5, 0);
}

void cStatusBarView::AddActivityLamp(const QString& name, void (cMIDITranslatorConfiguration::*traffic)())
{
    cMIDIActiveWidget* lamp = new cMIDIActiveWidget;
    lamp->setObjectName(name);
    lamp->setFixedSize(10, 10);
    connect(configuration, traffic, lamp, &cMIDIActiveWidget::MIDIActive);
    statusBar->addPermanentWidget(lamp);
}

void cStatusBarView::ShowState(const QString& text, const QString& details)
{
    stateLabel->setText(text);
    stateLabel->setToolTip(details);
}

void cStatusBarView::ShowProblems()
{
    const QStringList texts = problems->GetTexts();
    warningSign->setToolTip(texts.join(QLatin1Char('\n')));
    warningSign->setVisible(!texts.isEmpty());
}
