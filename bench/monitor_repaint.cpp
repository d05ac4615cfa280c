// Time to repaint the MIDI monitor's list (offscreen) with one long System
// Exclusive message among its rows, by the message's length. The repaint
// asks the model for the text of every visible cell, so it is what each
// batch of new rows costs the event loop that also translates MIDI.

#include "Application/MIDIMonitorModel.h"
#include "Application/MIDIMonitorWindow.h"
#include "Application/SetupProblems.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "bench/WidgetBenchmarkMain.h"

#include <QTreeView>

#include <benchmark/benchmark.h>

namespace
{
QByteArray SystemExclusive(int length)
{
    QByteArray bytes(length, '\x55');
    bytes[0] = '\xF0';
    bytes[length - 1] = '\xF7';
    return bytes;
}

void BM_MonitorRepaint(benchmark::State& state)
{
    auto* registry = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(registry);
    cSetupProblems problems(registry);
    cMIDIMonitorWindow monitor(&configuration, &problems);
    // Wider than the offscreen screen, so that every column is painted.
    monitor.resize(2000, 400);
    monitor.show();
    QTreeView* view = monitor.findChild<QTreeView*>();
    auto* model = static_cast<cMIDIMonitorModel*>(view->model());
    const QString port = QStringLiteral("Desk");
    model->MIDIMessageRead(port, QByteArray::fromHex("B00764"));
    model->MIDIMessageRead(port, SystemExclusive(static_cast<int>(state.range(0))));
    model->MIDIMessageRead(port, QByteArray::fromHex("B00765"));
    model->ShowPendingRows();
    QCoreApplication::processEvents();

    for (auto _ : state)
    {
        view->viewport()->repaint();
    }
    state.SetLabel(model->GetRowText(1).section(QLatin1Char('\t'), 4, 4).toStdString());
}
}

BENCHMARK(BM_MonitorRepaint)->ArgName("bytes")->Arg(3)->Arg(4 << 10)->Arg(64 << 10)->Arg(256 << 10)
    ->Unit(benchmark::kMillisecond);

TESSERA_WIDGET_BENCHMARK_MAIN()
