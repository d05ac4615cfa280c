// Renders the application icon, drawn in SVG, at the pixel sizes of the
// hicolor icon theme, for desktops and software centres that show PNG icons.
// Run at build time.
//
//   render-icons ICON.svg DIRECTORY SIZE...
//
// writes DIRECTORY/SIZE.png, SIZE pixels square, for each SIZE.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 4)
    {
        std::fprintf(stderr, "usage: render-icons ICON.svg DIRECTORY SIZE...\n");
        return 2;
    }
    QSvgRenderer renderer(arguments.at(1));
    if (!renderer.isValid())
    {
        std::fprintf(stderr, "render-icons: cannot read %s\n", qPrintable(arguments.at(1)));
        return 1;
    }
    const QDir directory(arguments.at(2));
    if (!directory.mkpath(QStringLiteral(".")))
    {
        std::fprintf(stderr, "render-icons: cannot make %s\n", qPrintable(arguments.at(2)));
        return 1;
    }
    for (int i = 3; i < arguments.size(); ++i)
    {
        bool isNumber = false;
        const int size = arguments.at(i).toInt(&isNumber);
        if (!isNumber || size <= 0)
        {
            std::fprintf(stderr, "render-icons: not a size: %s\n", qPrintable(arguments.at(i)));
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter);
        painter.end();
        const QString path = directory.filePath(QStringLiteral("%1.png").arg(size));
        if (!image.save(path))
        {
            std::fprintf(stderr, "render-icons: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
