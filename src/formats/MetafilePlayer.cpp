#include "formats/MetafilePlayer.h"

#include "core/ColorRef.h"
#include "core/Image.h"
#include "formats/CodecCommon.h"
#include "formats/DibCodec.h"
#include "formats/ParserCommon.h"

#include <QFontMetricsF>
#include <QRegion>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

constexpr double Pi = 3.14159265358979323846;
// Beyond this a pen or a coordinate only costs time: nothing larger fits on
// any picture the families render.
constexpr double MaxDeviceWidth = 65536.0;
constexpr size_t MaxSavedStates = 4096;

double ScaleOf(const QTransform& t) {
    return std::sqrt(std::abs(t.determinant()));
}

} // namespace

MetafilePlayer::MetafilePlayer(QImage& target, bool maskOnly, const QTransform& base, double pixelsPerMm)
    : target_(target), painter_(&target), mask_(maskOnly), base_(base),
      pixelsPerMm_(pixelsPerMm > 0 ? pixelsPerMm : 96.0 / 25.4) {
    painter_.setRenderHint(QPainter::Antialiasing, false);
    painter_.setRenderHint(QPainter::TextAntialiasing, false);
    painter_.setRenderHint(QPainter::SmoothPixmapTransform, false);
}

// ---- mapping

QTransform MetafilePlayer::PageTransform() const {
    const State& s = state_;
    double sx = 1, sy = 1;
    switch (s.MapMode) {
    case 2:
        sx = 0.1 * pixelsPerMm_;
        sy = -sx;
        break; // MM_LOMETRIC
    case 3:
        sx = 0.01 * pixelsPerMm_;
        sy = -sx;
        break; // MM_HIMETRIC
    case 4:
        sx = 0.254 * pixelsPerMm_;
        sy = -sx;
        break; // MM_LOENGLISH
    case 5:
        sx = 0.0254 * pixelsPerMm_;
        sy = -sx;
        break; // MM_HIENGLISH
    case 6:
        sx = 25.4 / 1440 * pixelsPerMm_;
        sy = -sx;
        break; // MM_TWIPS
    case 7:    // MM_ISOTROPIC
    case 8:    // MM_ANISOTROPIC
        sx = s.WindowExtX != 0 ? s.ViewportExtX / s.WindowExtX : 1;
        sy = s.WindowExtY != 0 ? s.ViewportExtY / s.WindowExtY : 1;
        if (s.MapMode == 7) {
            const double m = std::min(std::abs(sx), std::abs(sy));
            sx = std::copysign(m, sx);
            sy = std::copysign(m, sy);
        }
        break;
    default:
        break; // MM_TEXT
    }
    return QTransform::fromTranslate(-s.WindowOrgX, -s.WindowOrgY) * QTransform::fromScale(sx, sy) *
           QTransform::fromTranslate(s.ViewportOrgX, s.ViewportOrgY);
}

