// CSelection: lifetime, events, the shape frame, the whole-mask commands,
// combinations with other masks and the housekeeping that keeps the
// invariants (offset settled, empty selections turned back into "everything").
#include "selection/Selection.h"

#include "core/Image.h"
#include "core/MessageBox.h"
#include "core/PixelFormat.h"
#include "selection/MaskScan.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vm {

namespace {

// Feather's radius as every caller sees it afterwards: 0 stays 0 (nothing to
// do), anything else is held to 1..250.
int32_t ClampFeatherRadius(int32_t radius) {
    if (radius == 0) return 0;
    return std::clamp(radius, 1, 250);
}

} // namespace

CSelection::CSelection() = default;

CSelection::~CSelection() {
    DisposeResource();
}

void CSelection::DisposeResource() {
    view_ = QImage();
    region_ = QRegion();
    std::free(bits_);
    bits_ = nullptr;
    Left = 0;
    Top = 0;
    width_ = 0;
    height_ = 0;
    stride_ = 0;
    useDefaultSetting_ = true;
}

bool CSelection::CreateNewSelection(int32_t width, int32_t height) {
    DisposeResource();
    if (width < 1 || height < 1) return false;
    const int64_t stride = (static_cast<int64_t>(width) + 3) & ~int64_t{3};
    if (stride > MaxBlockBytes || stride * height > MaxBlockBytes) return false;
    // calloc: a large new mask costs nothing until it is written.
    bits_ = static_cast<uint8_t*>(std::calloc(static_cast<size_t>(stride * height), 1));
    if (!bits_) return false;
    width_ = width;
    height_ = height;
    stride_ = static_cast<int32_t>(stride);
    RebuildView();
    region_ = QRegion(0, 0, width_ - 1, height_ - 1);
    return true;
}

void CSelection::RebuildView() {
    view_ = bits_ ? QImage(bits_, width_, height_, stride_, QImage::Format_Grayscale8) : QImage();
}

void CSelection::SetUseDefaultSetting(bool value) {
    useDefaultSetting_ = value;
    if (value && bits_) {
        FillBuffer(255);
        Left = 0;
        Top = 0;
        region_ = QRegion(0, 0, width_ - 1, height_ - 1);
    }
    if (!RestrainEvent) {
        const auto copy = listeners_;
        for (auto* l : copy)
            l->SelectionChanged(false);
    }
}

void CSelection::AddListener(ISelectionListener* listener) {
    if (listener && std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end())
        listeners_.push_back(listener);
}

void CSelection::RemoveListener(ISelectionListener* listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), listener), listeners_.end());
}

void CSelection::RaiseBefore() const {
    const auto copy = listeners_;
    for (auto* l : copy)
        l->BeforeSelectionChanged(nestedChange_);
}

void CSelection::RaiseChanged() const {
    const auto copy = listeners_;
    for (auto* l : copy)
        l->SelectionChanged(nestedChange_);
}

void CSelection::FillBuffer(uint8_t value) {
    if (bits_) std::memset(bits_, value, BufferSize());
}

bool CSelection::Render(QPainter& dest, int32_t x, int32_t y, int32_t w, int32_t h, int32_t srcX,
                        int32_t srcY, int32_t srcW, int32_t srcH) const {
    if (!bits_) return false;
    if (w == 0) w = width_;
    if (h == 0) h = height_;
    if (srcX < 0) srcX = 0;
    if (srcY < 0) srcY = 0;
    // A negative source width never reaches the mirroring below: it already
    // counts as "below 1". Only the height can mirror.
    if (srcW < 1) srcW = width_;
    if (srcH == 0) srcH = height_;
    if (srcH < 0) {
        srcH = -srcH;
        h = -h;
    }
    dest.save();
    QTransform t = dest.transform();
    t.translate(x, y);
    t.scale(w < 0 ? -1 : 1, h < 0 ? -1 : 1);
    dest.setTransform(t);
    dest.setRenderHint(QPainter::SmoothPixmapTransform, false);
    dest.setCompositionMode(QPainter::CompositionMode_Source);
    dest.drawImage(QRectF(0, 0, std::abs(static_cast<double>(w)), std::abs(static_cast<double>(h))), view_,
                   QRectF(srcX, srcY, srcW, srcH));
    dest.restore();
    return true;
}

// ---------------------------------------------------------------- shapes

