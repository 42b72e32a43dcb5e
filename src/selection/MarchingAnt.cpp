#include "selection/MarchingAnt.h"

#include "selection/Selection.h"

#include <QBrush>
#include <QPainter>
#include <QRect>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace vm {

namespace {

// A diagonal stripe, four on and four off, one pixel further right each row.
constexpr CMarchingAnt::Pattern BasePattern = {240, 120, 60, 30, 15, 135, 195, 225};

int32_t ToCoordinate(double v) {
    constexpr double limit = std::numeric_limits<int32_t>::max() / 4;
    return static_cast<int32_t>(std::clamp(v, -limit, limit));
}

// Union of many regions, pairwise in a balanced tree: each union is linear in
// the sizes of its two sides, so the whole costs n log n instead of n^2.
QRegion UniteAll(std::vector<QRegion>& parts) {
    if (parts.empty()) return QRegion();
    for (size_t step = 1; step < parts.size(); step *= 2)
        for (size_t i = 0; i + step < parts.size(); i += 2 * step)
            parts[i] = parts[i].united(parts[i + step]);
    return parts.front();
}

} // namespace

CMarchingAnt::CMarchingAnt() {
    Init(0, 0);
}

bool CMarchingAnt::Init(int32_t width, int32_t height, int32_t direction) {
    Pattern base = BasePattern;
    if (direction == 0 || direction == 3) std::reverse(base.begin(), base.end());
    const bool backwards = direction == 2 || direction == 3;
    for (int k = 0; k < 8; ++k) {
        Pattern p{};
        // The wrap takes 7 off instead of 8: the row after the table's end is
        // its second row, a small stutter in the march that stays as it was.
        for (int i = 0; i < 8; ++i)
            p[i] = base[i + k < 8 ? i + k : i + k - 7];
        brushes_[k == 0 ? 0 : (backwards ? 8 - k : k)] = p;
    }
    phase_ = 0;
    canvasRegion_ = (width > 0 && height > 0) ? QRegion(0, 0, width, height) : QRegion();
    Clear();
    return width > 0 && height > 0;
}

void CMarchingAnt::Dispose() {
    Clear();
    canvasRegion_ = QRegion();
    phase_ = 0;
}

void CMarchingAnt::Clear() {
    sourceRegion_ = QRegion();
    antRegion_ = QRegion();
    mouseRegion_ = QRegion();
}

QRegion CMarchingAnt::Prepare(const QRegion& region) const {
    const QRegion clipped = region.intersected(canvasRegion_);
    return OutlineRegion(
        ZoomRegion(clipped, scaleFactor_, scaleFactor_, startPosition_.x(), startPosition_.y()));
}

void CMarchingAnt::SetMarchingAntRegion(const QRegion& region) {
    sourceRegion_ = region;
    antRegion_ = Prepare(region);
}

void CMarchingAnt::SetMarchingAntRegion(const CSelection& selection) {
    if (selection.UseDefaultSetting() || !selection.Pointer()) {
        sourceRegion_ = QRegion();
        antRegion_ = QRegion();
        return;
    }
    SetMarchingAntRegion(selection.Region().translated(selection.Left, selection.Top));
}

void CMarchingAnt::SetMouseRegion(const QRegion& region) {
    mouseRegion_ = Prepare(region);
}

QRegion CMarchingAnt::ZoomRegion(const QRegion& region, double scaleX, double scaleY, int32_t offsetX,
                                 int32_t offsetY) {
    if (region.isEmpty() || !(scaleX > 0) || !(scaleY > 0)) return QRegion();
    if (scaleX == 1.0 && scaleY == 1.0) return region.translated(offsetX, offsetY);
    // A region lists its rectangles band by band, left to right. Each band is
    // zoomed by itself, its spans widened outwards to whole pixels (floor on
    // the near side, ceiling on the far one) and merged where they now touch.
    std::vector<QRegion> bands;
    std::vector<QRect> spans;
    auto flush = [&](int32_t top, int32_t bottom) {
        if (spans.empty()) return;
        std::vector<QRect> merged;
        for (const QRect& s : spans) {
            if (!merged.empty() && s.left() <= merged.back().right() + 1) {
                merged.back().setRight(std::max(merged.back().right(), s.right()));
                continue;
            }
            merged.push_back(s);
        }
        for (QRect& m : merged) {
            m.setTop(top);
            m.setBottom(bottom - 1);
        }
        QRegion band;
        band.setRects(merged.data(), static_cast<int>(merged.size()));
        bands.push_back(band);
        spans.clear();
    };
    int32_t bandTop = std::numeric_limits<int32_t>::min(), bandBottom = 0;
    int32_t zoomTop = 0, zoomBottom = 0;
    for (const QRect& r : region) {
        if (r.top() != bandTop || r.bottom() + 1 != bandBottom) {
            flush(zoomTop, zoomBottom);
            bandTop = r.top();
            bandBottom = r.bottom() + 1;
            zoomTop = ToCoordinate(std::floor(bandTop * scaleY));
            zoomBottom = ToCoordinate(std::ceil(bandBottom * scaleY));
        }
        const int32_t left = ToCoordinate(std::floor(r.left() * scaleX));
        const int32_t right = ToCoordinate(std::ceil((r.right() + 1.0) * scaleX));
        spans.emplace_back(QPoint(left, 0), QPoint(right - 1, 0));
    }
    flush(zoomTop, zoomBottom);
    return UniteAll(bands).translated(offsetX, offsetY);
}

QRegion CMarchingAnt::OutlineRegion(const QRegion& region) {
    if (region.isEmpty()) return QRegion();
    const QRegion a = region.translated(1, 1);
    const QRegion b = region.translated(-1, 1);
    return region.subtracted(a)
        .united(a.subtracted(region).translated(-1, -1))
        .united(region.subtracted(b))
        .united(b.subtracted(region).translated(1, -1));
}

QImage CMarchingAnt::BrushImage(int32_t slot, const QColor& one, const QColor& two) const {
    QImage image(8, 8, QImage::Format_Mono);
    image.setColorTable({two.rgba(), one.rgba()});
    const Pattern& p = brushes_[slot & 7];
    for (int i = 0; i < 8; ++i)
        image.scanLine(i)[0] = p[i];
    return image;
}

void CMarchingAnt::PaintToDC(QPainter& dc, int32_t x, int32_t y, bool useMouseRegion, const QColor& one,
                             const QColor& two) const {
    if (!Visible) return;
    const QRegion& region = useMouseRegion ? mouseRegion_ : antRegion_;
    if (region.isEmpty()) return;
    // A one-bit texture would be painted as a stencil in the brush's colour;
    // the ants need both colours, so the pattern goes in as a colour picture.
    const QBrush brush(BrushImage(phase_, one, two).convertToFormat(QImage::Format_ARGB32));
    dc.save();
    dc.setBrushOrigin(0, 0);
    for (const QRect& r : region.translated(x, y))
        dc.fillRect(r, brush);
    dc.restore();
}

} // namespace vm