void MetafilePlayer::SetMapMode(int32_t mode) {
    if (mode < 1 || mode > 8) return;
    state_.MapMode = mode;
}
void MetafilePlayer::SetWindowOrg(double x, double y) {
    state_.WindowOrgX = x;
    state_.WindowOrgY = y;
}
// Extents count only in the two scalable modes, as in GDI.
void MetafilePlayer::SetWindowExt(double x, double y) {
    if ((state_.MapMode != 7 && state_.MapMode != 8) || x == 0 || y == 0) return;
    state_.WindowExtX = x;
    state_.WindowExtY = y;
}
void MetafilePlayer::SetViewportOrg(double x, double y) {
    state_.ViewportOrgX = x;
    state_.ViewportOrgY = y;
}
void MetafilePlayer::SetViewportExt(double x, double y) {
    if ((state_.MapMode != 7 && state_.MapMode != 8) || x == 0 || y == 0) return;
    state_.ViewportExtX = x;
    state_.ViewportExtY = y;
}
void MetafilePlayer::OffsetWindowOrg(double x, double y) {
    state_.WindowOrgX += x;
    state_.WindowOrgY += y;
}
void MetafilePlayer::OffsetViewportOrg(double x, double y) {
    state_.ViewportOrgX += x;
    state_.ViewportOrgY += y;
}
void MetafilePlayer::ScaleWindowExt(double xn, double xd, double yn, double yd) {
    if (xd == 0 || yd == 0) return;
    SetWindowExt(state_.WindowExtX * xn / xd, state_.WindowExtY * yn / yd);
}
void MetafilePlayer::ScaleViewportExt(double xn, double xd, double yn, double yd) {
    if (xd == 0 || yd == 0) return;
    SetViewportExt(state_.ViewportExtX * xn / xd, state_.ViewportExtY * yn / yd);
}
void MetafilePlayer::SetWorldTransform(const QTransform& world) {
    if (world.isInvertible()) state_.World = world;
}
void MetafilePlayer::ModifyWorldTransform(const QTransform& world, uint32_t mode) {
    switch (mode) {
    case 1:
        state_.World = QTransform();
        break;
    case 2:
        SetWorldTransform(world * state_.World);
        break;
    case 3:
        SetWorldTransform(state_.World * world);
        break;
    case 4:
        SetWorldTransform(world);
        break;
    default:
        break;
    }
}

// ---- state

void MetafilePlayer::SelectObject(const GdiObject& object) {
    switch (object.Type) {
    case GdiObject::Pen:
        state_.Pen = object.PenValue;
        break;
    case GdiObject::Brush:
        state_.Brush = object.BrushValue;
        break;
    case GdiObject::Font:
        state_.Font = object.FontValue;
        break;
    default:
        break;
    }
}

void MetafilePlayer::SaveDC() {
    if (saved_.size() < MaxSavedStates) saved_.push_back(state_);
}

void MetafilePlayer::RestoreDC(int32_t which) {
    if (which < 0) {
        const size_t back = static_cast<size_t>(-static_cast<int64_t>(which));
        if (back > saved_.size()) return;
        state_ = saved_[saved_.size() - back];
        saved_.resize(saved_.size() - back);
    } else if (which > 0 && static_cast<size_t>(which) <= saved_.size()) {
        state_ = saved_[static_cast<size_t>(which) - 1];
        saved_.resize(static_cast<size_t>(which) - 1);
    }
}

QColor MetafilePlayer::ColorOf(uint32_t colorRef) const {
    if (mask_) return Qt::white;
    return ColorRefToQColor(colorRef);
}

bool MetafilePlayer::Begin(bool device) {
    painter_.resetTransform();
    if (state_.Clipped)
        painter_.setClipPath(state_.Clip);
    else
        painter_.setClipping(false);
    if (!device) painter_.setTransform(Full());
    painter_.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (state_.Rop2 == 11) return false; // R2_NOP touches nothing
    if (mask_) return true;
    switch (state_.Rop2) {
    case 4:
        painter_.setCompositionMode(QPainter::RasterOp_NotSource);
        break;
    case 6:
        painter_.setCompositionMode(QPainter::RasterOp_NotDestination);
        break;
    case 7:
        painter_.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        break;
    case 9:
        painter_.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
        break;
    case 15:
        painter_.setCompositionMode(QPainter::RasterOp_SourceOrDestination);
        break;
    default:
        break;
    }
    return true;
}

