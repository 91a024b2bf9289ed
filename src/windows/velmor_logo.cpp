#include "windows/velmor_logo.h"

#include <QPainter>
#include <QSvgRenderer>

// The resources live in a static library, so nothing registers them unless asked.
static void initKdxResources() { Q_INIT_RESOURCE(kdx); }

namespace kdx {

namespace {

QPixmap render(const QString& resource, QSize size, qreal dpr)
{
    static const bool registered = (initKdxResources(), true);
    (void)registered;
    QPixmap pixmap(size * dpr);
    pixmap.setDevicePixelRatio(dpr);
    pixmap.fill(Qt::transparent);
    QSvgRenderer svg(resource);
    if (!svg.isValid()) return pixmap;
    svg.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return pixmap;
}

} // namespace

QPixmap velmorLogo(QSize size, qreal devicePixelRatio)
{
    return render(QStringLiteral(":/kdx/velmor-logo.svg"), size, devicePixelRatio);
}

QIcon kdxToolIcon()
{
    QIcon icon;
    for (int side : {16, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(render(QStringLiteral(":/kdx/kdxtool.svg"), QSize(side, side), 1.0));
    return icon;
}

} // namespace kdx
