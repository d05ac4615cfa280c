#ifndef BENCH_RULEFILE_H
#define BENCH_RULEFILE_H

#include <QFile>
#include <QTemporaryDir>

// A benchmark's rule file, written into directory; an empty path if it
// cannot be written.
inline QString WriteRuleFile(const QTemporaryDir& directory, const char* text)
{
    QFile file(directory.filePath(QStringLiteral("rules.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) < 0)
    {
        return QString();
    }
    return file.fileName();
}

#endif
