#include "tools/make-manual/PdfOutline.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <vector>

namespace
{
// Binary streams hold zero bytes, where the conversion from a byte array
// alone would stop.
QString Latin1(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

// The last match of pattern in text, as its captured number, or -1.
long long LastNumber(const QByteArray& text, const char* pattern)
{
    QRegularExpressionMatchIterator matches = QRegularExpression(QLatin1String(pattern)).globalMatch(Latin1(text));
    long long number = -1;
    while (matches.hasNext())
    {
        number = matches.next().captured(1).toLongLong();
    }
    return number;
}

// The body of object "number 0 obj ... endobj".
QByteArray ObjectBody(const QByteArray& file, int number)
{
    const QByteArray start = "\n" + QByteArray::number(number) + " 0 obj";
    const int begin = file.indexOf(start);
    const int end = begin < 0 ? -1 : file.indexOf("endobj", begin);
    return end < 0 ? QByteArray() : file.mid(begin + start.size(), end - begin - start.size());
}

// A PDF text string in UTF-16 with its byte order mark, as hexadecimal digits,
// which needs no escaping.
QByteArray TextString(const QString& text)
{
    QByteArray bytes("\xFE\xFF", 2);
    for (const QChar character : text)
    {
        bytes.append(static_cast<char>(character.unicode() >> 8));
        bytes.append(static_cast<char>(character.unicode() & 0xFF));
    }
    return "<" + bytes.toHex().toUpper() + ">";
}

struct sItem
{
    int parent = -1;  // index, or -1 for the outline's root
    int previous = -1;
    int next = -1;
    int first = -1;
    int last = -1;
    int descendants = 0;
};
}

bool cPdfOutline::Append(const QString& path, const QList<sEntry>& entries, QString& error)
{
    // An outline without entries would have to point at nothing.
    if (entries.isEmpty())
    {
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
    {
        error = file.errorString();
        return false;
    }
    const QByteArray pdf = file.readAll();
    const long long rootNumber = LastNumber(pdf, "/Root (\\d+) 0 R");
    const long long infoNumber = LastNumber(pdf, "/Info (\\d+) 0 R");
    const long long size = LastNumber(pdf, "/Size (\\d+)");
    const long long previousXref = LastNumber(pdf, "startxref\\s+(\\d+)");
    const QByteArray catalog = ObjectBody(pdf, static_cast<int>(rootNumber));
    const long long pagesNumber = LastNumber(catalog, "/Pages (\\d+) 0 R");
    const QByteArray pageTree = ObjectBody(pdf, static_cast<int>(pagesNumber));
    const int kidsStart = pageTree.indexOf("/Kids");
    QList<int> pages;
    QRegularExpressionMatchIterator kids = QRegularExpression(QStringLiteral("(\\d+) 0 R"))
        .globalMatch(Latin1(pageTree.mid(kidsStart, pageTree.indexOf(']', kidsStart) - kidsStart)));
    while (kids.hasNext())
    {
        pages.append(kids.next().captured(1).toInt());
    }
    if (rootNumber < 0 || size < 0 || previousXref < 0 || pagesNumber < 0 || kidsStart < 0 || pages.isEmpty())
    {
        error = QStringLiteral("no trailer, catalog or page tree as Qt writes them");
        return false;
    }

    // The tree: each entry hangs under the nearest earlier one of a lower level.
    std::vector<sItem> items(static_cast<size_t>(entries.size()));
    sItem root;
    for (int index = 0; index < entries.size(); ++index)
    {
        int parent = index - 1;
        while (parent >= 0 && entries.at(parent).level >= entries.at(index).level)
        {
            parent = items[static_cast<size_t>(parent)].parent;
        }
        sItem& item = items[static_cast<size_t>(index)];
        sItem& owner = parent < 0 ? root : items[static_cast<size_t>(parent)];
        item.parent = parent;
        item.previous = owner.last;
        if (owner.last >= 0)
        {
            items[static_cast<size_t>(owner.last)].next = index;
        }
        else
        {
            owner.first = index;
        }
        owner.last = index;
        for (int ancestor = parent; ancestor >= 0; ancestor = items[static_cast<size_t>(ancestor)].parent)
        {
            ++items[static_cast<size_t>(ancestor)].descendants;
        }
    }

    // Objects from "size" on: the outline, then one per entry.
    const long long outlineNumber = size;
    auto reference = [outlineNumber](int index) {
        return QByteArray::number(index < 0 ? outlineNumber : outlineNumber + 1 + index) + " 0 R";
    };
    QByteArray update = "\n";
    std::vector<long long> offsets;
    auto addObject = [&](long long number, const QByteArray& body) {
        offsets.push_back(pdf.size() + update.size());
        update += QByteArray::number(number) + " 0 obj\n" + body + "\nendobj\n";
    };
    const long long catalogOffset = pdf.size() + update.size();
    update += QByteArray::number(rootNumber) + " 0 obj\n<< /Type /Catalog /Pages " + QByteArray::number(pagesNumber)
        + " 0 R /Outlines " + reference(-1) + " /PageMode /UseOutlines >>\nendobj\n";
    addObject(outlineNumber, "<< /Type /Outlines /First " + reference(root.first) + " /Last " + reference(root.last)
        + " /Count " + QByteArray::number(entries.size()) + " >>");
    for (int index = 0; index < entries.size(); ++index)
    {
        const sEntry& entry = entries.at(index);
        const sItem& item = items[static_cast<size_t>(index)];
        QByteArray body = "<< /Title " + TextString(entry.title) + " /Parent " + reference(item.parent);
        body += item.previous >= 0 ? " /Prev " + reference(item.previous) : QByteArray();
        body += item.next >= 0 ? " /Next " + reference(item.next) : QByteArray();
        if (item.first >= 0)
        {
            body += " /First " + reference(item.first) + " /Last " + reference(item.last) + " /Count "
                + QByteArray::number(item.descendants);
        }
        const int page = pages.at(qBound(0, entry.page, pages.size() - 1));
        body += " /Dest [" + QByteArray::number(page) + " 0 R /XYZ 0 " + QByteArray::number(entry.top, 'f', 2)
            + " null] >>";
        addObject(outlineNumber + 1 + index, body);
    }

    // Cross-reference entries are 20 bytes each: offset, generation, in use.
    auto xrefEntry = [](long long offset) { return QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n"; };
    const long long xrefOffset = pdf.size() + update.size();
    update += "xref\n" + QByteArray::number(rootNumber) + " 1\n" + xrefEntry(catalogOffset);
    update += QByteArray::number(outlineNumber) + " " + QByteArray::number(static_cast<long long>(offsets.size())) + "\n";
    for (const long long offset : offsets)
    {
        update += xrefEntry(offset);
    }
    update += "trailer\n<< /Size " + QByteArray::number(outlineNumber + static_cast<long long>(offsets.size()))
        + " /Root " + QByteArray::number(rootNumber) + " 0 R"
        + (infoNumber >= 0 ? " /Info " + QByteArray::number(infoNumber) + " 0 R" : QByteArray())
        + " /Prev " + QByteArray::number(previousXref) + " >>\nstartxref\n" + QByteArray::number(xrefOffset)
        + "\n%%EOF\n";
    if (file.write(update) != update.size() || !file.flush())
    {
        error = file.errorString();
        return false;
    }
    return true;
}
