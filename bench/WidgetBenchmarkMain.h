#ifndef BENCH_WIDGETBENCHMARKMAIN_H
#define BENCH_WIDGETBENCHMARKMAIN_H

#include <QApplication>

#include <benchmark/benchmark.h>

// The main of a benchmark that needs widgets: they run on the offscreen
// platform unless QT_QPA_PLATFORM names another.
#define TESSERA_WIDGET_BENCHMARK_MAIN() \
    int main(int argc, char** argv) \
    { \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) \
        { \
            qputenv("QT_QPA_PLATFORM", "offscreen"); \
        } \
        QApplication application(argc, argv); \
        benchmark::Initialize(&argc, argv); \
        benchmark::RunSpecifiedBenchmarks(); \
        return 0; \
    }

#endif