QPen MetafilePlayer::MakePen() const {
    const GdiPen& p = state_.Pen;
    const uint32_t style = p.Style & 0x0F;
    if (style == 5) return QPen(Qt::NoPen); // PS_NULL
    QColor colour = ColorOf(p.Color);
    if (!mask_ && state_.Rop2 == 1) colour = Qt::black;
    if (!mask_ && state_.Rop2 == 16) colour = Qt::white;
    QPen pen(colour);
    const double device = p.Width * ScaleOf(Full());
    if (p.Width <= 0 || !std::isfinite(device) || device < 1.5) {
        pen.setCosmetic(true);
        pen.setWidthF(1);
    } else {
        pen.setWidthF(std::min(device, MaxDeviceWidth) / std::max(ScaleOf(Full()), 1e-9));
        switch (p.Style & 0xF00) {
        case 0x100:
            pen.setCapStyle(Qt::SquareCap);
            break;
        case 0x200:
            pen.setCapStyle(Qt::FlatCap);
            break;
        default:
            pen.setCapStyle(Qt::RoundCap);
            break;
        }
        switch (p.Style & 0xF000) {
        case 0x1000:
            pen.setJoinStyle(Qt::BevelJoin);
            break;
        case 0x2000:
            pen.setJoinStyle(Qt::MiterJoin);
            break;
        default:
            pen.setJoinStyle(Qt::RoundJoin);
            break;
        }
    }
    switch (style) {
    case 1:
        pen.setStyle(Qt::DashLine);
        break;
    case 2:
    case 8:
        pen.setStyle(Qt::DotLine);
        break;
    case 3:
        pen.setStyle(Qt::DashDotLine);
        break;
    case 4:
        pen.setStyle(Qt::DashDotDotLine);
        break;
    default:
        break;
    }
    return pen;
}

QBrush MetafilePlayer::MakeBrush() const {
    const GdiBrush& b = state_.Brush;
    QColor colour = ColorOf(b.Color);
    if (!mask_ && state_.Rop2 == 1) colour = Qt::black;
    if (!mask_ && state_.Rop2 == 16) colour = Qt::white;
    switch (b.Style) {
    case 1:
        return QBrush(Qt::NoBrush);
    case 2: {
        static const Qt::BrushStyle hatches[] = {Qt::HorPattern,   Qt::VerPattern,   Qt::FDiagPattern,
                                                 Qt::BDiagPattern, Qt::CrossPattern, Qt::DiagCrossPattern};
        return QBrush(colour, b.Hatch < 6 ? hatches[b.Hatch] : Qt::SolidPattern);
    }
    case 3:
    case 5:
    case 6:
        if (!b.Pattern.isNull() && !mask_) return QBrush(b.Pattern);
        return QBrush(mask_ ? QColor(Qt::white) : QColor(Qt::black));
    default:
        return QBrush(colour);
    }
}

// ---- paths and shapes

void MetafilePlayer::AddToPath(const QPainterPath& logical) {
    path_.addPath(Full().map(logical));
}

void MetafilePlayer::Shape(const QPainterPath& logical, bool fill, bool stroke) {
    if (inPath_) {
        AddToPath(logical);
        return;
    }
    if (!Begin()) return;
    QPainterPath path = logical;
    path.setFillRule(state_.FillMode == 2 ? Qt::WindingFill : Qt::OddEvenFill);
    if (fill) {
        const QBrush brush = MakeBrush();
        if (brush.style() != Qt::NoBrush) {
            if (state_.Brush.Style == 2 && state_.BkMode == 2)
                painter_.fillPath(path, ColorOf(state_.BkColor));
            painter_.fillPath(path, brush);
        }
    }
    if (stroke) {
        const QPen pen = MakePen();
        if (pen.style() != Qt::NoPen) painter_.strokePath(path, pen);
    }
}

void MetafilePlayer::MoveTo(double x, double y) {
    state_.Current = QPointF(x, y);
    if (inPath_) path_.moveTo(Full().map(state_.Current));
}

void MetafilePlayer::LineTo(double x, double y) {
    const QPointF to(x, y);
    if (inPath_) {
        const QPointF from = Full().map(state_.Current);
        if (path_.elementCount() == 0 || path_.currentPosition() != from) path_.moveTo(from);
        path_.lineTo(Full().map(to));
    } else {
        QPainterPath p(state_.Current);
        p.lineTo(to);
        Shape(p, false, true);
    }
    state_.Current = to;
}

void MetafilePlayer::Polyline(const QPolygonF& points) {
    if (points.size() < 2) return;
    QPainterPath p;
    p.addPolygon(points);
    Shape(p, false, true);
}

