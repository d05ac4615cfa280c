#include "MIDITranslator/MixerDawMap.h"

#include "Application/DebugTrace.h"
#include "MIDITranslator/JsonFile.h"

#include <QJsonValue>

void cMixerDawMap::LoadFromFilePath(const QString& path)
{
    mixers.clear();
    QJsonDocument document = GetJsonDocumentFromFilePath(path);
    ProcessMixersArray(document.object().value(QStringLiteral("mixers")).toArray());
}

QJsonDocument cMixerDawMap::GetJsonDocumentFromFilePath(const QString& path)
{
    return ReadJsonDocumentFromFile(path);
}

void cMixerDawMap::ProcessMixersArray(const QJsonArray& mixerArray)
{
    for (const QJsonValue& mixer : mixerArray)
    {
        ProcessMixerObject(mixer.toObject());
    }
}

void cMixerDawMap::ProcessMixerObject(const QJsonObject& mixer)
{
    QList<sDAWFileMap> daws;
    for (const QJsonValue& element : mixer.value(QStringLiteral("daws")).toArray())
    {
        QJsonObject daw = element.toObject();
        sDAWFileMap entry{daw.value(QStringLiteral("name")).toString(), daw.value(QStringLiteral("file")).toString()};
        if (!entry.dawName.isEmpty() && !entry.file.isEmpty())
        {
            daws.append(entry);
        }
    }
    // A mixer is listed even without a DAW, so the user sees it exists; a later
    // object of the same name replaces the earlier one whole.
    QString name = mixer.value(QStringLiteral("name")).toString();
    if (!name.isEmpty())
    {
        mixers.insert(name, daws);
    }
}

QStringList cMixerDawMap::GetMixerNames() const
{
    return mixers.keys();
}

QStringList cMixerDawMap::GetDAWNamesForMixer(const QString& mixer) const
{
    QStringList names;
    auto found = mixers.constFind(mixer);
    if (found == mixers.constEnd())
    {
        DebugErrTrace(DEBUG_LOCATION, "Unknown mixer name \"%s\"", mixer.toLocal8Bit().constData());
        return names;
    }
    for (const sDAWFileMap& daw : found.value())
    {
        names.append(daw.dawName);
    }
    return names;
}

QString cMixerDawMap::GetFilePathForMixerAndDAW(const QString& mixer, const QString& daw) const
{
    auto found = mixers.constFind(mixer);
    if (found == mixers.constEnd())
    {
        // The mixer name itself, not an empty string, as the map has always
        // answered. Nothing tells the two answers apart: either way the rule
        // file cannot be opened, and that is reported where it is loaded.
        DebugErrTrace(DEBUG_LOCATION, "Unknown mixer name \"%s\"", mixer.toLocal8Bit().constData());
        return mixer;
    }
    for (const sDAWFileMap& entry : found.value())
    {
        if (entry.dawName == daw)
        {
            return entry.file;
        }
    }
    DebugErrTrace(DEBUG_LOCATION, "Unknown DAW \"%s\" for mixer \"%s\"", daw.toLocal8Bit().constData(),
                  mixer.toLocal8Bit().constData());
    return QString();
}
