#ifndef MIDIMONITORMODEL_H
#define MIDIMONITORMODEL_H

#include "Common/MIDI/MIDITrafficListener.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QElapsedTimer>
#include <QPointer>
#include <QString>

#include <deque>

class cMIDITranslatorConfiguration;

// The MIDI monitor's record of the traffic, one row per message read and per
// write made: time, direction, port, bytes, what they say and the rule
// involved. The record is kept while MIDI flows, so it does no more there
// than copy shared data into a pending row; the text is made only for rows
// that are shown or saved, and pending rows reach the view in batches
// (ShowPendingRows), never one at a time. The history is bounded, so hours of
// traffic never grow memory: the oldest rows make room for new ones.
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

    // Hands the rows recorded since the last call to the view, all at once.
    void ShowPendingRows();
    // Forgets every row and starts the clock again.
    void Clear();
    // A shown row as one line of text, its columns separated by tabs, with
    // every byte of its message.
    QString GetRowText(int row) const;

private:
    struct sRow
    {
        qint64 time = 0;
        bool outgoing = false;
        QString port;
        QString alias;
        QByteArray bytes;
        // The rule that wrote the bytes, or the rules an incoming message
        // took part in; empty for a message no rule wanted.
        QString rule;
    };

    void AddRow(sRow row);
    void MarkMatchedMessages(size_t matchedByteCount, const QString& ruleName);
    // With the bytes in hex up to maximumBytes.
    QString GetCellText(const sRow& row, int column, int maximumBytes) const;

    QPointer<cMIDITranslatorConfiguration> configuration;
    QElapsedTimer clock;
    std::deque<sRow> shownRows;
    std::deque<sRow> pendingRows;
    // Who read the newest message and which rule fired last: the writes and
    // matches that follow belong to them.
    QString lastInputName;
    QString lastRuleName;
};

#endif