void MetafilePlayer::PolylineTo(const QPolygonF& points) {
    for (const QPointF& pt : points)
        LineTo(pt.x(), pt.y());
}

namespace {
QPainterPath Beziers(const QPointF& start, const QPolygonF& points) {
    QPainterPath p(start);
    for (qsizetype i = 0; i + 2 < points.size(); i += 3)
        p.cubicTo(points[i], points[i + 1], points[i + 2]);
    return p;
}
} // namespace

void MetafilePlayer::PolyBezier(const QPolygonF& points) {
    if (points.size() < 4) return;
    Shape(Beziers(points[0], points.mid(1)), false, true);
    state_.Current = points.back();
}

void MetafilePlayer::PolyBezierTo(const QPolygonF& points) {
    if (points.size() < 3) return;
    if (inPath_) {
        const QPointF from = Full().map(state_.Current);
        if (path_.elementCount() == 0 || path_.currentPosition() != from) path_.moveTo(from);
        const QTransform t = Full();
        for (qsizetype i = 0; i + 2 < points.size(); i += 3)
            path_.cubicTo(t.map(points[i]), t.map(points[i + 1]), t.map(points[i + 2]));
    } else {
        Shape(Beziers(state_.Current, points), false, true);
    }
    state_.Current = points[points.size() - 1 - (points.size() % 3)];
}

void MetafilePlayer::Polygon(const QPolygonF& points) {
    if (points.size() < 2) return;
    QPainterPath p;
    p.addPolygon(points);
    p.closeSubpath();
    Shape(p, true, true);
}

void MetafilePlayer::PolyPolygon(const std::vector<QPolygonF>& polygons) {
    QPainterPath p;
    for (const QPolygonF& poly : polygons) {
        if (poly.size() < 2) continue;
        p.addPolygon(poly);
        p.closeSubpath();
    }
    Shape(p, true, true);
}

void MetafilePlayer::PolyPolyline(const std::vector<QPolygonF>& lines) {
    QPainterPath p;
    for (const QPolygonF& line : lines)
        if (line.size() >= 2) p.addPolygon(line);
    Shape(p, false, true);
}

void MetafilePlayer::Rectangle(double l, double t, double r, double b) {
    QPainterPath p;
    p.addRect(QRectF(QPointF(l, t), QPointF(r, b)).normalized());
    Shape(p, true, true);
}

void MetafilePlayer::RoundRect(double l, double t, double r, double b, double w, double h) {
    QPainterPath p;
    p.addRoundedRect(QRectF(QPointF(l, t), QPointF(r, b)).normalized(), std::abs(w) / 2, std::abs(h) / 2);
    Shape(p, true, true);
}

void MetafilePlayer::Ellipse(double l, double t, double r, double b) {
    QPainterPath p;
    p.addEllipse(QRectF(QPointF(l, t), QPointF(r, b)).normalized());
    Shape(p, true, true);
}

void MetafilePlayer::ArcShape(int kind, double l, double t, double r, double b, double xs, double ys,
                              double xe, double ye) {
    const QRectF rect = QRectF(QPointF(l, t), QPointF(r, b)).normalized();
    if (rect.width() <= 0 || rect.height() <= 0) return;
    const QPointF c = rect.center();
    // Angles on the ellipse's own parameter, counter-clockwise as GDI's
    // default arc direction runs on the screen.
    auto angle = [&](double x, double y) {
        return std::atan2(-(y - c.y()) / rect.height(), (x - c.x()) / rect.width()) * 180 / Pi;
    };
    const double a1 = angle(xs, ys);
    double span = angle(xe, ye) - a1;
    if (span <= 0) span += 360;
    QPainterPath p;
    if (kind == 1) {
        p.moveTo(c);
        p.arcTo(rect, a1, span);
        p.closeSubpath();
    } else {
        p.arcMoveTo(rect, a1);
        p.arcTo(rect, a1, span);
        if (kind == 2) p.closeSubpath();
    }
    Shape(p, kind != 0, true);
}

