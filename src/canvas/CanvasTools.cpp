// The tools at work on the canvas: strokes of the selection tools with their
// rubber bands, moving the selection, the colour picker, the paint bucket,
// the gradient's drag, moving the view and the zoom tool.
#include "canvas/Canvas.h"

#include "canvas/ToolPictures.h"
#include "core/AppSettings.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/PaintBucket.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

// A press and release closer than this many view pixels is a click.
constexpr double ClickSlop = 3;
// A click this close to the first corner of a polygon closes it.
constexpr double CloseDistance = 5;

bool IsBitmapFormat(uint32_t f) {
    return f == PixelFormat1bppIndexed;
}
bool IsIndexedFormat(uint32_t f) {
    return f == PixelFormat4bppIndexed || f == PixelFormat8bppIndexed;
}

double ViewDistance(QPointF a, QPointF b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

// ------------------------------------------------------------------ positions

QPoint Canvas::GridPointAt(QPointF v) const {
    return QPoint(static_cast<int>(std::lround((v.x() - showLeft_ + hScroll_) / zoom_)),
                  static_cast<int>(std::lround((v.y() - showTop_ + vScroll_) / zoom_)));
}

QPoint Canvas::PixelAt(QPointF v) const {
    return QPoint(static_cast<int>(std::floor((v.x() - showLeft_ + hScroll_) / zoom_)),
                  static_cast<int>(std::floor((v.y() - showTop_ + vScroll_) / zoom_)));
}

QPointF Canvas::ImageToView(QPointF p) const {
    return QPointF(showLeft_ + p.x() * zoom_ - hScroll_, showTop_ + p.y() * zoom_ - vScroll_);
}

bool Canvas::InsideImage(QPoint p) const {
    return HasImage() && p.x() >= 0 && p.y() >= 0 && p.x() < canvasWidth_ && p.y() < canvasHeight_;
}

bool Canvas::IsPolygonOpen() const {
    return stroke_ == Stroke::Polygon;
}

bool Canvas::WouldMoveSelection(int32_t tool, int32_t mode, Qt::KeyboardModifiers keys, QPoint pixel) const {
    // The polygon's clicks set corners; every other selection tool drags the
    // selection when pressed inside it in the new mode, or with Ctrl held.
    if (!Selection() || !IsSelectionTool(tool) || tool == ToolPolygon) return false;
    if (mode != SelectionModeNew && !(keys & Qt::ControlModifier)) return false;
    return Selection()->IsPtInSelection(pixel.x(), pixel.y());
}

// ------------------------------------------------------------------ cursors

QString Canvas::ToolCursorName(Qt::KeyboardModifiers keys) const {
    const int32_t tool = WorkingMode();
    const QPoint pixel = PixelAt(pointer_);
    if (stroke_ == Stroke::MoveSelection) return QStringLiteral("MoveSelectionDown");
    if (IsSelectionTool(tool)) {
        const int32_t mode =
            stroke_ == Stroke::None ? StrokeCombineMode(ToolCombineMode(tool, Globals()), keys) : strokeMode_;
        if (stroke_ == Stroke::None && WouldMoveSelection(tool, mode, keys, pixel))
            return QStringLiteral("MoveSelection");
        return CombineCursorName(tool, mode);
    }
    switch (tool) {
    case ToolPickColor:
        return QStringLiteral("PickColor");
    case ToolGradient:
        return QStringLiteral("DrawGradient");
    case ToolPaintBucket: {
        // The crossed bucket says that a click here does nothing.
        const bool refused = !HasImage() || IsBitmapFormat(Image()->PixelFormat) ||
                             IsIndexedFormat(Image()->PixelFormat) ||
                             (Selection() && !Selection()->UseDefaultSetting() &&
                              !Selection()->IsPtInSelection(pixel.x(), pixel.y()));
        return refused ? QStringLiteral("PAINTBUCKET") : QStringLiteral("PaintBucket");
    }
    case ToolMoveImage:
        if (stroke_ == Stroke::None && (keys & Qt::ControlModifier)) return QStringLiteral("ZoomIn");
        if (stroke_ == Stroke::None && (keys & Qt::AltModifier)) return QStringLiteral("ZoomOut");
        return QStringLiteral("MoveImage");
    case ToolZoom: {
        const bool out =
            stroke_ == Stroke::ZoomBox ? zoomOut_ : (Globals().ZoomMode == 1) != bool(keys & Qt::AltModifier);
        double next = zoom_;
        const bool possible =
            out ? ZoomOutFactor(zoom_, canvasWidth_, canvasHeight_, next) : ZoomInFactor(zoom_, next);
        if (!possible) return QStringLiteral("ZoomDisable");
        return out ? QStringLiteral("ZoomOut") : QStringLiteral("ZoomIn");
    }
    default:
        return QString();
    }
}

void Canvas::UpdateToolCursor(Qt::KeyboardModifiers keys) {
    const QString name = ToolCursorName(keys);
    // Called on every move of the pointer: only a change reaches the view.
    if (name == cursorName_) return;
    cursorName_ = name;
    if (name.isEmpty())
        View()->unsetCursor();
    else
        View()->setCursor(ToolCursor(name));
}

// ------------------------------------------------------------------ strokes

void Canvas::CancelStroke() {
    const bool redraw = stroke_ != Stroke::None;
    if (stroke_ == Stroke::MoveSelection && Selection()) {
        Selection()->Left = 0;
        Selection()->Top = 0;
    }
    stroke_ = Stroke::None;
    strokePoints_.clear();
    pickSource_.reset();
    if (redraw) RefreshStroke();
}

void Canvas::RefreshStroke() {
    UpdateBufferImage();
    UpdateGraphics();
}

void Canvas::ToolPress(QMouseEvent* m) {
    if (!HasImage() || !Selection()) return;
    const Qt::KeyboardModifiers keys = m->modifiers();
    const QPointF at = m->position();
    const int32_t tool = WorkingMode();
    if (stroke_ == Stroke::Polygon && tool != ToolPolygon) CancelStroke();

    if (m->button() == Qt::MiddleButton && stroke_ == Stroke::None) {
        // The middle button moves the view whatever the tool.
        stroke_ = Stroke::MoveView;
        strokeButton_ = Qt::MiddleButton;
        viewStart_ = viewEnd_ = at;
        scrollStartH_ = hScroll_;
        scrollStartV_ = vScroll_;
        return;
    }
    if (m->button() != Qt::LeftButton) return;

    if (stroke_ == Stroke::Polygon) {
        const QPoint g = GridPointAt(at);
        if (strokePoints_.size() >= 3 &&
            ViewDistance(at, ImageToView(strokePoints_.first())) <= CloseDistance) {
            FinishPolygon();
            return;
        }
        if (strokePoints_.isEmpty() || strokePoints_.last() != g) strokePoints_.append(g);
        polygonPointer_ = g;
        RefreshStroke();
        return;
    }
    if (stroke_ != Stroke::None) return;

    viewStart_ = viewEnd_ = at;
    gridStart_ = gridEnd_ = GridPointAt(at);
    pixelStart_ = PixelAt(at);
    strokeDragged_ = false;
    strokeTool_ = tool;
    strokeButton_ = Qt::LeftButton;
    constrain_ = false;

    if (IsSelectionTool(tool)) {
        strokeMode_ = StrokeCombineMode(ToolCombineMode(tool, Globals()), keys);
        if (WouldMoveSelection(tool, strokeMode_, keys, pixelStart_)) {
            stroke_ = Stroke::MoveSelection;
        } else {
            switch (tool) {
            case ToolRectangle:
            case ToolEllipse:
                stroke_ = Stroke::Marquee;
                // A Shift that chose "add" does not also square the shape;
                // pressed again during the drag, or with nothing selected
                // yet, it does.
                shiftArmed_ = !((keys & Qt::ShiftModifier) && !Selection()->UseDefaultSetting());
                constrain_ = shiftArmed_ && (keys & Qt::ShiftModifier);
                break;
            case ToolPolygon:
                stroke_ = Stroke::Polygon;
                strokePoints_ = {gridStart_};
                polygonPointer_ = gridStart_;
                break;
            case ToolLasso:
                stroke_ = Stroke::Lasso;
                strokePoints_ = {gridStart_};
                break;
            default:
                stroke_ = Stroke::Click;
                break;
            }
        }
        UpdateToolCursor(keys);
        RefreshStroke();
        return;
    }

    switch (tool) {
    case ToolPickColor:
        stroke_ = Stroke::Pick;
        pickBackground_ = keys & Qt::AltModifier;
        PickColorAt(pixelStart_, pickBackground_);
        break;
    case ToolPaintBucket:
        PaintBucketClick(pixelStart_);
        break;
    case ToolGradient:
        stroke_ = Stroke::Gradient;
        break;
    case ToolMoveImage:
        if (keys & (Qt::ControlModifier | Qt::AltModifier)) {
            ZoomClick(at, !(keys & Qt::ControlModifier));
            break;
        }
        stroke_ = Stroke::MoveView;
        scrollStartH_ = hScroll_;
        scrollStartV_ = vScroll_;
        break;
    case ToolZoom:
        stroke_ = Stroke::ZoomBox;
        zoomOut_ = (Globals().ZoomMode == 1) != bool(keys & Qt::AltModifier);
        break;
    default:
        break;
    }
    UpdateToolCursor(keys);
}

void Canvas::ToolMove(QMouseEvent* m) {
    if (!HasImage() || !Selection()) return;
    const Qt::KeyboardModifiers keys = m->modifiers();
    const QPointF at = m->position();
    if (stroke_ == Stroke::Polygon && WorkingMode() != ToolPolygon) CancelStroke();
    if (stroke_ == Stroke::None) {
        UpdateToolCursor(keys);
        return;
    }
    if (stroke_ == Stroke::Polygon) {
        // No button is needed: the rubber line follows the pointer.
        const QPoint g = GridPointAt(at);
        if (g != polygonPointer_) {
            polygonPointer_ = g;
            RefreshStroke();
        }
        return;
    }
    viewEnd_ = at;
    gridEnd_ = GridPointAt(at);
    if (ViewDistance(viewStart_, viewEnd_) >= ClickSlop) strokeDragged_ = true;
    switch (stroke_) {
    case Stroke::Marquee:
        if (!(keys & Qt::ShiftModifier)) shiftArmed_ = true;
        constrain_ = shiftArmed_ && (keys & Qt::ShiftModifier);
        RefreshStroke();
        break;
    case Stroke::Lasso:
        if (strokePoints_.last() != gridEnd_) {
            strokePoints_.append(gridEnd_);
            RefreshStroke();
        }
        break;
    case Stroke::MoveSelection:
        if (Selection()->Left != gridEnd_.x() - gridStart_.x() ||
            Selection()->Top != gridEnd_.y() - gridStart_.y()) {
            // The history keeps the selection as it was before the drag.
            if (Selection()->Left == 0 && Selection()->Top == 0) document_.BeforeSelectionChanged(false);
            Selection()->Left = gridEnd_.x() - gridStart_.x();
            Selection()->Top = gridEnd_.y() - gridStart_.y();
            RefreshStroke();
        }
        break;
    case Stroke::MoveView:
        SetHoriVertPos(scrollStartH_ - (at.x() - viewStart_.x()), scrollStartV_ - (at.y() - viewStart_.y()));
        break;
    case Stroke::Gradient:
        constrain_ = keys & Qt::ShiftModifier;
        RefreshStroke();
        break;
    case Stroke::ZoomBox:
        RefreshStroke();
        break;
    case Stroke::Pick:
        PickColorAt(PixelAt(at), pickBackground_);
        break;
    default:
        break;
    }
}

void Canvas::ToolRelease(QMouseEvent* m) {
    if (!HasImage() || !Selection()) return;
    const Stroke stroke = stroke_;
    // A polygon's corners are set by presses; other strokes end with the
    // button that began them.
    if (stroke == Stroke::None || stroke == Stroke::Polygon || m->button() != strokeButton_) return;
    viewEnd_ = m->position();
    gridEnd_ = GridPointAt(viewEnd_);
    if (ViewDistance(viewStart_, viewEnd_) >= ClickSlop) strokeDragged_ = true;

    switch (stroke) {
    case Stroke::Marquee:
        constrain_ = shiftArmed_ && (m->modifiers() & Qt::ShiftModifier);
        FinishMarquee();
        break;
    case Stroke::Lasso:
        if (strokePoints_.last() != gridEnd_) strokePoints_.append(gridEnd_);
        FinishPolygon();
        break;
    case Stroke::Click:
        FinishClick();
        break;
    case Stroke::MoveSelection:
        FinishMoveSelection();
        break;
    case Stroke::ZoomBox: {
        stroke_ = Stroke::None;
        const MarqueeBox box = MarqueeFromDrag(gridStart_, gridEnd_, StyleRectFree, 0, 0, false);
        if (!zoomOut_ && strokeDragged_ && !box.IsEmpty())
            ZoomInMouseUp(box.Left, box.Top, box.Right, box.Bottom);
        else
            ZoomClick(viewStart_, zoomOut_);
        RefreshStroke();
        break;
    }
    case Stroke::Gradient: {
        stroke_ = Stroke::None;
        RefreshStroke();
        constrain_ = m->modifiers() & Qt::ShiftModifier;
        if (strokeDragged_) FillGradientStroke(pixelStart_, GradientEnd());
        break;
    }
    default:
        stroke_ = Stroke::None;
        pickSource_.reset();
        break;
    }
    UpdateToolCursor(m->modifiers());
}

void Canvas::ToolDoubleClick(QMouseEvent* m) {
    if (stroke_ != Stroke::Polygon || m->button() != Qt::LeftButton) {
        // Elsewhere the second click of a double click is one more press.
        ToolPress(m);
        return;
    }
    const QPoint g = GridPointAt(m->position());
    if (strokePoints_.isEmpty() || strokePoints_.last() != g) strokePoints_.append(g);
    FinishPolygon();
}

// ------------------------------------------------------------------ selection shapes

MarqueeBox Canvas::CurrentMarquee() const {
    const int32_t style = SelectionStyle();
    int32_t w = 0, h = 0;
    MarqueeSizeSettings(style, Globals(), w, h);
    return MarqueeFromDrag(gridStart_, gridEnd_, style, w, h, constrain_);
}

void Canvas::PrepareSelection(int32_t tool, int32_t mode) {
    const AppSettings& s = Globals();
    Selection()->SelectionMode = mode;
    Selection()->FeatherRadius = ToolFeatherRadius(tool, s);
    Selection()->SetAntiAlias(ToolAntiAlias(tool, s));
}

void Canvas::EmptyShapeClick() {
    if (strokeMode_ == SelectionModeNew && !Selection()->UseDefaultSetting()) CancelSelect();
}

void Canvas::FinishMarquee() {
    stroke_ = Stroke::None;
    const MarqueeBox box = CurrentMarquee();
    const int32_t style = SelectionStyle();
    RefreshStroke();
    // A shape wholly off the picture selects nothing: the same as a click.
    if (box.IsEmpty() || !QRect(QPoint(box.Left, box.Top), QPoint(box.Right - 1, box.Bottom - 1))
                              .intersects(QRect(0, 0, canvasWidth_, canvasHeight_))) {
        EmptyShapeClick();
        return;
    }
    PrepareSelection(strokeTool_, strokeMode_);
    const bool ellipse = style >= StyleEllipseFree && style <= StyleEllipseFixedRatio;
    if (ellipse)
        Selection()->AddEllipse(box.Left, box.Top, box.Right, box.Bottom);
    else
        Selection()->AddRectangle(box.Left, box.Top, box.Right, box.Bottom);
}

void Canvas::FinishPolygon() {
    const bool lasso = stroke_ == Stroke::Lasso;
    QList<QPoint> points = strokePoints_;
    stroke_ = Stroke::None;
    strokePoints_.clear();
    RefreshStroke();
    // Corners on one spot count once; fewer than three corners enclose nothing.
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (points.size() > 1 && points.first() == points.last()) points.removeLast();
    if (points.size() < 3 ||
        !QPolygon(points).boundingRect().intersects(QRect(0, 0, canvasWidth_, canvasHeight_))) {
        EmptyShapeClick();
        return;
    }
    PrepareSelection(strokeTool_, strokeMode_);
    const AppSettings& s = Globals();
    Selection()->AddPolygon(points, lasso ? s.LassoFillMode : s.PolyFillMode);
}

void Canvas::FinishClick() {
    stroke_ = Stroke::None;
    if (!InsideImage(pixelStart_)) return;
    PrepareSelection(strokeTool_, strokeMode_);
    if (strokeTool_ == ToolRowAndCol) {
        int32_t kind = LineBoth;
        switch (SelectionStyleOf(ToolRowAndCol, Globals())) {
        case StyleSingleRow:
            kind = LineRow;
            break;
        case StyleSingleColumn:
            kind = LineColumn;
            break;
        default:
            break;
        }
        Selection()->AddLine(pixelStart_.x(), pixelStart_.y(), kind);
    } else if (strokeTool_ == ToolMagicWand) {
        const AppSettings& s = Globals();
        Selection()->AddMagicWnd(*Image(), pixelStart_.x(), pixelStart_.y(), std::max(s.MagicWandTorlance, 0),
                                 s.MagicWandContious, true);
    }
}

void Canvas::FinishMoveSelection() {
    stroke_ = Stroke::None;
    if (Selection()->Left == 0 && Selection()->Top == 0) {
        if (strokeDragged_) return; // dragged away and back again
        // Pressed inside the selection but not moved: an ordinary click of
        // the tool.
        switch (strokeTool_) {
        case ToolRowAndCol:
        case ToolMagicWand:
            FinishClick();
            break;
        default:
            EmptyShapeClick();
            break;
        }
        return;
    }
    // The drag settles into the mask; the part moved off the canvas is gone.
    Selection()->ResetSelectionPosoition();
    Selection()->CheckSeletion(true);
    Selection()->UpdateSelectionRegion();
    document_.SelectionChanged(false);
}

// ------------------------------------------------------------------ colour tools

void Canvas::PickColorAt(QPoint pixel, bool background) {
    if (!InsideImage(pixel)) return;
    const CImage* source = Image();
    const uint32_t f = Image()->PixelFormat;
    if (f != PixelFormat8bppGray && f != PixelFormat8bppIndexed && f != PixelFormat24bppRGB &&
        f != PixelFormat32bppARGB) {
        // The other formats are read through their colours; one copy serves
        // a whole drag.
        if (!pickSource_) {
            QImage shown(canvasWidth_, canvasHeight_, QImage::Format_RGB32);
            shown.fill(Qt::white);
            {
                QPainter p(&shown);
                Image()->Render(p, 0, 0);
            }
            pickSource_ = std::make_unique<CImage>();
            if (!pickSource_->LoadPictureFromStdPicture(shown.convertToFormat(QImage::Format_RGB888))) {
                pickSource_.reset();
                return;
            }
        }
        source = pickSource_.get();
    }
    int32_t r = 0, g = 0, b = 0, a = 0;
    if (!source->GetPixelColor(pixel.x(), pixel.y(), r, g, b, a, std::clamp(Globals().SampleSize, 0, 2)))
        return;
    const int32_t colour = MakeColorRef(r, g, b);
    if (background) {
        Globals().SystemBackColor = colour;
        emit BackColorPicked(colour);
    } else {
        Globals().SystemForeColor = colour;
        emit ForeColorPicked(colour);
    }
}

void Canvas::PaintBucketClick(QPoint pixel) {
    if (!InsideImage(pixel)) return;
    const AppSettings& s = Globals();
    BucketOptions options;
    options.FillContent = s.PaintBucketFillContent == 1 ? 1 : 0;
    options.Color = s.SystemForeColor;
    options.BlendMode = s.PaintBucketBlendMode;
    options.OpacityPercent = s.PaintBuckerOpacity;
    options.Tolerance = s.PaintBucketTorlance;
    options.Contiguous = s.PaintBucketContious;
    if (options.FillContent == 1) {
        if (BucketPattern().isNull()) {
            MessageBox(QStringLiteral("没有可用的图案，请先在选项栏中选择图案文件。"), 0, QString(),
                       ButtonsOk, IconExclamation);
            return;
        }
        options.Pattern = &BucketPattern();
    }
    // The bucket changes the selection for a moment: run as one command, a
    // failure puts both back.
    GuardMemory([&] {
        return document_.Run(
            [&](CImage& image) { return PaintBucketAt(image, *Selection(), pixel.x(), pixel.y(), options); });
    });
    RenewOutline();
    RefreshStroke();
}

bool Canvas::FillGradientStroke(QPoint, QPoint) {
    if (!HasImage()) return false;
    if (IsBitmapFormat(Image()->PixelFormat)) {
        MessageBox(QStringLiteral("不能使用渐变工具,因为他不用于位图图像(将图像转换为灰度模式再编辑)."), 0,
                   QString(), ButtonsOk, IconExclamation);
        return false;
    }
    if (IsIndexedFormat(Image()->PixelFormat)) {
        MessageBox(
            QStringLiteral("不能使用渐变工具,因为他不用于索引颜色图像(将图像转换为RGB颜色模式再编辑)."), 0,
            QString(), ButtonsOk, IconExclamation);
        return false;
    }
    // The gradient fill itself has not been written yet.
    MessageBox(QStringLiteral("很抱歉，“渐变”命令在这个版本中还不能使用。"), 0, QStringLiteral("提示"),
               ButtonsOk, IconInformation);
    return false;
}

QPoint Canvas::GradientEnd() const {
    const QPoint end = PixelAt(viewEnd_);
    return constrain_ ? ConstrainTo45(pixelStart_, end) : end;
}

// ------------------------------------------------------------------ view tools

void Canvas::ZoomClick(QPointF viewPos, bool out) {
    const double x = (viewPos.x() - showLeft_ + hScroll_) / zoom_;
    const double y = (viewPos.y() - showTop_ + vScroll_) / zoom_;
    if (!SetZoomFactor(out ? 0 : 1)) return;
    // The point clicked comes to the middle of the view.
    SetHoriVertPos(x * zoom_ - bufferWidth_ / 2.0, y * zoom_ - bufferHeight_ / 2.0);
}

bool Canvas::ZoomInMouseUp(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    if (!HasImage() || right <= left || bottom <= top) return false;
    const double cx = (left + right) / 2.0;
    const double cy = (top + bottom) / 2.0;
    // Twice: scroll bars that come with the new factor narrow the view, and
    // the second round fits the box into what is left.
    for (int round = 0; round < 2; ++round) {
        const double factor = std::clamp(std::min(static_cast<double>(bufferWidth_) / (right - left),
                                                  static_cast<double>(bufferHeight_) / (bottom - top)),
                                         0.02, 20.0);
        if (factor == zoom_) break;
        if (!SetZoomFactor(2, factor)) return false;
    }
    SetHoriVertPos(cx * zoom_ - bufferWidth_ / 2.0, cy * zoom_ - bufferHeight_ / 2.0);
    return true;
}

// ------------------------------------------------------------------ rubber bands

void Canvas::DrawStroke(QPainter& p) const {
    if (stroke_ == Stroke::None || stroke_ == Stroke::MoveSelection || stroke_ == Stroke::MoveView ||
        stroke_ == Stroke::Click || stroke_ == Stroke::Pick)
        return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setBrush(Qt::NoBrush);
    QPen under(Qt::white, 1);
    QPen over(Qt::black, 1, Qt::CustomDashLine);
    over.setDashPattern({4, 4});
    auto twice = [&](const auto& draw) {
        p.setPen(under);
        draw();
        p.setPen(over);
        draw();
    };
    // Lines between pixel corners fall on the corner's own screen pixel.
    const auto corner = [this](QPoint g) { return ImageToView(QPointF(g)) - QPointF(0.5, 0.5); };
    switch (stroke_) {
    case Stroke::Marquee: {
        const MarqueeBox box = CurrentMarquee();
        if (box.IsEmpty()) break;
        const QRectF r(corner(QPoint(box.Left, box.Top)), corner(QPoint(box.Right, box.Bottom)));
        const int32_t style = SelectionStyle();
        if (style >= StyleEllipseFree && style <= StyleEllipseFixedRatio) {
            p.setRenderHint(QPainter::Antialiasing, true);
            twice([&] { p.drawEllipse(r); });
        } else {
            twice([&] { p.drawRect(r); });
        }
        break;
    }
    case Stroke::Polygon:
    case Stroke::Lasso: {
        QPolygonF line;
        for (const QPoint& g : strokePoints_)
            line << corner(g);
        if (stroke_ == Stroke::Polygon) line << corner(polygonPointer_);
        twice([&] { p.drawPolyline(line); });
        break;
    }
    case Stroke::ZoomBox: {
        if (zoomOut_ || !strokeDragged_) break;
        const MarqueeBox box = MarqueeFromDrag(gridStart_, gridEnd_, StyleRectFree, 0, 0, false);
        if (box.IsEmpty()) break;
        twice([&] {
            p.drawRect(QRectF(corner(QPoint(box.Left, box.Top)), corner(QPoint(box.Right, box.Bottom))));
        });
        break;
    }
    case Stroke::Gradient: {
        if (!strokeDragged_) break;
        const QPointF a = ImageToView(QPointF(pixelStart_) + QPointF(0.5, 0.5));
        const QPointF b = ImageToView(QPointF(GradientEnd()) + QPointF(0.5, 0.5));
        p.setRenderHint(QPainter::Antialiasing, true);
        twice([&] {
            p.drawLine(a, b);
            p.drawEllipse(a, 2.5, 2.5);
        });
        break;
    }
    default:
        break;
    }
    p.restore();
}

} // namespace vm
