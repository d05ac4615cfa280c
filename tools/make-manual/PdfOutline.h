#ifndef PDFOUTLINE_H
#define PDFOUTLINE_H

#include <QList>
#include <QString>

// Adds bookmarks (the document outline a PDF viewer shows beside the pages)
// to a PDF that Qt's PDF writer made, which has no way to write them itself.
// The file is extended in place by an incremental update, as PDF allows: new
// objects for the outline and a new catalog that points at it are appended
// after the end of the file, with their own cross-reference section; nothing
// before is changed.
class cPdfOutline
{
public:
    struct sEntry
    {
        QString title;
        // 1 for the top level; an entry belongs under the nearest entry
        // before it of a lower level.
        int level = 1;
        // Counted from 0.
        int page = 0;
        // Where the entry's heading begins: points from the page's bottom.
        qreal top = 0;
    };

    // False, with the reason in error, when the file is not one this can
    // read (its trailer, catalog or page tree not where Qt writes them).
    static bool Append(const QString& path, const QList<sEntry>& entries, QString& error);
};

#endif
