#ifndef MIDIMONITORMODEL_H
#define MIDIMONITORMODEL_H

#include "Common/MIDI/MIDITrafficListener.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QHash>
#include <QPointer>
#include <QString>

#include <deque>

class cMIDITranslatorConfiguration;

// The MIDI monitor's record of the traffic, one row per message read, per
// write made and per message given back to a console: the time of day, direction, port, bytes, what they say and the
// rule involved. A port is named by its role in the rule file first, then by
// what it leads to ("Mixer In (TCP 10.0.0.5)"). The record is kept while MIDI
// flows, so it does no more there than copy shared data into a pending row;
// the text is made only for rows that are shown or saved, and pending rows
// reach the view in batches (ShowPendingRows), never one at a time. The
// history is bounded, so hours of traffic never grow memory: the oldest rows
// make room for new ones. Realtime messages (clock, Active Sensing), which
// would flood it, are left out unless asked for.
class cMIDIMonitorModel : public QAbstractTableModel, public cMIDITrafficListener
{
    Q_OBJECT
public:
    enum eColumn
    {
        TIME_COLUMN,
        DIRECTION_COLUMN,
        PORT_COLUMN,
        BYTES_COLUMN,
        MESSAGE_COLUMN,
        RULE_COLUMN,
        COLUMN_COUNT
    };

    static const int MAXIMUM_ROWS = 5000;

    // Rule names and port aliases come from the configuration; not owned.
    explicit cMIDIMonitorModel(cMIDITranslatorConfiguration* configuration, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    void MIDIMessageRead(const QString& inputName, const QByteArray& message) override;
    void MIDIRuleTriggered(int identifier, const std::vector<unsigned char>& matchedBytes) override;
    void MIDIMessageWritten(const QString& outputName, const QByteArray& message) override;
    // An outgoing row whose rule column says "restored".
    void MIDIMessageRestored(const QString& outputName, const QByteArray& message) override;

    // Hands the rows recorded since the last call to the view, all at once.
    void ShowPendingRows();
    void Clear();
    void SetHidingRealtime(bool hiding);
    // A shown row as one line of text, its columns separated by tabs, with
    // every byte of its message; and the column titles as such a line.
    QString GetRowText(int row) const;
    QString GetHeaderText() const;

private:
    struct sRow
    {
        // Milliseconds since the epoch.
        qint64 time = 0;
        bool outgoing = false;
        QString port;
        // Role and port, as shown.
        QString where;
        QByteArray bytes;
        // The rule that wrote the bytes, or the rules an incoming message
        // took part in; empty for a message no rule wanted.
        QString rule;
    };

    void AddRow(bool outgoing, const QString& port, const QByteArray& bytes, const QString& rule);
    QString GetWhere(const QString& port, bool outgoing);
    void MarkMatchedMessages(size_t matchedByteCount, const QString& ruleName);
    // With the bytes in hex up to maximumBytes.
    QString GetCellText(const sRow& row, int column, int maximumBytes) const;

    QPointer<cMIDITranslatorConfiguration> configuration;
    bool hidingRealtime = true;
    // Each port's role and address, as found for the rows of one batch:
    // they change only with the rule file or the connection.
    QHash<QString, QString> inputWhere;
    QHash<QString, QString> outputWhere;
    std::deque<sRow> shownRows;
    std::deque<sRow> pendingRows;
    // Who read the newest message and which rule fired last: the writes and
    // matches that follow belong to them.
    QString lastInputName;
    QString lastRuleName;
};

#endif