void CSelection::FillShape(const Shape& s, uint8_t grey) {
    if (!bits_) return;
    if (s.Kind == ShapeKind::Rectangle) {
        // Integer rectangles cover whole pixels whatever the smoothing, so the
        // bytes are written straight.
        const int64_t x0 = std::clamp<int64_t>(s.Left, 0, width_);
        const int64_t x1 = std::clamp<int64_t>(s.Left + s.Width, 0, width_);
        const int64_t y0 = std::clamp<int64_t>(s.Top, 0, height_);
        const int64_t y1 = std::clamp<int64_t>(s.Top + s.Height, 0, height_);
        if (x1 <= x0) return;
        for (int64_t y = y0; y < y1; ++y)
            std::memset(Row(static_cast<int32_t>(y)) + x0, grey, x1 - x0);
        return;
    }
    QPainter p(&view_);
    p.setRenderHint(QPainter::Antialiasing, antiAlias_);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(grey, grey, grey));
    if (s.Kind == ShapeKind::Ellipse) {
        if (s.Width <= 0 || s.Height <= 0) return;
        // As a path: the painter's own aliased ellipse works on whole pixels and
        // comes out half a pixel low; the path is sampled at pixel centres.
        QPainterPath path;
        path.addEllipse(QRectF(static_cast<double>(s.Left), static_cast<double>(s.Top),
                               static_cast<double>(s.Width), static_cast<double>(s.Height)));
        p.drawPath(path);
    } else {
        QPolygonF poly;
        poly.reserve(s.Points.size());
        for (const QPoint& pt : s.Points)
            poly << QPointF(pt);
        p.drawPolygon(poly, s.FillMode == FillModeWinding ? Qt::WindingFill : Qt::OddEvenFill);
    }
}

// The ellipse's grey snap: 252 counts as full and 4 as none, over the whole
// mask, whatever was there before.
void CSelection::SnapEllipseGreys() {
    if (!bits_) return;
    uint8_t* p = bits_;
    const size_t n = BufferSize();
    for (size_t i = 0; i < n; ++i) {
        if (p[i] == 252)
            p[i] = 255;
        else if (p[i] == 4)
            p[i] = 0;
    }
}

void CSelection::CombineWith(const uint8_t* other, int32_t otherStride, int32_t mode) {
    for (int32_t y = 0; y < height_; ++y) {
        uint8_t* m = Row(y);
        const uint8_t* t = other + static_cast<ptrdiff_t>(y) * otherStride;
        switch (mode) {
        case SelectionModeAdd:
            for (int32_t x = 0; x < width_; ++x)
                m[x] = std::max(m[x], t[x]);
            break;
        case SelectionModeSubtract:
            for (int32_t x = 0; x < width_; ++x)
                m[x] = m[x] > t[x] ? static_cast<uint8_t>(m[x] - t[x]) : 0;
            break;
        case SelectionModeIntersect:
            for (int32_t x = 0; x < width_; ++x)
                m[x] = std::min(m[x], t[x]);
            break;
        default:
            return;
        }
    }
}

