// Turns the Markdown user manual into the PDF that the tray menu's "&Help"
// opens. Run at build time, so the repository holds only the Markdown source.
//
//   make-manual MANUAL.md OUTPUT.pdf
//
// Images are looked up relative to the Markdown file and scaled down to the
// text width, so screenshots of any size fit the page. Code blocks keep their
// lines whole, as they are copied from the PDF: a line too long for the page
// is an error. Each heading is a bookmark. With SOURCE_DATE_EPOCH set, the PDF
// carries that date instead of the time it was made.

#include "tools/make-manual/PdfOutline.h"

#include <QAbstractTextDocumentLayout>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextImageFormat>
#include <QTextTable>
#include <QUrl>

#include <cstdio>

namespace
{

const qreal PAGE_MARGIN_MM = 20.0;
// Room at the foot of each page for its number.
const qreal FOOTER_POINTS = 18.0;
const qreal POINTS_PER_INCH = 72.0;
const int CODE_POINT_SIZE = 9;

bool ReadMarkdown(const QString& path, QString& markdown)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        std::fprintf(stderr, "make-manual: cannot read %s\n", qPrintable(path));
        return false;
    }
    markdown = QString::fromUtf8(file.readAll());
    return true;
}

// Markdown has no way to give an image's size, so an image wider than the text
// column is shrunk to fit it, keeping its proportions.
void FitImageToWidth(QTextDocument& document, QTextImageFormat& format, qreal textWidth)
{
    const QImage image = document.resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>();
    if (image.isNull())
    {
        std::fprintf(stderr, "make-manual: missing image %s\n", qPrintable(format.name()));
        return;
    }
    const qreal width = qMin<qreal>(image.width(), textWidth);
    format.setWidth(width);
    format.setHeight(image.height() * width / image.width());
}

// Of all text, the Markdown reader gives only code a font family: the
// platform's fixed-width font, which the offscreen platform that renders the
// manual reports as a proportional one; code is set in a real monospace face
// instead, and code blocks are indented and shaded so that commands stand out
// from the prose. Their lines are never broken: a JSON example copied from
// the page must stay JSON. Returns false when a code line does not fit the
// text width.
bool AdjustFormats(QTextDocument& document, qreal textWidth)
{
    // Tables come with a doubled frame and no room in their cells.
    for (QTextFrame* frame : document.rootFrame()->childFrames())
    {
        QTextTable* table = qobject_cast<QTextTable*>(frame);
        if (!table)
            continue;
        QTextTableFormat tableFormat = table->format();
        tableFormat.setBorderCollapse(true);
        tableFormat.setBorder(1);
        tableFormat.setBorderBrush(QColor(0x9a, 0xa5, 0xad));
        tableFormat.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        tableFormat.setCellPadding(4);
        table->setFormat(tableFormat);
    }

    const QFont codeFont(QStringLiteral("DejaVu Sans Mono"), CODE_POINT_SIZE);
    bool fits = true;
    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    {
        if (block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage))
        {
            QTextBlockFormat blockFormat = block.blockFormat();
            blockFormat.setIndent(1);
            blockFormat.setBackground(QColor(0xee, 0xf1, 0xf3));
            blockFormat.setNonBreakableLines(true);
            cursor.setPosition(block.position());
            cursor.setBlockFormat(blockFormat);
            if (QFontMetricsF(codeFont).horizontalAdvance(block.text()) > textWidth - document.indentWidth())
            {
                std::fprintf(stderr, "make-manual: a code line is too long for the page: %s\n",
                             qPrintable(block.text()));
                fits = false;
            }
        }
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it)
        {
            const QTextFragment fragment = it.fragment();
            QTextCharFormat format = fragment.charFormat();
            if (format.isImageFormat())
            {
                QTextImageFormat imageFormat = format.toImageFormat();
                FitImageToWidth(document, imageFormat, textWidth);
                format = imageFormat;
            }
            else if (format.hasProperty(QTextFormat::FontFamilies))
            {
                format.setFontFamilies({QStringLiteral("DejaVu Sans Mono")});
                if (block.blockFormat().nonBreakableLines())
                    format.setFontPointSize(CODE_POINT_SIZE);
            }
            else
                continue;
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
        }
    }
    return fits;
}

