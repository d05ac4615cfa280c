#ifndef STDOUTCAPTURE_H
#define STDOUTCAPTURE_H

#include <QString>
#include <QRegularExpression>
#include <QStringList>

#include <cstdio>
#include <iostream>
#include <unistd.h>

// Captures what the program writes to standard output (the trace) while it is
// alive, at the file descriptor level, so every writer is seen.
//
//     cStdoutCapture capture;
//     ... code that traces ...
//     QStringList lines = capture.Lines();
class cStdoutCapture
{
public:
    cStdoutCapture()
    {
        std::cout.flush();
        std::fflush(stdout);
        file = std::tmpfile();
        savedDescriptor = dup(STDOUT_FILENO);
        dup2(fileno(file), STDOUT_FILENO);
    }

    ~cStdoutCapture()
    {
        Restore();
        std::fclose(file);
    }

    cStdoutCapture(const cStdoutCapture&) = delete;
    cStdoutCapture& operator=(const cStdoutCapture&) = delete;

    // Everything written so far; capture goes on.
    QString Text()
    {
        std::cout.flush();
        std::fflush(stdout);
        std::fflush(file);
        QByteArray bytes;
        long end = std::ftell(file);
        std::rewind(file);
        bytes.resize(static_cast<int>(end));
        size_t got = std::fread(bytes.data(), 1, static_cast<size_t>(end), file);
        bytes.resize(static_cast<int>(got));
        std::fseek(file, 0, SEEK_END);
        return QString::fromLocal8Bit(bytes);
    }

    QStringList Lines()
    {
        return Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    // Only the error trace lines.
    QStringList ErrorLines()
    {
        return Lines().filter(QRegularExpression(QStringLiteral("^ERROR: ")));
    }

private:
    void Restore()
    {
        if (savedDescriptor < 0)
        {
            return;
        }
        std::cout.flush();
        std::fflush(stdout);
        dup2(savedDescriptor, STDOUT_FILENO);
        close(savedDescriptor);
        savedDescriptor = -1;
    }

    std::FILE* file = nullptr;
    int savedDescriptor = -1;
};

#endif
