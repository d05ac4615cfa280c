#include "Application/StatusBarView.h"

#include "Application/MIDIActiveWidget.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QLayout>
#include <QStatusBar>

cStatusBarView::cStatusBarView(QStatusBar* statusBar, cMIDITranslatorConfiguration* configuration)
    : QObject(statusBar), statusBar(statusBar), configuration(configuration)
{
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

void cStatusBarView::ShowState(const QString& text)
{
    statusBar->showMessage(text);
}

void cStatusBarView::ShowRetry(const QString& stateText, int delayMs)
{
    ShowState(tr("%1, next try in %2 s").arg(stateText).arg(delayMs / 1000.0));
}
