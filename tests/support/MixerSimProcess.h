#ifndef MIXERSIMPROCESS_H
#define MIXERSIMPROCESS_H

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <QTest>

// One mixer-sim process, the stand-in mixer shipped with the program, run
// from the build tree's bin/ beside tests/, through a command that runs it
// (in another network namespace, say) if one is given. Its standard input
// stays open until Stop(), and its printed lines are collected as they come.
class cMixerSimProcess
{
public:
    explicit cMixerSimProcess(const QStringList& arguments, QStringList runner = {})
    {
        runner.append(QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/mixer-sim"));
        process.start(runner.takeFirst(), runner + arguments);
        started = WaitForLine(QStringLiteral("^listening "));
    }

    ~cMixerSimProcess()
    {
        if (!Stop())
        {
            process.kill();
            process.waitForFinished(2000);
        }
    }

    cMixerSimProcess(const cMixerSimProcess&) = delete;
    cMixerSimProcess& operator=(const cMixerSimProcess&) = delete;

    // True once it listens; false when it could not bind or did not start.
    bool IsListening() const { return started; }

    // A line of its standard input: MIDI in hex, or "close".
    void Input(const QString& line) { process.write((line + QLatin1Char('\n')).toLatin1()); }

    // Waits, serving the event loop, for a printed line that matches pattern
    // and lies past the line matched by the previous wait. Received MIDI
    // prints as "<seconds> in  B0 07 7F", so " in  B0 07 7F$" finds it.
    bool WaitForLine(const QString& pattern, int timeoutMs = 5000)
    {
        const QRegularExpression expression(pattern);
        return QTest::qWaitFor([&]() { return FindLine(expression); }, timeoutMs);
    }

    // Every line printed so far.
    QStringList Lines()
    {
        ReadLines();
        return lines;
    }

    // Ends its input, the normal way to stop it, and waits for it to leave.
    bool Stop()
    {
        if (process.state() == QProcess::NotRunning)
        {
            return process.exitStatus() == QProcess::NormalExit;
        }
        process.closeWriteChannel();
        return process.waitForFinished(5000) && process.exitStatus() == QProcess::NormalExit &&
               process.exitCode() == 0;
    }

    QProcess& Process() { return process; }

private:
    void ReadLines()
    {
        while (process.canReadLine())
        {
            lines.append(QString::fromLocal8Bit(process.readLine()).trimmed());
        }
    }

    bool FindLine(const QRegularExpression& expression)
    {
        ReadLines();
        for (; searched < lines.size(); ++searched)
        {
            if (expression.match(lines[searched]).hasMatch())
            {
                ++searched;
                return true;
            }
        }
        return false;
    }

    QProcess process;
    QStringList lines;
    int searched = 0;
    bool started = false;
};

#endif
