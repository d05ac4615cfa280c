#include "Application/MIDIMonitorModel.h"

#include "Common/MIDI/Text/HexText.h"
#include "Common/MIDI/Text/MIDIMessageDescription.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"
#include "Network/TCPMIDIInptOutput.h"

#include <QDateTime>
#include <QFont>
#include <QStringList>

#include <iterator>
#include <limits>

namespace
{
const QString NO_RULE_TEXT = QStringLiteral("no rule");

// How far back a rule's match is looked for among the rows: further than any
// pattern reaches, even with other ports' traffic in between, yet short
// enough that a match whose start was never recorded costs little.
const size_t MAXIMUM_MATCH_SEARCH_ROWS = 64;

// A row on screen shows the start of a long message only: every repaint
// formats the visible rows, and a bulk dump would cost it its whole length.
const int MAXIMUM_SHOWN_BYTES = 32;

// System realtime messages are single bytes from F8 up: clock, start, stop,
// Active Sensing and the like.
bool IsRealtime(const unsigned char* bytes, size_t size)
{
    return size == 1 && bytes[0] >= 0xF8;
}
}

cMIDIMonitorModel::cMIDIMonitorModel(cMIDITranslatorConfiguration* configuration, QObject* parent)
    : QAbstractTableModel(parent), configuration(configuration)
{
}

int cMIDIMonitorModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(shownRows.size());
}

int cMIDIMonitorModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : COLUMN_COUNT;
}

QVariant cMIDIMonitorModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || static_cast<size_t>(index.row()) >= shownRows.size())
    {
        return QVariant();
    }
    const sRow& row = shownRows[static_cast<size_t>(index.row())];
    switch (role)
    {
    case Qt::DisplayRole:
    // Long NRPN sequences and port names do not fit their columns.
    case Qt::ToolTipRole:
        return GetCellText(row, index.column(), MAXIMUM_SHOWN_BYTES);
    case Qt::TextAlignmentRole:
        return index.column() == TIME_COLUMN ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::FontRole:
        if (index.column() == RULE_COLUMN && !row.outgoing && row.rule.isEmpty())
        {
            QFont font;
            font.setItalic(true);
            return font;
        }
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant cMIDIMonitorModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char* const HEADERS[COLUMN_COUNT] = {"Time", "Dir", "Port", "Bytes", "Message", "Rule"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= COLUMN_COUNT)
    {
        return QVariant();
    }
    return tr(HEADERS[section]);
}

void cMIDIMonitorModel::MIDIMessageRead(const QString& inputName, const QByteArray& message)
{
    lastInputName = inputName;
    AddRow(false, inputName, message, QString());
}

void cMIDIMonitorModel::MIDIRuleTriggered(int identifier, const std::vector<unsigned char>& matchedBytes)
{
    lastRuleName = configuration->GetMIDITranslatorRules().at(identifier).GetName();
    // A hidden message has no row of its own to mark, and must not take an
    // older message's.
    if (!hidingRealtime || !IsRealtime(matchedBytes.data(), matchedBytes.size()))
    {
        MarkMatchedMessages(matchedBytes.size(), lastRuleName);
    }
}

void cMIDIMonitorModel::MIDIMessageWritten(const QString& outputName, const QByteArray& message)
{
    AddRow(true, outputName, message, lastRuleName);
}

void cMIDIMonitorModel::MIDIMessageRestored(const QString& outputName, const QByteArray& message)
{
    AddRow(true, outputName, message, tr("restored"));
}

void cMIDIMonitorModel::ShowPendingRows()
{
    if (pendingRows.empty())
    {
        return;
    }
    // Pending rows never outnumber the bound, so only shown rows make room.
    const size_t total = shownRows.size() + pendingRows.size();
    const size_t excess = total > static_cast<size_t>(MAXIMUM_ROWS) ? total - MAXIMUM_ROWS : 0;
    if (excess > 0)
    {
        beginRemoveRows(QModelIndex(), 0, static_cast<int>(excess) - 1);
        shownRows.erase(shownRows.begin(), shownRows.begin() + static_cast<std::ptrdiff_t>(excess));
        endRemoveRows();
    }
    const int first = static_cast<int>(shownRows.size());
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(pendingRows.size()) - 1);
    std::move(pendingRows.begin(), pendingRows.end(), std::back_inserter(shownRows));
    pendingRows.clear();
    endInsertRows();
    // Found afresh for the next batch: a new rule file or connection may
    // have changed them meanwhile.
    inputWhere.clear();
    outputWhere.clear();
}

