// Turns the Markdown user manual into the PDF that the tray menu's "&Help"
// opens. Run at build time, so the repository holds only the Markdown source.
//
//   make-manual MANUAL.md OUTPUT.pdf
//
// Images are looked up relative to the Markdown file and scaled down to the
// text width, so screenshots of any size fit the page. With SOURCE_DATE_EPOCH
// set, the PDF carries that date instead of the time it was made.

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
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

// The document adds a margin of its own inside the page's.
const qreal PAGE_MARGIN_MM = 10.0;

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
// column is shrunk to fit it, keeping its proportions. The image is added to
// the document as a resource of its own because printing lays out a copy of
// the document, which keeps added resources but does not look files up again.
void FitImageToWidth(QTextDocument& document, QTextImageFormat& format, qreal textWidth)
{
    const QImage image = document.resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>();
    if (image.isNull())
    {
        std::fprintf(stderr, "make-manual: missing image %s\n", qPrintable(format.name()));
        return;
    }
    document.addResource(QTextDocument::ImageResource, QUrl(format.name()), image);
    const qreal width = qMin<qreal>(image.width(), textWidth);
    format.setWidth(width);
    format.setHeight(image.height() * width / image.width());
}

// Of all text, the Markdown reader gives only code a font family: the
// platform's fixed-width font, which the offscreen platform that renders the
// manual reports as a proportional one; code is set in a real monospace face
// instead, and code blocks are indented and shaded so that commands stand out
// from the prose.
void AdjustFormats(QTextDocument& document, qreal textWidth)
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

    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    {
        if (block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage))
        {
            QTextBlockFormat blockFormat = block.blockFormat();
            blockFormat.setIndent(1);
            blockFormat.setBackground(QColor(0xee, 0xf1, 0xf3));
            cursor.setPosition(block.position());
            cursor.setBlockFormat(blockFormat);
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
                format.setFontFamilies({QStringLiteral("DejaVu Sans Mono")});
            else
                continue;
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
        }
    }
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

    QPdfWriter writer(arguments.at(2));
    writer.setTitle(QStringLiteral("Tessera User Manual"));
    writer.setCreator(QStringLiteral("Tessera make-manual"));
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                     QMarginsF(PAGE_MARGIN_MM, PAGE_MARGIN_MM, PAGE_MARGIN_MM, PAGE_MARGIN_MM),
                                     QPageLayout::Millimeter));

    QTextDocument document;
    document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(arguments.at(1)).absolutePath() + QLatin1Char('/')));
    document.setDefaultFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    document.setMarkdown(markdown);

    // Layout happens in the writer's device pixels, so the text width is the
    // painted page width in those units.
    const QRectF paintRect = writer.pageLayout().paintRectPixels(writer.resolution());
    AdjustFormats(document, paintRect.width() * 0.8);

    document.print(&writer);
    return StampCreationDate(arguments.at(2)) ? 0 : 1;
}
