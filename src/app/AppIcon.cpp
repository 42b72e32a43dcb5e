#include "app/AppIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace vm {

QImage DrawAppIcon(int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 64.0, size / 64.0);
    // The tile.
    QLinearGradient tile(0, 0, 0, 64);
    tile.setColorAt(0, QColor(0x2B, 0x7A, 0xB8));
    tile.setColorAt(1, QColor(0x16, 0x3F, 0x6E));
    p.setPen(Qt::NoPen);
    p.setBrush(tile);
    p.drawRoundedRect(QRectF(2, 2, 60, 60), 12, 12);
    // The picture: sky, sun and two hills.
    const QRectF frame(12, 14, 40, 32);
    QLinearGradient sky(0, frame.top(), 0, frame.bottom());
    sky.setColorAt(0, QColor(0xFF, 0xF4, 0xD6));
    sky.setColorAt(1, QColor(0xFF, 0xC9, 0x7A));
    p.setBrush(sky);
    p.drawRect(frame);
    p.setBrush(QColor(0xF2, 0x6B, 0x38));
    p.drawEllipse(QPointF(40, 23), 4.5, 4.5);
    QPainterPath hills;
    hills.moveTo(12, 46);
    hills.lineTo(24, 30);
    hills.lineTo(32, 39);
    hills.lineTo(38, 33);
    hills.lineTo(52, 46);
    hills.closeSubpath();
    p.setBrush(QColor(0x3C, 0x8D, 0x4F));
    p.drawPath(hills);
    // The selection outline, black and white dashes.
    const QRectF ants(8.5, 10.5, 47, 39);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(Qt::white, 2));
    p.drawRect(ants);
    QPen dash(QColor(0x10, 0x10, 0x10), 2);
    dash.setDashPattern({2, 2});
    p.setPen(dash);
    p.drawRect(ants);
    return image;
}

QIcon MakeAppIcon() {
    QIcon icon;
    for (int s : {16, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(QPixmap::fromImage(DrawAppIcon(s)));
    return icon;
}

} // namespace vm