void cMIDIMonitorModel::Clear()
{
    beginResetModel();
    shownRows.clear();
    pendingRows.clear();
    endResetModel();
}

void cMIDIMonitorModel::SetHidingRealtime(bool hiding)
{
    hidingRealtime = hiding;
}

QString cMIDIMonitorModel::GetRowText(int row) const
{
    QStringList cells;
    for (int column = 0; column < COLUMN_COUNT; ++column)
    {
        cells.append(GetCellText(shownRows.at(static_cast<size_t>(row)), column, std::numeric_limits<int>::max()));
    }
    return cells.join(QLatin1Char('\t'));
}

QString cMIDIMonitorModel::GetHeaderText() const
{
    QStringList titles;
    for (int column = 0; column < COLUMN_COUNT; ++column)
    {
        titles.append(headerData(column, Qt::Horizontal).toString());
    }
    return titles.join(QLatin1Char('\t'));
}

void cMIDIMonitorModel::AddRow(bool outgoing, const QString& port, const QByteArray& bytes, const QString& rule)
{
    if (hidingRealtime && IsRealtime(reinterpret_cast<const unsigned char*>(bytes.constData()),
                                     static_cast<size_t>(bytes.size())))
    {
        return;
    }
    if (pendingRows.size() == static_cast<size_t>(MAXIMUM_ROWS))
    {
        pendingRows.pop_front();
    }
    pendingRows.push_back({QDateTime::currentMSecsSinceEpoch(), outgoing, port, GetWhere(port, outgoing), bytes, rule});
}

QString cMIDIMonitorModel::GetWhere(const QString& port, bool outgoing)
{
    QHash<QString, QString>& known = outgoing ? outputWhere : inputWhere;
    const auto found = known.constFind(port);
    if (found != known.constEnd())
    {
        return *found;
    }
    // The link to the mixer is known to the user by the address it goes to.
    QString target = port;
    if (port == QLatin1String(TCP_MIDI_PORT_NAME))
    {
        const auto* link = dynamic_cast<const cTCPMIDIInptOutput*>(
            configuration->GetSystemMIDIConfiguration()->GetMIDIInput(port));
        target = link ? QStringLiteral("TCP %1").arg(link->GetHostAddress().toString()) : QStringLiteral("TCP");
    }
    const QString alias =
        outgoing ? configuration->GetOutputAliasOfPortName(port) : configuration->GetInputAliasOfPortName(port);
    const QString where = alias.isEmpty() || alias == port ? target : QStringLiteral("%1 (%2)").arg(alias, target);
    known.insert(port, where);
    return where;
}

// A pattern may span several messages (an NRPN sequence is four), all read
// from the same input just before the rule fired, newest last.
void cMIDIMonitorModel::MarkMatchedMessages(size_t matchedByteCount, const QString& ruleName)
{
    const size_t rowCount = shownRows.size() + pendingRows.size();
    size_t covered = 0;
    for (size_t age = 0; age < rowCount && age < MAXIMUM_MATCH_SEARCH_ROWS && covered < matchedByteCount; ++age)
    {
        const size_t position = rowCount - 1 - age;
        const bool shown = position < shownRows.size();
        sRow& row = shown ? shownRows[position] : pendingRows[position - shownRows.size()];
        if (row.outgoing || row.port != lastInputName)
        {
            continue;
        }
        covered += static_cast<size_t>(row.bytes.size());
        row.rule = row.rule.isEmpty() ? ruleName : row.rule + QStringLiteral(", ") + ruleName;
        if (shown)
        {
            const QModelIndex cell = index(static_cast<int>(position), RULE_COLUMN);
            emit dataChanged(cell, cell);
        }
    }
}

QString cMIDIMonitorModel::GetCellText(const sRow& row, int column, int maximumBytes) const
{
    switch (column)
    {
    case TIME_COLUMN:
        return QDateTime::fromMSecsSinceEpoch(row.time).toString(QStringLiteral("hh:mm:ss.zzz"));
    case DIRECTION_COLUMN:
        return row.outgoing ? QStringLiteral("out") : QStringLiteral("in");
    case PORT_COLUMN:
        return row.where;
    case BYTES_COLUMN:
        return cHexText::FormatAtMost(row.bytes, maximumBytes);
    case MESSAGE_COLUMN:
        return cMIDIMessageDescription::Describe(row.bytes);
    default:
        return row.outgoing || !row.rule.isEmpty() ? row.rule : NO_RULE_TEXT;
    }
}
