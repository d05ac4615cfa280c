#include "Application/DebugTrace.h"
#include "support/StdoutCapture.h"

#include <QtTest>

#include <string>
#include <thread>

class tTrace : public QObject
{
    Q_OBJECT

private slots:
    void LineFormat()
    {
        cStdoutCapture capture;
        const int errorLine = __LINE__ + 1;
        DebugErrTrace(DEBUG_LOCATION, "Json Parse Error: %s for file %s", "unterminated object", "Maps/x32.json");
        const int traceLine = __LINE__ + 1;
        DebugTrace(DEBUG_LOCATION, "Rule %d loaded", 12);
        DebugEventTrace(DEBUG_LOCATION, "Event %d %s", 3, "never shown");
        // A message beyond the buffer is cut, not overrun; a missing file name
        // must not silence the trace for good.
        const std::string longText(2000, 'x');
        DebugErrTrace(DEBUG_LOCATION, "%s", longText.c_str());
        DebugErrTrace(nullptr, 7, nullptr, "No file");
        DebugTrace(DEBUG_LOCATION, "Still tracing");

        const QStringList lines = capture.Lines();
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines.mid(0, 2),
                 (QStringList{QStringLiteral("ERROR: Json Parse Error: unterminated object for file Maps/x32.json\t(tests/test_trace.cpp:%1)").arg(errorLine),
                              QStringLiteral("Rule 12 loaded\t(tests/test_trace.cpp:%1)").arg(traceLine)}));
        QVERIFY(lines[2].startsWith(QStringLiteral("ERROR: ") + QString(511, QLatin1Char('x')) + QLatin1Char('\t')));
        QCOMPARE(lines[3], QStringLiteral("ERROR: No file\t(:7)"));
        QVERIFY(lines[4].startsWith(QStringLiteral("Still tracing\t(tests/test_trace.cpp:")));
    }

    void ThreadsNeverInterleave()
    {
        cStdoutCapture capture;
        const int perThread = 2000;
        auto writer = [](const char* text) {
            for (int count = 0; count < perThread; ++count)
            {
                DebugErrTrace(DEBUG_LOCATION, "%s %d", text, count);
            }
        };
        std::thread first(writer, "first-writer-with-a-long-enough-message-to-be-split");
        std::thread second(writer, "second-writer-with-a-long-enough-message-to-be-split");
        first.join();
        second.join();

        const QStringList lines = capture.Lines();
        QCOMPARE(lines.size(), 2 * perThread);
        const QRegularExpression whole(QStringLiteral(
            "^ERROR: (first|second)-writer-with-a-long-enough-message-to-be-split \\d+\\t\\(tests/test_trace\\.cpp:\\d+\\)$"));
        for (const QString& line : lines)
        {
            QVERIFY2(whole.match(line).hasMatch(), qPrintable(line));
        }
    }
};

QTEST_APPLESS_MAIN(tTrace)
#include "test_trace.moc"
