#include "MIDITranslator/JsonFile.h"

#include "Application/DebugTrace.h"

#include <QFile>

QJsonDocument ReadJsonDocumentFromFile(const QString& path, QString* problem)
{
    QString found;
    QJsonDocument document;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        DebugErrTrace(DEBUG_LOCATION, "Could not open file: %s", path.toLocal8Bit().constData());
        found = QStringLiteral("%1: cannot be opened: %2").arg(path, file.errorString());
    }
    else
    {
        const QByteArray text = file.readAll();
        file.close();
        QJsonParseError error;
        document = QJsonDocument::fromJson(text, &error);
        if (error.error != QJsonParseError::NoError)
        {
            DebugErrTrace(DEBUG_LOCATION, "Json Parse Error: %s for file %s",
                          error.errorString().toLocal8Bit().constData(), path.toLocal8Bit().constData());
            found = DescribeJsonSyntaxError(path, text, error);
        }
        else if (document.isNull())
        {
            DebugErrTrace(DEBUG_LOCATION, "Json Document is Null");
            found = QStringLiteral("%1: holds no JSON document").arg(path);
        }
    }
    if (problem)
    {
        *problem = found;
    }
    return document;
}

QString DescribeJsonSyntaxError(const QString& path, const QByteArray& text, const QJsonParseError& error)
{
    // Where the parser stopped, usually just past the offending character.
    const QByteArray before = text.left(error.offset);
    const int lineStart = before.lastIndexOf('\n') + 1;
    const int line = before.count('\n') + 1;
    const int column = QString::fromUtf8(before.mid(lineStart)).size() + 1;
    return QStringLiteral("%1:%2:%3: JSON syntax error: %4").arg(path).arg(line).arg(column).arg(error.errorString());
}
