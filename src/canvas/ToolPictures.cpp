#include "canvas/ToolPictures.h"

#include <QConicalGradient>
#include <QHash>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <functional>

namespace vm {

namespace {

const QColor Ink(0x30, 0x30, 0x30);
const QColor Accent(0x1E, 0x6F, 0xD0);
const QColor Paint(0xE0, 0x40, 0x30);

// Pictures are drawn on a 24-unit grid at twice the density.
constexpr int PictureSize = 24;
constexpr int PictureScale = 2;

QPen InkPen(double width = 1.5, Qt::PenStyle style = Qt::SolidLine) {
    QPen pen(Ink, width, style, Qt::RoundCap, Qt::RoundJoin);
    return pen;
}

QPen DashPen() {
    QPen pen(Ink, 1.5, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setDashPattern({2, 1.5});
    return pen;
}

QPainterPath HandPath() {
    QPainterPath hand;
    hand.setFillRule(Qt::WindingFill);
    hand.addRoundedRect(QRectF(6, 10, 13, 11), 4, 4);
    hand.addRoundedRect(QRectF(6, 4, 3, 10), 1.5, 1.5);
    hand.addRoundedRect(QRectF(9.5, 2, 3, 12), 1.5, 1.5);
    hand.addRoundedRect(QRectF(13, 3, 3, 11), 1.5, 1.5);
    hand.addRoundedRect(QRectF(16.5, 5, 3, 10), 1.5, 1.5);
    QPainterPath thumb;
    thumb.addRoundedRect(QRectF(-1.5, -6, 3, 9), 1.5, 1.5);
    QTransform t;
    t.translate(5.5, 15);
    t.rotate(-40);
    hand.addPath(t.map(thumb));
    return hand.simplified();
}

QPainterPath BucketPath() {
    QPainterPath body;
    body.addRect(QRectF(-5.5, -5.5, 11, 11));
    QTransform t;
    t.translate(11, 12);
    t.rotate(-35);
    return t.map(body);
}

void DrawMagnifier(QPainter& p, const QString& sign) {
    p.setPen(InkPen(1.8));
    p.setBrush(QColor(0xE8, 0xF1, 0xFC));
    p.drawEllipse(QPointF(10, 10), 6.5, 6.5);
    p.setPen(InkPen(3.2));
    p.drawLine(QPointF(15, 15), QPointF(21, 21));
    p.setPen(InkPen(1.6));
    if (sign == QLatin1String("+") || sign == QLatin1String("-")) p.drawLine(QPointF(7, 10), QPointF(13, 10));
    if (sign == QLatin1String("+")) p.drawLine(QPointF(10, 7), QPointF(10, 13));
}

// Two overlapping squares of the combine buttons, with the part that the
// mode keeps filled.
void DrawCombine(QPainter& p, int mode) {
    QPainterPath a, b;
    a.addRect(QRectF(3, 3, 12, 12));
    b.addRect(QRectF(9, 9, 12, 12));
    QPainterPath filled;
    switch (mode) {
    case 0:
        filled = QPainterPath();
        filled.addRect(QRectF(5, 5, 14, 14));
        break;
    case 1:
        filled = a.united(b);
        break;
    case 2:
        filled = a.subtracted(b);
        break;
    default:
        filled = a.intersected(b);
        break;
    }
    p.setBrush(Accent.lighter(150));
    p.setPen(Qt::NoPen);
    p.drawPath(filled);
    p.setBrush(Qt::NoBrush);
    p.setPen(InkPen(1.2));
    if (mode == 0) {
        p.drawRect(QRectF(5, 5, 14, 14));
    } else {
        p.drawPath(a);
        p.drawPath(b);
    }
}

void DrawGradientKind(QPainter& p, const QString& name) {
    const QRectF box(3, 3, 18, 18);
    QBrush brush;
    if (name == QLatin1String("LinearGradient")) {
        QLinearGradient g(box.topLeft(), box.topRight());
        g.setColorAt(0, Qt::black);
        g.setColorAt(1, Qt::white);
        brush = QBrush(g);
    } else if (name == QLatin1String("RoundGradient")) {
        QRadialGradient g(box.center(), 9);
        g.setColorAt(0, Qt::black);
        g.setColorAt(1, Qt::white);
        brush = QBrush(g);
    } else if (name == QLatin1String("AngleGradient")) {
        QConicalGradient g(box.center(), 0);
        g.setColorAt(0, Qt::black);
        g.setColorAt(1, Qt::white);
        brush = QBrush(g);
    } else if (name == QLatin1String("SymmetricalGradient")) {
        QLinearGradient g(box.topLeft(), box.topRight());
        g.setColorAt(0, Qt::white);
        g.setColorAt(0.5, Qt::black);
        g.setColorAt(1, Qt::white);
        brush = QBrush(g);
    }
    if (name == QLatin1String("DiamondGradient")) {
        p.fillRect(box, Qt::white);
        for (int i = 8; i >= 1; --i) {
            const double r = i * 9.0 / 8;
            const int grey = 255 * (i - 1) / 8;
            QPolygonF diamond(
                {QPointF(12 - r, 12), QPointF(12, 12 - r), QPointF(12 + r, 12), QPointF(12, 12 + r)});
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(grey, grey, grey));
            p.drawPolygon(diamond);
        }
    } else {
        p.fillRect(box, brush);
    }
    p.setBrush(Qt::NoBrush);
    p.setPen(InkPen(1.0));
    p.drawRect(box);
}

void DrawPicture(QPainter& p, const QString& name) {
    if (name == QLatin1String("NormalRectangle")) {
        p.setPen(DashPen());
        p.drawRect(QRectF(3.5, 5.5, 17, 13));
    } else if (name == QLatin1String("Ellicpse")) {
        p.setPen(DashPen());
        p.drawEllipse(QRectF(2.5, 5.5, 19, 13));
    } else if (name == QLatin1String("Poly")) {
        const QPolygonF poly(
            {QPointF(4, 17), QPointF(7, 5), QPointF(19, 7), QPointF(15, 13), QPointF(20, 19)});
        p.setPen(InkPen(1.4));
        p.drawPolyline(poly);
        p.setBrush(Accent);
        p.setPen(Qt::NoPen);
        for (const QPointF& pt : poly)
            p.drawRect(QRectF(pt.x() - 1.5, pt.y() - 1.5, 3, 3));
    } else if (name == QLatin1String("Lasso")) {
        p.setPen(InkPen(1.5));
        p.drawEllipse(QRectF(4, 3, 17, 11));
        QPainterPath rope;
        rope.moveTo(8, 13);
        rope.cubicTo(5, 16, 10, 18, 7, 22);
        p.drawPath(rope);
    } else if (name == QLatin1String("SingleRowAndCol")) {
        p.setPen(DashPen());
        p.drawRect(QRectF(2.5, 10.5, 19, 3));
        p.drawRect(QRectF(10.5, 2.5, 3, 19));
    } else if (name == QLatin1String("MagicWand")) {
        p.setPen(InkPen(2.6));
        p.drawLine(QPointF(4, 20), QPointF(14, 10));
        p.setPen(QPen(Accent, 1.5, Qt::SolidLine, Qt::RoundCap));
        const QPointF c(17.5, 6.5);
        for (int i = 0; i < 8; ++i) {
            QTransform t;
            t.rotate(45.0 * i);
            const double inner = 1.5, outer = i % 2 ? 3.0 : 4.5;
            p.drawLine(c + t.map(QPointF(inner, 0)), c + t.map(QPointF(outer, 0)));
        }
    } else if (name == QLatin1String("PickColor")) {
        p.setPen(InkPen(1.2));
        p.drawLine(QPointF(3, 21), QPointF(7, 17));
        p.setPen(QPen(Ink, 3.2, Qt::SolidLine, Qt::FlatCap));
        p.drawLine(QPointF(6.5, 17.5), QPointF(14, 10));
        p.setPen(QPen(Ink, 5.5, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(15.5, 8.5), QPointF(18.5, 5.5));
        p.setPen(QPen(Ink, 2.2, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(12, 8), QPointF(16, 12));
    } else if (name == QLatin1String("Gradient")) {
        QLinearGradient g(QPointF(3, 0), QPointF(21, 0));
        g.setColorAt(0, Ink);
        g.setColorAt(1, Qt::white);
        p.fillRect(QRectF(3, 6, 18, 12), g);
        p.setPen(InkPen(1.0));
        p.drawRect(QRectF(3, 6, 18, 12));
    } else if (name == QLatin1String("PaintBucket")) {
        p.setPen(InkPen(1.4));
        p.setBrush(QColor(0xF4, 0xF4, 0xF4));
        p.drawPath(BucketPath());
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(6, 2, 10, 10), 20 * 16, 160 * 16);
        p.setPen(Qt::NoPen);
        p.setBrush(Paint);
        QPainterPath drop;
        drop.moveTo(18, 12);
        drop.cubicTo(20, 15, 22, 18, 20, 20);
        drop.cubicTo(18, 22, 16, 19, 18, 12);
        p.drawPath(drop);
    } else if (name == QLatin1String("MoveImage")) {
        p.setPen(InkPen(1.2));
        p.setBrush(QColor(0xFF, 0xF6, 0xE8));
        p.drawPath(HandPath());
    } else if (name == QLatin1String("Zoom") || name == QLatin1String("ZoomIn")) {
        DrawMagnifier(p, name == QLatin1String("ZoomIn") ? QStringLiteral("+") : QString());
    } else if (name == QLatin1String("ZoomOut")) {
        DrawMagnifier(p, QStringLiteral("-"));
    } else if (name == QLatin1String("NewSelection")) {
        DrawCombine(p, 0);
    } else if (name == QLatin1String("AddSelection")) {
        DrawCombine(p, 1);
    } else if (name == QLatin1String("SubSelection")) {
        DrawCombine(p, 2);
    } else if (name == QLatin1String("AndSelection")) {
        DrawCombine(p, 3);
    } else {
        DrawGradientKind(p, name);
    }
}

const QStringList& PictureNames() {
    static const QStringList names = {
        QStringLiteral("NormalRectangle"),
        QStringLiteral("Ellicpse"),
        QStringLiteral("Poly"),
        QStringLiteral("Lasso"),
        QStringLiteral("SingleRowAndCol"),
        QStringLiteral("MagicWand"),
        QStringLiteral("PickColor"),
        QStringLiteral("Gradient"),
        QStringLiteral("PaintBucket"),
        QStringLiteral("MoveImage"),
        QStringLiteral("Zoom"),
        QStringLiteral("ZoomIn"),
        QStringLiteral("ZoomOut"),
        QStringLiteral("NewSelection"),
        QStringLiteral("AddSelection"),
        QStringLiteral("SubSelection"),
        QStringLiteral("AndSelection"),
        QStringLiteral("LinearGradient"),
        QStringLiteral("RoundGradient"),
        QStringLiteral("AngleGradient"),
        QStringLiteral("SymmetricalGradient"),
        QStringLiteral("DiamondGradient"),
    };
    return names;
}

// ------------------------------------------------------------------ cursors

// Cursors are black on a white halo, so that they show on any picture.
void Halo(QPainter& p, const QPainterPath& path, double width = 1.0, const QBrush& fill = Qt::NoBrush) {
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(Qt::white, width + 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(path);
    p.setBrush(fill);
    p.setPen(QPen(Qt::black, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(path);
}

QPainterPath Line(QPointF a, QPointF b) {
    QPainterPath path;
    path.moveTo(a);
    path.lineTo(b);
    return path;
}

// The precise cross of the selection cursors; the hot spot is its centre.
constexpr int CrossAt = 8;
void DrawCross(QPainter& p) {
    const double c = CrossAt + 0.5;
    QPainterPath cross;
    cross.addPath(Line(QPointF(c, 1), QPointF(c, c - 2.5)));
    cross.addPath(Line(QPointF(c, c + 2.5), QPointF(c, 16)));
    cross.addPath(Line(QPointF(1, c), QPointF(c - 2.5, c)));
    cross.addPath(Line(QPointF(c + 2.5, c), QPointF(16, c)));
    Halo(p, cross);
}

void DrawModeMark(QPainter& p, int mode) {
    if (mode == 0) return;
    const QPointF c(23.5, 5.5);
    QPainterPath mark;
    switch (mode) {
    case 1:
        mark.addPath(Line(c - QPointF(3, 0), c + QPointF(3, 0)));
        mark.addPath(Line(c - QPointF(0, 3), c + QPointF(0, 3)));
        break;
    case 2:
        mark.addPath(Line(c - QPointF(3, 0), c + QPointF(3, 0)));
        break;
    default:
        mark.addPath(Line(c - QPointF(2.5, 2.5), c + QPointF(2.5, 2.5)));
        mark.addPath(Line(c + QPointF(-2.5, 2.5), c + QPointF(2.5, -2.5)));
        break;
    }
    Halo(p, mark, 1.4);
}

// A tool's picture shrunk beside the cross.
void DrawMini(QPainter& p, const QString& picture) {
    p.save();
    p.translate(12, 12);
    p.scale(16.0 / PictureSize, 16.0 / PictureSize);
    // A white backing keeps the small picture readable on dark images.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 200));
    p.drawRoundedRect(QRectF(0, 0, PictureSize, PictureSize), 4, 4);
    DrawPicture(p, picture);
    p.restore();
}

QPainterPath ArrowPath() {
    QPainterPath arrow;
    arrow.moveTo(1, 1);
    arrow.lineTo(1, 17);
    arrow.lineTo(5, 13);
    arrow.lineTo(8, 20);
    arrow.lineTo(10.5, 19);
    arrow.lineTo(7.5, 12);
    arrow.lineTo(13, 12);
    arrow.closeSubpath();
    return arrow;
}

struct CursorShape {
    QPoint HotSpot;
    std::function<void(QPainter&)> Draw;
};

CursorShape SelectionCursor(const QString& picture, int mode) {
    return {QPoint(CrossAt, CrossAt), [picture, mode](QPainter& p) {
                DrawCross(p);
                if (!picture.isEmpty()) DrawMini(p, picture);
                DrawModeMark(p, mode);
            }};
}

QHash<QString, CursorShape> MakeCursorShapes() {
    QHash<QString, CursorShape> shapes;
    const QStringList modes = {QStringLiteral("New"), QStringLiteral("AddTo"), QStringLiteral("SubFrom"),
                               QStringLiteral("And")};
    const struct {
        const char* Shape;
        const char* Picture;
    } families[] = {{"Rect", ""}, {"Poly", "Poly"}, {"Lasso", "Lasso"}, {"Magic", "MagicWand"}};
    for (const auto& f : families) {
        for (int m = 0; m < 4; ++m) {
            QString prefix = modes[m];
            if (m == 2 && QLatin1String(f.Shape) == QLatin1String("Lasso"))
                prefix = QStringLiteral("SubForm");
            shapes.insert(prefix + QLatin1String(f.Shape) + QStringLiteral("Selection"),
                          SelectionCursor(QString::fromLatin1(f.Picture), m));
        }
    }
    auto moveSelection = [](bool down) {
        return CursorShape{QPoint(1, 1), [down](QPainter& p) {
                               Halo(p, ArrowPath(), 1.0, Qt::white);
                               QPainterPath box;
                               box.addRect(QRectF(15.5, 17.5, 12, 9));
                               p.setPen(QPen(Qt::white, 3));
                               p.setBrush(down ? QBrush(QColor(0x90, 0x90, 0x90)) : QBrush(Qt::NoBrush));
                               p.drawPath(box);
                               QPen dash(Qt::black, 1, Qt::CustomDashLine);
                               dash.setDashPattern({2, 2});
                               p.setPen(dash);
                               p.setBrush(Qt::NoBrush);
                               p.drawPath(box);
                           }};
    };
    shapes.insert(QStringLiteral("MoveSelection"), moveSelection(false));
    shapes.insert(QStringLiteral("MoveSelectionDown"), moveSelection(true));
    shapes.insert(QStringLiteral("MoveLayer"),
                  CursorShape{QPoint(1, 1), [](QPainter& p) {
                                  Halo(p, ArrowPath(), 1.0, Qt::white);
                                  QPainterPath cross;
                                  const QPointF c(22, 22);
                                  cross.addPath(Line(c - QPointF(6, 0), c + QPointF(6, 0)));
                                  cross.addPath(Line(c - QPointF(0, 6), c + QPointF(0, 6)));
                                  for (int i = 0; i < 4; ++i) {
                                      QTransform t;
                                      t.translate(c.x(), c.y());
                                      t.rotate(90.0 * i);
                                      cross.addPath(t.map(Line(QPointF(4, -2), QPointF(6, 0))));
                                      cross.addPath(t.map(Line(QPointF(4, 2), QPointF(6, 0))));
                                  }
                                  Halo(p, cross);
                              }});
    auto magnifier = [](const QString& sign) {
        return CursorShape{QPoint(10, 10), [sign](QPainter& p) {
                               QPainterPath lens;
                               lens.addEllipse(QPointF(10.5, 10.5), 7, 7);
                               Halo(p, lens, 1.5, QColor(255, 255, 255, 120));
                               Halo(p, Line(QPointF(16, 16), QPointF(23, 23)), 3);
                               QPainterPath mark;
                               if (!sign.isEmpty())
                                   mark.addPath(Line(QPointF(7.5, 10.5), QPointF(13.5, 10.5)));
                               if (sign == QLatin1String("+"))
                                   mark.addPath(Line(QPointF(10.5, 7.5), QPointF(10.5, 13.5)));
                               if (!mark.isEmpty()) Halo(p, mark, 1.4);
                           }};
    };
    shapes.insert(QStringLiteral("ZoomIn"), magnifier(QStringLiteral("+")));
    shapes.insert(QStringLiteral("ZoomOut"), magnifier(QStringLiteral("-")));
    shapes.insert(QStringLiteral("ZoomDisable"), magnifier(QString()));
    shapes.insert(QStringLiteral("MoveImage"), CursorShape{QPoint(12, 12), [](QPainter& p) {
                                                               p.translate(1, 1);
                                                               Halo(p, HandPath(), 1.0, Qt::white);
                                                           }});
    shapes.insert(QStringLiteral("PickColor"),
                  CursorShape{QPoint(2, 21), [](QPainter& p) {
                                  QPainterPath tip = Line(QPointF(2.5, 21.5), QPointF(7, 17));
                                  Halo(p, tip, 1.2);
                                  Halo(p, Line(QPointF(7, 17), QPointF(14, 10)), 2.5);
                                  Halo(p, Line(QPointF(15.5, 8.5), QPointF(19, 5)), 5);
                                  Halo(p, Line(QPointF(12, 8), QPointF(16, 12)), 2);
                              }});
    shapes.insert(QStringLiteral("DrawGradient"), CursorShape{QPoint(CrossAt, CrossAt), [](QPainter& p) {
                                                                  DrawCross(p);
                                                                  DrawMini(p, QStringLiteral("Gradient"));
                                                              }});
    auto bucket = [](bool refused) {
        return CursorShape{QPoint(3, 21), [refused](QPainter& p) {
                               p.save();
                               p.translate(4, 0);
                               QPainterPath handle;
                               handle.arcMoveTo(QRectF(6, 2, 10, 10), 20);
                               handle.arcTo(QRectF(6, 2, 10, 10), 20, 160);
                               Halo(p, BucketPath(), 1.2, Qt::white);
                               Halo(p, handle, 1.2);
                               p.restore();
                               // The stream of paint ends at the hot spot.
                               Halo(p, Line(QPointF(6, 14), QPointF(3.5, 21.5)), 1.8);
                               if (refused) {
                                   QPainterPath no;
                                   no.addEllipse(QPointF(23.5, 23.5), 5, 5);
                                   no.addPath(Line(QPointF(20, 27), QPointF(27, 20)));
                                   Halo(p, no, 1.5);
                               }
                           }};
    };
    shapes.insert(QStringLiteral("PaintBucket"), bucket(false));
    shapes.insert(QStringLiteral("PAINTBUCKET"), bucket(true));
    // A tool's own name stands for its cursor in the new mode.
    shapes.insert(QStringLiteral("NormalRectangle"), shapes.value(QStringLiteral("NewRectSelection")));
    shapes.insert(QStringLiteral("Ellicpse"), shapes.value(QStringLiteral("NewRectSelection")));
    shapes.insert(QStringLiteral("SingleRowAndCol"), shapes.value(QStringLiteral("NewRectSelection")));
    shapes.insert(QStringLiteral("Poly"), shapes.value(QStringLiteral("NewPolySelection")));
    shapes.insert(QStringLiteral("Lasso"), shapes.value(QStringLiteral("NewLassoSelection")));
    shapes.insert(QStringLiteral("MagicWand"), shapes.value(QStringLiteral("NewMagicSelection")));
    shapes.insert(QStringLiteral("Gradient"), shapes.value(QStringLiteral("DrawGradient")));
    shapes.insert(QStringLiteral("Zoom"), shapes.value(QStringLiteral("ZoomIn")));
    return shapes;
}

const QHash<QString, CursorShape>& CursorShapes() {
    static const QHash<QString, CursorShape> shapes = MakeCursorShapes();
    return shapes;
}

} // namespace

QPixmap ToolPicture(const QString& name) {
    if (!PictureNames().contains(name)) return QPixmap();
    QPixmap pixmap(PictureSize * PictureScale, PictureSize * PictureScale);
    pixmap.fill(Qt::transparent);
    {
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(PictureScale, PictureScale);
        DrawPicture(p, name);
    }
    pixmap.setDevicePixelRatio(PictureScale);
    return pixmap;
}

QIcon ToolIcon(const QString& name) {
    const QPixmap pixmap = ToolPicture(name);
    return pixmap.isNull() ? QIcon() : QIcon(pixmap);
}

bool HasToolCursor(const QString& name) {
    return CursorShapes().contains(name);
}

QCursor ToolCursor(const QString& name) {
    static QHash<QString, QCursor> cache;
    auto it = cache.find(name);
    if (it != cache.end()) return *it;
    const auto shape = CursorShapes().find(name);
    if (shape == CursorShapes().end()) return QCursor(Qt::ArrowCursor);
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    {
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        shape->Draw(p);
    }
    const QCursor cursor(pixmap, shape->HotSpot.x(), shape->HotSpot.y());
    cache.insert(name, cursor);
    return cursor;
}

} // namespace vm
