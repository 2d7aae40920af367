/// \file
/// Draws an icon in the sizes that desktops ask for: runebook-make-icon IN.svg OUT.png SIZE, size in pixels.
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv); // no fonts, no windows: shapes need neither
    const QStringList arguments = QCoreApplication::arguments();
    const int size = arguments.size() == 4 ? arguments.at(3).toInt() : 0;
    if (size < 1 || size > 4096) {
        std::fputs("usage: runebook-make-icon IN.svg OUT.png SIZE\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(arguments.at(1));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "%s: not a drawing that can be read\n", argv[1]);
        return 1;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    if (!image.save(arguments.at(2), "PNG")) {
        std::fprintf(stderr, "%s: cannot be written\n", argv[2]);
        return 1;
    }
    return 0;
}
