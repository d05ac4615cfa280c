#include "MIDITranslator/JsonFile.h"

#include "Application/DebugTrace.h"

#include <QFile>
#include <QJsonParseError>

QJsonDocument ReadJsonDocumentFromFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        DebugErrTrace(DEBUG_LOCATION, "Could not open file: %s", path.toLocal8Bit().constData());
        return QJsonDocument();
    }
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    file.close();
    if (error.error != QJsonParseError::NoError)
    {
        DebugErrTrace(DEBUG_LOCATION, "Json Parse Error: %s for file %s", error.errorString().toLocal8Bit().constData(),
                      path.toLocal8Bit().constData());
    }
    else if (document.isNull())
    {
        DebugErrTrace(DEBUG_LOCATION, "Json Document is Null");
    }
    return document;
}
