// Build-time helper: renders the application's SVG icon to the PNG sizes of the
// hicolor icon theme, for desktops and menus that do not read SVG icons.
//
//   kdx_render_icon ICON.svg OUTDIR SIZE...   writes OUTDIR/<SIZE>x<SIZE>/kdxtool.png
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: kdx_render_icon ICON.svg OUTDIR SIZE...\n");
        return 2;
    }
    // No display is needed (or wanted) on a build machine.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
    if (!svg.isValid()) {
        std::fprintf(stderr, "kdx_render_icon: %s is not a readable SVG image\n", argv[1]);
        return 1;
    }
    const QString outDir = QString::fromLocal8Bit(argv[2]);
    for (int i = 3; i < argc; ++i) {
        char* end = nullptr;
        const long size = std::strtol(argv[i], &end, 10);
        if (*end != '\0' || size < 8 || size > 1024) {
            std::fprintf(stderr, "kdx_render_icon: '%s' is not an icon size (8 to 1024)\n", argv[i]);
            return 2;
        }
        const int side = static_cast<int>(size);
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            svg.render(&painter, QRectF(0, 0, side, side));
        }
        const QString dir = QString("%1/%2x%2").arg(outDir).arg(side);
        const QString path = dir + "/kdxtool.png";
        if (!QDir().mkpath(dir) || !image.save(path, "PNG")) {
            std::fprintf(stderr, "kdx_render_icon: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