void MetafilePlayer::SetPixel(double x, double y, uint32_t color) {
    if (!Begin(true)) return;
    const QPointF d = Full().map(QPointF(x, y));
    painter_.fillRect(QRectF(std::floor(d.x()), std::floor(d.y()), 1, 1), ColorOf(color));
}

void MetafilePlayer::PatBlt(double x, double y, double w, double h, uint32_t rop) {
    if (rop == 0x00AA0029) return; // the destination as it is
    const int32_t savedRop2 = state_.Rop2;
    state_.Rop2 = 13;
    const bool go = Begin();
    state_.Rop2 = savedRop2;
    if (!go) return;
    const QRectF rect = QRectF(x, y, w, h).normalized();
    if (mask_) {
        painter_.fillRect(rect, Qt::white);
        return;
    }
    switch (rop) {
    case 0x00000042:
        painter_.fillRect(rect, Qt::black);
        break; // BLACKNESS
    case 0x00FF0062:
        painter_.fillRect(rect, Qt::white);
        break;       // WHITENESS
    case 0x00550009: // DSTINVERT
        painter_.setCompositionMode(QPainter::RasterOp_NotDestination);
        painter_.fillRect(rect, Qt::black);
        break;
    case 0x005A0049: // PATINVERT
        painter_.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        painter_.fillRect(rect, MakeBrush());
        break;
    default:
        painter_.fillRect(rect, MakeBrush());
        break; // PATCOPY and the rest
    }
}

void MetafilePlayer::StretchBitmap(const QImage& bitmap, double dx, double dy, double dw, double dh,
                                   double sx, double sy, double sw, double sh, uint32_t rop) {
    if (bitmap.isNull() || sw == 0 || sh == 0 || dw == 0 || dh == 0) return;
    if (rop == 0x00AA0029) return;
    const uint32_t r = rop & 0x00FF0000;
    // Operations that ignore the source are brush fills.
    if (rop == 0x00000042 || rop == 0x00FF0062 || rop == 0x00550009 || rop == 0x005A0049 ||
        rop == 0x00F00021) {
        PatBlt(dx, dy, dw, dh, rop);
        return;
    }
    const int32_t savedRop2 = state_.Rop2;
    state_.Rop2 = 13;
    const bool go = Begin(true);
    state_.Rop2 = savedRop2;
    if (!go) return;
    const QTransform toLogical(dw / sw, 0, 0, dh / sh, dx - sx * dw / sw, dy - sy * dh / sh);
    painter_.setTransform(toLogical * Full());
    const QRectF source(sx, sy, sw, sh);
    if (mask_) {
        painter_.fillRect(source.normalized(), Qt::white);
        return;
    }
    switch (r) {
    case 0x00EE0000:
        painter_.setCompositionMode(QPainter::RasterOp_SourceOrDestination);
        break; // SRCPAINT
    case 0x00880000:
        painter_.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
        break; // SRCAND
    case 0x00660000:
        painter_.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        break; // SRCINVERT
    case 0x00330000:
        painter_.setCompositionMode(QPainter::RasterOp_NotSource);
        break; // NOTSRCCOPY
    default:
        break; // SRCCOPY
    }
    painter_.drawImage(source.normalized(), bitmap, source.normalized());
}