bool CSelection::AddShape(const Shape& s) {
    if (!bits_) return false;
    const bool ellipse = s.Kind == ShapeKind::Ellipse;
    RaiseBefore();
    if (useDefaultSetting_ || SelectionMode == SelectionModeNew) {
        FillBuffer(0);
        FillShape(s, 255);
        if (ellipse) SnapEllipseGreys();
        Left = 0;
        Top = 0;
        nestedChange_ = true;
        Feather(FeatherRadius);
        nestedChange_ = false;
    } else {
        ResetSelectionPosoition();
        if (FeatherRadius == 0 && SelectionMode != SelectionModeIntersect) {
            if (SelectionMode == SelectionModeAdd)
                FillShape(s, 255);
            else if (SelectionMode == SelectionModeSubtract)
                FillShape(s, 0);
            if (ellipse) SnapEllipseGreys();
        } else {
            // The temporary is a work buffer, not a selection of the document:
            // it is feathered without the empty-selection check, which would
            // turn an empty shape into "everything" before it is combined.
            CSelection temp;
            if (temp.CreateNewSelection(width_, height_)) {
                temp.SetAntiAlias(antiAlias_);
                temp.FillShape(s, 255);
                if (ellipse) temp.SnapEllipseGreys();
                FeatherRadius = ClampFeatherRadius(FeatherRadius);
                if (FeatherRadius) temp.FeatherPixels(FeatherRadius);
                CombineWith(temp.bits_, temp.stride_, SelectionMode);
            }
        }
    }
    useDefaultSetting_ = false;
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

bool CSelection::AddRectangle(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
    Shape s;
    s.Kind = ShapeKind::Rectangle;
    s.Left = left;
    s.Top = top;
    s.Width = static_cast<int64_t>(right) - left;
    s.Height = static_cast<int64_t>(bottom) - top;
    return AddShape(s);
}

bool CSelection::AddEllipse(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
    Shape s;
    s.Kind = ShapeKind::Ellipse;
    s.Left = left;
    s.Top = top;
    s.Width = static_cast<int64_t>(right) - left;
    s.Height = static_cast<int64_t>(bottom) - top;
    return AddShape(s);
}

bool CSelection::AddPolygon(const QList<QPoint>& points, int32_t fillMode) {
    Shape s;
    s.Kind = ShapeKind::Polygon;
    s.Points = points;
    s.FillMode = fillMode;
    return AddShape(s);
}

bool CSelection::AddPolygon(const int32_t* points, int32_t count, int32_t fillMode) {
    QList<QPoint> list;
    if (points && count > 0) {
        list.reserve(count);
        for (int32_t i = 0; i < count; ++i)
            list.append(QPoint(points[2 * i], points[2 * i + 1]));
    }
    return AddPolygon(list, fillMode);
}

bool CSelection::AddLine(int32_t x, int32_t y, int32_t kind) {
    if (!bits_) return false;
    auto fillLines = [&](CSelection& target, uint8_t grey) {
        Shape s;
        s.Kind = ShapeKind::Rectangle;
        if (kind != LineRow) {
            s.Left = x;
            s.Top = 0;
            s.Width = 1;
            s.Height = height_;
            target.FillShape(s, grey);
        }
        if (kind != LineColumn) {
            s.Left = 0;
            s.Top = y;
            s.Width = width_;
            s.Height = 1;
            target.FillShape(s, grey);
        }
    };
    RaiseBefore();
    if (useDefaultSetting_ || SelectionMode == SelectionModeNew) {
        FillBuffer(0);
        fillLines(*this, 255);
    } else if (SelectionMode == SelectionModeAdd) {
        fillLines(*this, 255);
    } else if (SelectionMode == SelectionModeSubtract) {
        fillLines(*this, 0);
    } else if (SelectionMode == SelectionModeIntersect) {
        CSelection temp;
        if (temp.CreateNewSelection(width_, height_)) {
            fillLines(temp, 255);
            CombineWith(temp.bits_, temp.stride_, SelectionModeIntersect);
        }
    }
    useDefaultSetting_ = false;
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

// ---------------------------------------------------------------- whole mask

bool CSelection::SelectAll() {
    if (!bits_) return false;
    RaiseBefore();
    Left = 0;
    Top = 0;
    FillBuffer(255);
    useDefaultSetting_ = false;
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

bool CSelection::InvertSelect() {
    if (!bits_) return false;
    RaiseBefore();
    ResetSelectionPosoition();
    for (int32_t y = 0; y < height_; ++y) {
        uint8_t* m = Row(y);
        for (int32_t x = 0; x < width_; ++x)
            m[x] = static_cast<uint8_t>(255 - m[x]);
    }
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

void CSelection::ResetSelectionPosoition() {
    if ((Left == 0 && Top == 0) || !bits_) {
        Left = 0;
        Top = 0;
        return;
    }
    // The canvas rectangle is taken one short on the right and at the bottom,
    // so a moved selection gives up the last column and row for good.
    const int64_t x0 = std::max<int64_t>(0, Left);
    const int64_t x1 = std::min<int64_t>(width_ - 1, static_cast<int64_t>(width_) + Left - 1);
    const int64_t y0 = std::max<int64_t>(0, Top);
    const int64_t y1 = std::min<int64_t>(height_ - 1, static_cast<int64_t>(height_) + Top - 1);
    std::vector<uint8_t> kept;
    const int64_t w = x1 - x0, h = y1 - y0;
    if (w > 0 && h > 0) {
        kept.resize(static_cast<size_t>(w * h));
        for (int64_t y = y0; y < y1; ++y)
            std::memcpy(kept.data() + (y - y0) * w, Row(static_cast<int32_t>(y - Top)) + (x0 - Left), w);
    }
    FillBuffer(0);
    if (!kept.empty())
        for (int64_t y = y0; y < y1; ++y)
            std::memcpy(Row(static_cast<int32_t>(y)) + x0, kept.data() + (y - y0) * w, w);
    Left = 0;
    Top = 0;
}

bool CSelection::CheckSeletion(bool showWarning) {
    if (!bits_) return false;
    bool any = false;
    for (int32_t y = 0; y < height_ && !any; ++y)
        any = maskscan::SkipZeros(Row(y), 0, width_) < width_;
    if (!any) {
        if (showWarning)
            MessageBox(QStringLiteral("警告，未选择任何像素。"), 0, QString(), ButtonsOk, IconCritical);
        FillBuffer(255);
        useDefaultSetting_ = true;
        Left = 0;
        Top = 0;
        Visible = false;
        return false;
    }
    bool strong = false;
    for (int32_t y = 0; y < height_ && !strong; ++y) {
        const uint8_t* m = Row(y);
        for (int32_t x = 0; x < width_; ++x)
            if (m[x] >= 127) {
                strong = true;
                break;
            }
    }
    // The outline is drawn at half strength: below that the user would see no
    // edge at all, so this one is said whatever the caller asked for.
    if (!strong)
        MessageBox(QStringLiteral("警告，任何像素都不大于50%选择，选区边缘将不可见。"), 0, QString(),
                   ButtonsOk, IconExclamation);
    return true;
}

// ---------------------------------------------------------------- copies

std::unique_ptr<CSelection> CSelection::CloneSelection() const {
    auto clone = std::make_unique<CSelection>();
    if (bits_ && clone->CreateNewSelection(width_, height_)) std::memcpy(clone->bits_, bits_, BufferSize());
    clone->Left = Left;
    clone->Top = Top;
    clone->useDefaultSetting_ = useDefaultSetting_;
    clone->Visible = Visible;
    clone->antiAlias_ = antiAlias_;
    clone->FeatherRadius = FeatherRadius;
    clone->SelectionMode = SelectionMode;
    clone->region_ = region_;
    return clone;
}

bool CSelection::CloneToSelection(CSelection& target) const {
    if (&target == this) return true;
    if (!bits_ || target.width_ != width_ || target.height_ != height_) return false;
    if (!useDefaultSetting_) {
        std::memcpy(target.bits_, bits_, BufferSize());
        target.Left = Left;
        target.Top = Top;
        target.Visible = Visible;
        target.useDefaultSetting_ = false;
    } else {
        // A default target is all 255 at rest, as every default selection is.
        target.useDefaultSetting_ = true;
        target.FillBuffer(255);
        target.Left = 0;
        target.Top = 0;
    }
    target.UpdateSelectionRegion();
    return true;
}

bool CSelection::LoadSeletionFromSelection(const CSelection& other, int32_t mode) {
    if (!bits_ || !other.bits_ || mode < SelectionModeNew || mode > SelectionModeIntersect) return false;
    const uint8_t* source = other.bits_;
    int32_t sourceStride = other.stride_;
    CSelection stretched;
    if (other.width_ != width_ || other.height_ != height_) {
        if (!stretched.CreateNewSelection(width_, height_)) return false;
        QPainter p(&stretched.view_);
        other.Render(p, 0, 0, width_, height_);
        p.end();
        source = stretched.bits_;
        sourceStride = stretched.stride_;
    }
    if (mode == SelectionModeNew) {
        std::memcpy(bits_, source, BufferSize());
        Left = 0;
        Top = 0;
    } else {
        ResetSelectionPosoition();
        CombineWith(source, sourceStride, mode);
    }
    // The loaded mask is what the document selects from now on.
    useDefaultSetting_ = false;
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

bool CSelection::PaintBucketSelection(const CSelection& other) {
    if (!other.bits_) return false;
    if (!useDefaultSetting_) {
        if (!bits_ || other.width_ != width_ || other.height_ != height_) return false;
        ResetSelectionPosoition();
        for (int32_t y = 0; y < height_; ++y) {
            uint8_t* m = Row(y);
            const uint8_t* o = other.Row(y);
            for (int32_t x = 0; x < width_; ++x)
                if (!o[x]) m[x] = 0;
        }
    } else {
        if (!CreateNewSelection(other.width_, other.height_)) return false;
        std::memcpy(bits_, other.bits_, BufferSize());
    }
    useDefaultSetting_ = false;
    UpdateSelectionRegion();
    return true;
}

bool CSelection::GetSelectionFromAlphaChannel(const CImage& image) {
    if (image.PixelFormat != PixelFormat32bppARGB || !image.Pointer()) return SelectAll();
    if (!bits_) return false;
    RaiseBefore();
    Left = 0;
    Top = 0;
    FillBuffer(0);
    const int32_t w = std::min(width_, image.Width()), h = std::min(height_, image.Height());
    for (int32_t y = 0; y < h; ++y) {
        const uint8_t* s = image.Row(y) + 3;
        uint8_t* m = Row(y);
        for (int32_t x = 0; x < w; ++x)
            m[x] = s[4 * x];
    }
    useDefaultSetting_ = false;
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

} // namespace vm