// The PDF writer dates the document with the current time. A build that
// gives a date of its own (SOURCE_DATE_EPOCH, as reproducible builds do) gets
// it written over that one, in UTC and so with the same length, which keeps
// the file's table of byte offsets true.
bool StampCreationDate(const QString& path)
{
    bool isNumber = false;
    const qint64 epoch = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&isNumber);
    if (!isNumber)
        return true;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
    {
        std::fprintf(stderr, "make-manual: cannot rewrite %s\n", qPrintable(path));
        return false;
    }
    const QByteArray pdf = file.readAll();
    const QByteArray key = "/CreationDate (D:";
    const QByteArray date =
        QDateTime::fromSecsSinceEpoch(epoch).toUTC().toString(QStringLiteral("yyyyMMddHHmmss'Z)'")).toLatin1();
    const auto at = pdf.indexOf(key);
    if (at < 0 || pdf.mid(at + key.size() + date.size() - 2, 2) != "Z)")
    {
        std::fprintf(stderr, "make-manual: %s has no creation date in UTC\n", qPrintable(path));
        return false;
    }
    return file.seek(at + key.size()) && file.write(date) == date.size();
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3)
    {
        std::fprintf(stderr, "usage: make-manual MANUAL.md OUTPUT.pdf\n");
        return 2;
    }
    QString markdown;
    if (!ReadMarkdown(arguments.at(1), markdown))
        return 1;

    const QPageLayout pageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                 QMarginsF(PAGE_MARGIN_MM, PAGE_MARGIN_MM, PAGE_MARGIN_MM, PAGE_MARGIN_MM),
                                 QPageLayout::Millimeter);
    // The document is laid out in pixels of the screen's resolution, which
    // its fonts and images are measured in, one page below the other; each
    // page's printable area less the footer holds one page of it.
    const qreal dpi = qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchY());
    const QRectF printable = pageLayout.paintRect(QPageLayout::Point);
    const QSizeF pageSize(printable.width() * dpi / POINTS_PER_INCH,
                          (printable.height() - FOOTER_POINTS) * dpi / POINTS_PER_INCH);

    QTextDocument document;
    document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(arguments.at(1)).absolutePath() + QLatin1Char('/')));
    document.setDefaultFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    document.setMarkdown(markdown);
    document.setPageSize(pageSize);
    if (!AdjustFormats(document, pageSize.width() - 2 * document.documentMargin()))
        return 1;

    // Where each heading lands, for its bookmark: the page, and the height
    // of its top above the page's bottom edge, in points.
    QList<cPdfOutline::sEntry> bookmarks;
    const qreal mediaHeight = pageLayout.fullRect(QPageLayout::Point).height();
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    {
        if (block.blockFormat().headingLevel() > 0)
        {
            const qreal top = document.documentLayout()->blockBoundingRect(block).top();
            const int page = static_cast<int>(top / pageSize.height());
            bookmarks.append({block.text(), block.blockFormat().headingLevel(), page,
                              mediaHeight - printable.top() - (top - page * pageSize.height()) * POINTS_PER_INCH / dpi});
        }
    }

    {
        QPdfWriter writer(arguments.at(2));
        writer.setTitle(QStringLiteral("Tessera User Manual"));
        writer.setCreator(QStringLiteral("Tessera make-manual"));
        writer.setPageLayout(pageLayout);
        QPainter painter(&writer);
        painter.scale(writer.resolution() / dpi, writer.resolution() / dpi);
        painter.setFont(document.defaultFont());
        for (int page = 0; page < document.pageCount(); ++page)
        {
            if (page > 0)
                writer.newPage();
            const QRectF area(QPointF(0, page * pageSize.height()), pageSize);
            painter.save();
            painter.translate(0, -area.top());
            document.drawContents(&painter, area);
            painter.restore();
            painter.drawText(QRectF(0, pageSize.height(), pageSize.width(), FOOTER_POINTS * dpi / POINTS_PER_INCH),
                             Qt::AlignRight | Qt::AlignBottom, QString::number(page + 1));
        }
    }

    if (!StampCreationDate(arguments.at(2)))
        return 1;
    QString error;
    if (!cPdfOutline::Append(arguments.at(2), bookmarks, error))
    {
        std::fprintf(stderr, "make-manual: cannot add bookmarks to %s: %s\n", qPrintable(arguments.at(2)),
                     qPrintable(error));
        return 1;
    }
    return 0;
}