void MetafilePlayer::TextOut(double x, double y, const QString& text, uint32_t options, const QRectF* box) {
    if (inPath_ || !Begin(true)) return;
    const QTransform full = Full();
    const bool updateCp = state_.TextAlign & 1;
    const QPointF reference = updateCp ? state_.Current : QPointF(x, y);
    const QPointF at = full.map(reference);
    const QLineF unit = full.map(QLineF(0, 0, 0, 1));
    const double scale = std::max(unit.length(), 1e-9);
    const GdiFont& gf = state_.Font;
    QFont font(gf.Face.isEmpty() ? QStringLiteral("DejaVu Sans") : gf.Face);
    const double height = gf.Height != 0 ? std::abs(gf.Height) * scale : 16.0;
    font.setPixelSize(std::clamp(static_cast<int>(std::lround(height)), 1, 4096));
    font.setWeight(static_cast<QFont::Weight>(std::clamp(gf.Weight > 0 ? gf.Weight : 400, 100, 900)));
    font.setItalic(gf.Italic);
    font.setUnderline(gf.Underline);
    font.setStrikeOut(gf.StrikeOut);
    font.setStyleStrategy(QFont::NoAntialias);
    const QFontMetricsF metrics(font);

    if (box && (options & 2)) { // ETO_OPAQUE
        painter_.setTransform(full);
        painter_.fillRect(box->normalized(), ColorOf(state_.BkColor));
        painter_.resetTransform();
    }
    if (box && (options & 4)) { // ETO_CLIPPED
        QPainterPath clip;
        clip.addPolygon(full.map(QPolygonF(box->normalized())));
        painter_.setClipPath(clip, state_.Clipped ? Qt::IntersectClip : Qt::ReplaceClip);
    }

    const double width = metrics.horizontalAdvance(text);
    double left = 0;
    switch (state_.TextAlign & 6) {
    case 2:
        left = -width;
        break; // TA_RIGHT
    case 6:
        left = -width / 2;
        break; // TA_CENTER
    default:
        break;
    }
    double baseline = metrics.ascent(); // TA_TOP
    if ((state_.TextAlign & 24) == 8)
        baseline = -metrics.descent(); // TA_BOTTOM
    else if ((state_.TextAlign & 24) == 24)
        baseline = 0; // TA_BASELINE

    painter_.translate(at);
    painter_.rotate(-gf.Escapement / 10.0);
    if (state_.BkMode == 2)
        painter_.fillRect(QRectF(left, baseline - metrics.ascent(), width, metrics.height()),
                          ColorOf(state_.BkColor));
    painter_.setFont(font);
    painter_.setPen(ColorOf(state_.TextColor));
    painter_.drawText(QPointF(left, baseline), text);
    if (updateCp) state_.Current.rx() += width / scale;
}

void MetafilePlayer::BeginPath() {
    inPath_ = true;
    path_ = QPainterPath();
}

void MetafilePlayer::AbortPath() {
    inPath_ = false;
    path_ = QPainterPath();
}

void MetafilePlayer::CloseFigure() {
    if (inPath_) path_.closeSubpath();
}

void MetafilePlayer::FillPath() {
    inPath_ = false;
    if (Begin(true)) {
        path_.setFillRule(state_.FillMode == 2 ? Qt::WindingFill : Qt::OddEvenFill);
        painter_.fillPath(path_, MakeBrush());
    }
    path_ = QPainterPath();
}

void MetafilePlayer::StrokePath() {
    inPath_ = false;
    if (Begin(true)) {
        QPen pen = MakePen();
        if (!pen.isCosmetic()) {
            const double width = pen.widthF() * ScaleOf(Full());
            pen.setWidthF(std::isfinite(width) ? std::clamp(width, 1.0, MaxDeviceWidth) : 1.0);
        }
        if (pen.style() != Qt::NoPen) painter_.strokePath(path_, pen);
    }
    path_ = QPainterPath();
}

void MetafilePlayer::StrokeAndFillPath() {
    const QPainterPath kept = path_;
    FillPath();
    path_ = kept;
    StrokePath();
}

// The clip and a new region by the region modes: 1 and, 2 or, 3 either but not
// both, 4 the clip less the region, anything else the region alone. Without a
// clip the whole picture stands for it.
void MetafilePlayer::CombineClip(const QPainterPath& region, int32_t mode) {
    QPainterPath current = state_.Clip;
    if (!state_.Clipped) {
        current = QPainterPath();
        current.addRect(QRectF(target_.rect()));
    }
    switch (mode) {
    case 1:
        state_.Clip = current.intersected(region);
        break;
    case 2:
        state_.Clip = current.united(region);
        break;
    case 3:
        state_.Clip = current.united(region).subtracted(current.intersected(region));
        break;
    case 4:
        state_.Clip = current.subtracted(region);
        break;
    default:
        state_.Clip = region;
        break;
    }
    state_.Clipped = true;
}

