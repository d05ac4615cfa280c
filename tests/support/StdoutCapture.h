#ifndef STDOUTCAPTURE_H
#define STDOUTCAPTURE_H

#include <QRegularExpression>
#include <QString>
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
    cStdoutCapture() : file(std::tmpfile())
    {
        Flush();
        savedDescriptor = dup(STDOUT_FILENO);
        dup2(fileno(file), STDOUT_FILENO);
    }

    ~cStdoutCapture()
    {
        Flush();
        dup2(savedDescriptor, STDOUT_FILENO);
        close(savedDescriptor);
        std::fclose(file);
    }

    cStdoutCapture(const cStdoutCapture&) = delete;
    cStdoutCapture& operator=(const cStdoutCapture&) = delete;

    // Everything written so far; capture goes on.
    QString Text()
    {
        Flush();
        QByteArray bytes(static_cast<int>(std::ftell(file)), '\0');
        std::rewind(file);
        bytes.resize(static_cast<int>(std::fread(bytes.data(), 1, static_cast<size_t>(bytes.size()), file)));
        std::fseek(file, 0, SEEK_END);
        return QString::fromLocal8Bit(bytes);
    }

    QStringList Lines() { return Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts); }

    // Only the error trace lines.
    QStringList ErrorLines() { return Lines().filter(QRegularExpression(QStringLiteral("^ERROR: "))); }

private:
    void Flush()
    {
        std::cout.flush();
        std::fflush(stdout);
        std::fflush(file);
    }

    std::FILE* file;
    int savedDescriptor;
};

#endif
