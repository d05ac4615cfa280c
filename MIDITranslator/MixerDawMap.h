#ifndef MIXERDAWMAP_H
#define MIXERDAWMAP_H

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// One DAW (control protocol) a mixer type supports, and the rule file that
// translates between the two.
struct sDAWFileMap
{
    QString dawName;
    // A bare file name within the configuration directory.
    QString file;
};

// The index of the shipped rule files, read from "mixer_map.json": which mixer
// types exist, which DAWs each of them supports and which rule file serves
// each pair.
class cMixerDawMap
{
public:
    // Replaces the map's contents with the file's; a file that cannot be read
    // leaves the map empty.
    void LoadFromFilePath(const QString& path);

    QStringList GetMixerNames() const;
    QStringList GetDAWNamesForMixer(const QString& mixer) const;
    // The rule file name as written in the map, to be joined to the
    // configuration directory.
    QString GetFilePathForMixerAndDAW(const QString& mixer, const QString& daw) const;

    static QJsonDocument GetJsonDocumentFromFilePath(const QString& path);
    void ProcessMixersArray(const QJsonArray& mixers);
    void ProcessMixerObject(const QJsonObject& mixer);

private:
    QHash<QString, QList<sDAWFileMap>> mixers;
};

#endif