void MetafilePlayer::SelectClipPath(int32_t mode) {
    inPath_ = false;
    QPainterPath region = path_;
    region.setFillRule(state_.FillMode == 2 ? Qt::WindingFill : Qt::OddEvenFill);
    path_ = QPainterPath();
    CombineClip(region, mode);
}

// ---- clipping

QPainterPath MetafilePlayer::DeviceRectPath(double l, double t, double r, double b) const {
    QPainterPath p;
    p.addPolygon(Full().map(QPolygonF(QRectF(QPointF(l, t), QPointF(r, b)).normalized())));
    p.closeSubpath();
    return p;
}

void MetafilePlayer::IntersectClipRect(double l, double t, double r, double b) {
    const QPainterPath rect = DeviceRectPath(l, t, r, b);
    state_.Clip = state_.Clipped ? state_.Clip.intersected(rect) : rect;
    state_.Clipped = true;
}

void MetafilePlayer::ExcludeClipRect(double l, double t, double r, double b) {
    QPainterPath whole;
    whole.addRect(QRectF(target_.rect()));
    state_.Clip = (state_.Clipped ? state_.Clip : whole).subtracted(DeviceRectPath(l, t, r, b));
    state_.Clipped = true;
}

void MetafilePlayer::SelectClipRects(const std::vector<QRectF>& deviceRects, int32_t mode) {
    QRegion region;
    for (const QRectF& r : deviceRects)
        region += base_.mapRect(r).toAlignedRect();
    QPainterPath path;
    path.addRegion(region);
    CombineClip(path, mode);
}

void MetafilePlayer::ResetClip() {
    state_.Clipped = false;
    state_.Clip = QPainterPath();
}

// ---- bitmaps

QImage RecordDib(const ByteReader& info, const ByteReader* bits, uint32_t usage, bool* bottomUp) {
    CImage dib;
    if (!DecodeDib(info, bits, usage == 1, dib, bottomUp)) return {};
    QImage out(dib.Width(), dib.Height(), QImage::Format_RGB32);
    std::vector<uint8_t> row(static_cast<size_t>(dib.Width()) * 4);
    for (int32_t y = 0; y < dib.Height(); ++y) {
        RowToBgra(dib, y, row.data());
        auto* d = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int32_t x = 0; x < dib.Width(); ++x)
            d[x] = qRgb(row[4 * x + 2], row[4 * x + 1], row[4 * x]);
    }
    return out;
}

bool RenderWithAlpha(CImage& image, int32_t width, int32_t height,
                     const std::function<void(MetafilePlayer&)>& play, const QTransform& base,
                     double pixelsPerMm) {
    if (width < 1 || height < 1 || static_cast<int64_t>(width) * height > MaxMetafilePixels) return false;
    if (!NewBlock(image, width, height, 32, 0)) return false;
    image.FillSolidColor(255);
    {
        QImage colour(image.Pointer(), width, height, image.Stride(), QImage::Format_RGB32);
        MetafilePlayer player(colour, false, base, pixelsPerMm);
        play(player);
    }
    QImage touched(width, height, QImage::Format_RGB32);
    touched.fill(Qt::black);
    {
        MetafilePlayer player(touched, true, base, pixelsPerMm);
        play(player);
    }
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* d = image.Row(y);
        const auto* m = reinterpret_cast<const QRgb*>(touched.constScanLine(y));
        for (int32_t x = 0; x < width; ++x) {
            // What a drawing call touched carries alpha 0, as GDI leaves it.
            if (m[x] & 0xFFFFFF) d[4 * x + 3] = 0;
            d[4 * x + 3] = d[4 * x + 3] < 255 ? 255 : 0;
        }
    }
    image.PixelFormat = PixelFormat32bppARGB;
    return true;
}

} // namespace vm
