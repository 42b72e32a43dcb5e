#include "canvas/Canvas.h"

#include "core/AppSettings.h"
#include "core/ColorRef.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/StartUp.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vm {

// The surface the composed picture is presented on; nothing else paints it.
class CanvasView : public QWidget {
  public:
    explicit CanvasView(Canvas* owner) : QWidget(owner), owner_(owner) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setMouseTracking(true);
        setFocusPolicy(Qt::ClickFocus);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.drawImage(0, 0, owner_->Buffer());
    }
    void mouseMoveEvent(QMouseEvent* e) override { owner_->ViewMouse(e); }
    void mousePressEvent(QMouseEvent* e) override { owner_->ViewMouse(e); }
    void mouseReleaseEvent(QMouseEvent* e) override { owner_->ViewMouse(e); }
    void mouseDoubleClickEvent(QMouseEvent* e) override { owner_->ViewMouse(e); }
    void leaveEvent(QEvent* e) override { owner_->ViewMouse(e); }
    void wheelEvent(QWheelEvent* e) override {
        const QPoint d = e->angleDelta();
        const bool horizontal = d.x() != 0 || (e->modifiers() & Qt::ShiftModifier);
        owner_->ViewWheel(d.y() != 0 ? d.y() : d.x(), horizontal);
        e->accept();
    }

  private:
    Canvas* owner_;
};

// A ruler beside the view: image positions, ticks by the stride table of the
// zoom, and a thin marker that follows the pointer.
class CanvasRuler : public QWidget {
  public:
    CanvasRuler(Canvas* owner, Qt::Orientation o) : QWidget(owner), owner_(owner), orientation_(o) {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const bool horizontal = orientation_ == Qt::Horizontal;
        const int length = horizontal ? width() : height();
        p.fillRect(rect(), QColor(0xF4, 0xF4, 0xF4));
        p.setPen(QColor(0x40, 0x40, 0x40));
        auto line = [&](double along, int from, int to) {
            if (horizontal)
                p.drawLine(QPointF(along, from), QPointF(along, to));
            else
                p.drawLine(QPointF(from, along), QPointF(to, along));
        };
        // The baseline at depth 16.
        if (horizontal)
            p.drawLine(0, 16, length, 16);
        else
            p.drawLine(16, 0, 16, length);
        if (!owner_->HasImage()) return;

        const double zoom = owner_->ZoomFactor();
        const double scroll = horizontal ? owner_->HoriScrollValue() : owner_->VertScrollValue();
        const int show = horizontal ? owner_->ShowLeft() : owner_->ShowTop();
        const int extent = horizontal ? owner_->CanvasWidth() : owner_->CanvasHeight();
        const RulerStrides strides = RulerStridesFor(zoom);
        QFont font = p.font();
        font.setPixelSize(9);
        p.setFont(font);
        const int first = std::max(0, static_cast<int>(std::floor((scroll - show) / zoom)) - 1);
        const int last = std::min(extent, static_cast<int>(std::ceil((scroll - show + length) / zoom)) + 1);
        // Only positions on the minor stride can carry a tick.
        const int step = std::max(1, strides.Minor);
        for (int pos = first - first % step; pos <= last; pos += step) {
            const int tick = RulerTickAt(pos, strides);
            if (!tick) continue;
            const double at = show + pos * zoom - scroll;
            if (tick == 3) {
                line(at, 0, 16);
                const QString text = QString::number(pos);
                if (horizontal) {
                    p.drawText(QPointF(at + 2, 9), text);
                } else {
                    p.save();
                    p.translate(9, at + 2);
                    p.rotate(90);
                    p.drawText(QPointF(0, 0), text);
                    p.restore();
                }
            } else {
                line(at, tick == 2 ? 11 : 13, 16);
            }
        }
        // The pointer's marker.
        const QPoint ptr = owner_->PointerPosition();
        if (ptr.x() >= 0) {
            p.setPen(QColor(0xD0, 0x20, 0x20));
            line((horizontal ? ptr.x() : ptr.y()) + 0.5, 0, 16);
        }
    }

  private:
    Canvas* owner_;
    Qt::Orientation orientation_;
};

// ------------------------------------------------------------------ set-up

Canvas::Canvas(QWidget* parent)
    : QWidget(parent), background_(0x80, 0x80, 0x80), view_(new CanvasView(this)),
      hRuler_(new CanvasRuler(this, Qt::Horizontal)), vRuler_(new CanvasRuler(this, Qt::Vertical)),
      corner_(new QWidget(this)), hBar_(new QScrollBar(Qt::Horizontal, this)),
      vBar_(new QScrollBar(Qt::Vertical, this)), strip_(new QWidget(this)), zoomBox_(new QLineEdit(strip_)),
      status_(new QLabel(strip_)) {
    document_.SetListener(this);
    setFocusPolicy(Qt::StrongFocus);
    corner_->setAutoFillBackground(true);
    corner_->setPalette(QPalette(QColor(0xF4, 0xF4, 0xF4)));
    zoomBox_->setFixedWidth(72);
    zoomBox_->setAlignment(Qt::AlignRight);
    // Digits, one point and a closing percent sign.
    zoomBox_->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("\\d{0,5}(\\.\\d{0,2})?%?")), zoomBox_));
    connect(zoomBox_, &QLineEdit::editingFinished, this, [this] { CommitZoomBox(zoomBox_->text()); });
    status_->setTextFormat(Qt::PlainText);
    connect(hBar_, &QScrollBar::valueChanged, this, [this](int v) { SetHoriVertPos(v, vScroll_); });
    connect(vBar_, &QScrollBar::valueChanged, this, [this](int v) { SetHoriVertPos(hScroll_, v); });
    antTimer_.setInterval(AntInterval);
    connect(&antTimer_, &QTimer::timeout, this, [this] { OnAntTick(); });
    zoomBox_->setText(ZoomPercentText(zoom_));
    AdjustScrollAndShowRange();
    AdjustMemoryBitmap(true);
}

Canvas::~Canvas() {
    DisposeAll();
    document_.SetListener(nullptr);
    RestoreCursor();
}

QWidget* Canvas::View() const {
    return view_;
}

void Canvas::SetShowRuler(bool value) {
    if (showRuler_ == value) return;
    showRuler_ = value;
    AdjustScrollAndShowRange();
    AdjustMemoryBitmap(true);
}

// ------------------------------------------------------------------ documents

void Canvas::DisposeAll() {
    CancelStroke();
    antTimer_.stop();
    document_.DisposeAll();
    ant_.reset();
    canvasWidth_ = canvasHeight_ = 0;
    hScroll_ = vScroll_ = hMax_ = vMax_ = 0;
}

void Canvas::ShowNewDocument() {
    canvasWidth_ = document_.Width();
    canvasHeight_ = document_.Height();
    ant_ = std::make_unique<CMarchingAnt>();
    ant_->Init(canvasWidth_, canvasHeight_, Globals().MarchingAntStartPos);
    antTimer_.stop();
    ShowImageAtBestPosition();
    RenewOutline();
    UpdateSelectionRange();
}

void Canvas::FollowSize() {
    canvasWidth_ = document_.Width();
    canvasHeight_ = document_.Height();
    if (ant_) ant_->Init(canvasWidth_, canvasHeight_, Globals().MarchingAntStartPos);
    AdjustScrollAndShowRange();
    RenewOutline();
}

bool Canvas::LoadPictureFromFile(const QString& fileName, int32_t frameIndex) {
    DisposeAll();
    const double start = GetTimeStamp();
    if (!document_.LoadPictureFromFile(fileName, frameIndex)) {
        UpdateBufferImage();
        UpdateGraphics();
        return false;
    }
    ShowNewDocument();
    DrawTextToPic(QString::number(static_cast<int64_t>(GetTimeStamp() - start)) + QStringLiteral("ms"));
    return true;
}

bool Canvas::LoadPictureFormStdPicture(const QImage& picture) {
    DisposeAll();
    const double start = GetTimeStamp();
    if (!document_.LoadPictureFromStdPicture(picture)) {
        UpdateBufferImage();
        UpdateGraphics();
        return false;
    }
    ShowNewDocument();
    DrawTextToPic(QString::number(static_cast<int64_t>(GetTimeStamp() - start)) + QStringLiteral("ms"));
    return true;
}

bool Canvas::CopyFormCanvas(const Canvas& other) {
    if (!other.HasImage() || &other == this) return false;
    DisposeAll();
    if (!document_.CopyFrom(other.document_)) return false;
    ShowNewDocument();
    return true;
}

// ------------------------------------------------------------------ zoom and layout

bool Canvas::SetZoomFactor(int mode, double factor) {
    if (!HasImage()) return false;
    double next = zoom_;
    switch (mode) {
    case 2:
        if (!AcceptsZoomFactor(factor, canvasWidth_, canvasHeight_)) return false;
        next = factor;
        break;
    case 1:
        if (!ZoomInFactor(zoom_, next)) return false;
        break;
    case 0:
        if (!ZoomOutFactor(zoom_, canvasWidth_, canvasHeight_, next)) return false;
        break;
    default:
        return false;
    }
    if (next != zoom_) ApplyZoom(next, true);
    return true;
}

void Canvas::ApplyZoom(double factor, bool keepCentre) {
    // The image point in the middle of the view, before the change.
    const double cx = (bufferWidth_ / 2.0 - showLeft_ + hScroll_) / zoom_;
    const double cy = (bufferHeight_ / 2.0 - showTop_ + vScroll_) / zoom_;
    const bool changed = factor != zoom_;
    zoom_ = factor;
    zoomBox_->setText(ZoomPercentText(zoom_));
    AdjustScrollAndShowRange();
    if (keepCentre) {
        hScroll_ = ClampScroll(cx * zoom_ - bufferWidth_ / 2.0, hMax_);
        vScroll_ = ClampScroll(cy * zoom_ - bufferHeight_ / 2.0, vMax_);
    } else {
        // Centred picture.
        hScroll_ = ClampScroll(std::trunc(hMax_ / 2), hMax_);
        vScroll_ = ClampScroll(std::trunc(vMax_ / 2), vMax_);
    }
    SyncScrollBars();
    RenewOutline();
    AdjustMemoryBitmap(false);
    UpdateBufferImage();
    UpdateGraphics();
    if (changed) emit ViewChanged();
}

void Canvas::ShowImageAtBestPosition() {
    AdjustScrollAndShowRange();
    // The view as it is without scroll bars decides.
    const int w = std::max(1, width() - (showRuler_ ? RulerDepth : 0));
    const int h = std::max(1, height() - StripHeight - (showRuler_ ? RulerDepth : 0));
    ApplyZoom(BestPositionFactor(canvasWidth_, canvasHeight_, w, h), false);
}

void Canvas::ShowImageAtItsOriginalSize() {
    if (!HasImage()) return;
    ApplyZoom(1.0, false);
}

void Canvas::ShowImageAtFitToScreen() {
    if (!HasImage()) return;
    const int w = std::max(1, width() - (showRuler_ ? RulerDepth : 0));
    const int h = std::max(1, height() - StripHeight - (showRuler_ ? RulerDepth : 0));
    const double ratio =
        std::min(static_cast<double>(w) / canvasWidth_, static_cast<double>(h) / canvasHeight_);
    // Held to the zoom range: a tiny picture stops at 2000%, a huge one at 2%.
    ApplyZoom(std::clamp(ratio, 0.02, 20.0), false);
}

void Canvas::ShowImageAtFillScreen() {
    if (!HasImage()) return;
    const int w = std::max(1, width() - (showRuler_ ? RulerDepth : 0));
    const int h = std::max(1, height() - StripHeight - (showRuler_ ? RulerDepth : 0));
    const double ratio =
        std::max(static_cast<double>(w) / canvasWidth_, static_cast<double>(h) / canvasHeight_);
    ApplyZoom(std::clamp(ratio, 0.02, 20.0), false);
}

void Canvas::GetVisibleRect(int32_t& left, int32_t& top, int32_t& right, int32_t& bottom) const {
    VisibleAxis(canvasWidth_, zoom_, bufferWidth_, hScroll_, hMax_, left, right);
    VisibleAxis(canvasHeight_, zoom_, bufferHeight_, vScroll_, vMax_, top, bottom);
}

void Canvas::GetBestFitInfo(int32_t maxWidth, int32_t maxHeight, int32_t& w, int32_t& h, int32_t& x,
                            int32_t& y) const {
    vm::GetBestFitInfo(canvasWidth_, canvasHeight_, maxWidth, maxHeight, w, h, x, y);
}

QPoint Canvas::ViewToImagePoint(const QPoint& p) const {
    return QPoint(ViewToImage(p.x(), showLeft_, hScroll_, zoom_),
                  ViewToImage(p.y(), showTop_, vScroll_, zoom_));
}

void Canvas::SetHoriVertPos(double x, double y) {
    x = ClampScroll(x, hMax_);
    y = ClampScroll(y, vMax_);
    if (x == hScroll_ && y == vScroll_) return;
    hScroll_ = x;
    vScroll_ = y;
    SyncScrollBars();
    UpdateBufferImage();
    UpdateGraphics();
    emit ViewChanged();
}

void Canvas::SyncScrollBars() {
    const QSignalBlocker bh(hBar_), bv(vBar_);
    hBar_->setRange(0, static_cast<int>(std::ceil(hMax_)));
    hBar_->setPageStep(std::max(1, bufferWidth_));
    hBar_->setSingleStep(20);
    hBar_->setValue(static_cast<int>(std::lround(hScroll_)));
    vBar_->setRange(0, static_cast<int>(std::ceil(vMax_)));
    vBar_->setPageStep(std::max(1, bufferHeight_));
    vBar_->setSingleStep(20);
    vBar_->setValue(static_cast<int>(std::lround(vScroll_)));
}

void Canvas::AdjustScrollAndShowRange() {
    const int ruler = showRuler_ ? RulerDepth : 0;
    const int availW = std::max(0, width() - ruler);
    const int availH = std::max(0, height() - StripHeight - ruler);
    const int barW = vBar_->sizeHint().width();
    const int barH = hBar_->sizeHint().height();
    bool needH = false, needV = false;
    int vw = availW, vh = availH;
    if (HasImage()) {
        // A bar on one axis narrows the other; three rounds settle both.
        for (int round = 0; round < 3; ++round) {
            vw = std::max(0, availW - (needV ? barW : 0));
            vh = std::max(0, availH - (needH ? barH : 0));
            needH = DisplayedExtent(canvasWidth_, zoom_) > vw;
            needV = DisplayedExtent(canvasHeight_, zoom_) > vh;
        }
        vw = std::max(0, availW - (needV ? barW : 0));
        vh = std::max(0, availH - (needH ? barH : 0));
        const AxisLayout x = FitAxis(canvasWidth_, zoom_, vw);
        const AxisLayout y = FitAxis(canvasHeight_, zoom_, vh);
        hMax_ = x.ScrollMax;
        vMax_ = y.ScrollMax;
        showLeft_ = x.Show;
        showTop_ = y.Show;
        showWidth_ = x.ShowExtent;
        showHeight_ = y.ShowExtent;
    } else {
        hMax_ = vMax_ = 0;
        showLeft_ = showTop_ = showWidth_ = showHeight_ = 0;
    }
    hScroll_ = ClampScroll(hScroll_, hMax_);
    vScroll_ = ClampScroll(vScroll_, vMax_);
    bufferWidth_ = vw;
    bufferHeight_ = vh;

    view_->setGeometry(ruler, ruler, vw, vh);
    hRuler_->setVisible(showRuler_);
    vRuler_->setVisible(showRuler_);
    corner_->setVisible(showRuler_);
    if (showRuler_) {
        hRuler_->setGeometry(ruler, 0, vw, RulerDepth);
        vRuler_->setGeometry(0, ruler, RulerDepth, vh);
        corner_->setGeometry(0, 0, RulerDepth, RulerDepth);
    }
    hBar_->setVisible(needH);
    vBar_->setVisible(needV);
    hBar_->setGeometry(ruler, ruler + vh, vw, barH);
    vBar_->setGeometry(ruler + vw, ruler, barW, vh);
    strip_->setGeometry(0, height() - StripHeight, width(), StripHeight);
    zoomBox_->setGeometry(2, 2, 72, StripHeight - 4);
    status_->setGeometry(82, 2, std::max(0, width() - 86), StripHeight - 4);
    SyncScrollBars();
}

void Canvas::AdjustMemoryBitmap(bool repaint) {
    const int w = std::max(1, bufferWidth_), h = std::max(1, bufferHeight_);
    if (buffer_.width() != w || buffer_.height() != h)
        buffer_ = QImage(w, h, QImage::Format_ARGB32_Premultiplied);
    // The checkerboard: squares of CheckBoradSize pixels in the two colours.
    const AppSettings& s = Globals();
    const int cell = std::clamp(s.CheckBoradSize, 1, 256);
    QImage tile(2 * cell, 2 * cell, QImage::Format_ARGB32_Premultiplied);
    tile.fill(ColorRefToQColor(s.CheckBoardFirstColor));
    {
        QPainter p(&tile);
        const QColor second = ColorRefToQColor(s.CheckBoardSecondColor);
        p.fillRect(cell, 0, cell, cell, second);
        p.fillRect(0, cell, cell, cell, second);
    }
    checker_ = QBrush(tile);
    if (repaint) {
        UpdateBufferImage();
        UpdateGraphics();
    }
}

// ------------------------------------------------------------------ painting

void Canvas::UpdateBufferImage() {
    Compose(Image());
}

void Canvas::UpdateBufferImageFromImage(const CImage* other) {
    Compose(other ? other : Image());
    UpdateGraphics();
}

void Canvas::Compose(const CImage* picture) {
    if (buffer_.isNull()) return;
    QPainter p(&buffer_);
    p.setCompositionMode(QPainter::CompositionMode_Source);
    p.fillRect(buffer_.rect(), background_);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (!picture || !picture->Handle() || !HasImage()) return;

    const AxisDraw x = DrawAxis(canvasWidth_, zoom_, bufferWidth_, hScroll_, hMax_);
    const AxisDraw y = DrawAxis(canvasHeight_, zoom_, bufferHeight_, vScroll_, vMax_);
    const uint32_t f = picture->PixelFormat;
    if (f == PixelFormat32bppARGB || f == PixelFormat8bppIndexed || f == PixelFormat4bppIndexed) {
        // The grid stands still behind a scrolling picture: it is aligned to
        // where the picture shows, not to the picture itself.
        p.setBrushOrigin(showLeft_, showTop_);
        p.fillRect(QRect(showLeft_, showTop_, showWidth_, showHeight_), checker_);
        p.setBrushOrigin(0, 0);
    }
    picture->Render(p, showLeft_ + static_cast<int32_t>(std::lround(x.DestStart)),
                    showTop_ + static_cast<int32_t>(std::lround(y.DestStart)),
                    static_cast<int32_t>(std::lround(x.DestExtent)),
                    static_cast<int32_t>(std::lround(y.DestExtent)), x.SrcStart, y.SrcStart, x.SrcExtent,
                    y.SrcExtent, InterpolationNearestNeighbor, PixelOffsetHalf, 255, false);
    if (ant_) {
        const AppSettings& s = Globals();
        // A selection being dragged shows where it would land.
        const int32_t dx = Selection() ? static_cast<int32_t>(std::lround(Selection()->Left * zoom_)) : 0;
        const int32_t dy = Selection() ? static_cast<int32_t>(std::lround(Selection()->Top * zoom_)) : 0;
        ant_->PaintToDC(p, showLeft_ - static_cast<int32_t>(std::trunc(hScroll_ + 0.5)) + dx,
                        showTop_ - static_cast<int32_t>(std::trunc(vScroll_ + 0.5)) + dy, false,
                        ColorRefToQColor(s.MarchingAntColorOne), ColorRefToQColor(s.MarchingAntColorTwo));
    }
    DrawStroke(p);
}

void Canvas::UpdateGraphics() {
    view_->update();
    if (showRuler_) {
        hRuler_->update();
        vRuler_->update();
    }
}

void Canvas::OnAntTick() {
    if (!ant_ || !ant_->Visible || ant_->IsEmptyRgn() || !isVisible()) return;
    ant_->RotateBrush();
    // The outline's pixels are all covered by the two opaque colours, so the
    // next phase is painted straight over the last one.
    QPainter p(&buffer_);
    const AppSettings& s = Globals();
    const int32_t dx = Selection() ? static_cast<int32_t>(std::lround(Selection()->Left * zoom_)) : 0;
    const int32_t dy = Selection() ? static_cast<int32_t>(std::lround(Selection()->Top * zoom_)) : 0;
    ant_->PaintToDC(p, showLeft_ - static_cast<int32_t>(std::trunc(hScroll_ + 0.5)) + dx,
                    showTop_ - static_cast<int32_t>(std::trunc(vScroll_ + 0.5)) + dy, false,
                    ColorRefToQColor(s.MarchingAntColorOne), ColorRefToQColor(s.MarchingAntColorTwo));
    p.end();
    view_->update();
}

void Canvas::RenewOutline() {
    if (!ant_ || !Selection()) return;
    ant_->SetScaleFactor(zoom_);
    ant_->Offset(0, 0);
    ant_->SetMarchingAntRegion(*Selection());
    if (ant_->IsEmptyRgn())
        antTimer_.stop();
    else if (!antTimer_.isActive())
        antTimer_.start();
}

void Canvas::resizeEvent(QResizeEvent*) {
    AdjustScrollAndShowRange();
    AdjustMemoryBitmap(true);
}

// ------------------------------------------------------------------ input

void Canvas::ViewMouse(QEvent* event) {
    if (event->type() == QEvent::Leave) {
        pointer_ = QPoint(-1, -1);
        if (showRuler_) {
            hRuler_->update();
            vRuler_->update();
        }
        return;
    }
    auto* m = static_cast<QMouseEvent*>(event);
    pointer_ = m->position().toPoint();
    if (showRuler_) {
        hRuler_->update();
        vRuler_->update();
    }
    if (!HasImage()) return;
    const QPoint at = ViewToImagePoint(pointer_);
    // A stroke ends in a command (a new selection, a fill): running out of
    // memory there is reported, never let through the event loop.
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        emit PointerPressed(at, m->button());
        GuardMemory([&] { ToolPress(m); });
        break;
    case QEvent::MouseButtonDblClick:
        emit PointerPressed(at, m->button());
        GuardMemory([&] { ToolDoubleClick(m); });
        break;
    case QEvent::MouseButtonRelease:
        emit PointerReleased(at, m->button());
        GuardMemory([&] { ToolRelease(m); });
        break;
    default:
        emit PointerMoved(at, m->buttons());
        GuardMemory([&] { ToolMove(m); });
        break;
    }
}

void Canvas::ViewWheel(int delta, bool horizontal) {
    const double step = delta / 120.0 * 60.0;
    if (horizontal)
        SetHoriVertPos(hScroll_ - step, vScroll_);
    else
        SetHoriVertPos(hScroll_, vScroll_ - step);
}

void Canvas::keyPressEvent(QKeyEvent* e) {
    if (IsPolygonOpen()) {
        // The corners of a polygon being set: Enter closes it, Escape drops
        // it, Backspace takes back the last corner.
        switch (e->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            FinishPolygon();
            return;
        case Qt::Key_Escape:
            CancelStroke();
            return;
        case Qt::Key_Backspace:
            if (strokePoints_.size() > 1)
                strokePoints_.removeLast();
            else
                CancelStroke();
            RefreshStroke();
            return;
        default:
            break;
        }
    }
    if (e->key() == Qt::Key_Shift || e->key() == Qt::Key_Alt || e->key() == Qt::Key_Control) {
        UpdateToolCursor(e->modifiers());
        QWidget::keyPressEvent(e);
        return;
    }
    if (e->key() == Qt::Key_Delete && e->modifiers() == Qt::NoModifier) {
        emit DeleteRequested();
        return;
    }
    if (e->modifiers() == Qt::NoModifier && QApplication::mouseButtons() == Qt::NoButton) {
        static const std::pair<int, int> tools[] = {{Qt::Key_M, 0}, {Qt::Key_Q, 1}, {Qt::Key_A, 2},
                                                    {Qt::Key_L, 3}, {Qt::Key_W, 5}, {Qt::Key_V, 6},
                                                    {Qt::Key_H, 7}};
        for (const auto& t : tools) {
            if (e->key() == t.first) {
                emit ToolKeyPressed(t.second);
                return;
            }
        }
    }
    QWidget::keyPressEvent(e);
}

void Canvas::keyReleaseEvent(QKeyEvent* e) {
    if (e->key() == Qt::Key_Shift || e->key() == Qt::Key_Alt || e->key() == Qt::Key_Control)
        UpdateToolCursor(e->modifiers());
    QWidget::keyReleaseEvent(e);
}

// ------------------------------------------------------------------ selection

bool Canvas::SelectAll() {
    return document_.SelectAll();
}

bool Canvas::InvertSelect() {
    return document_.InvertSelect();
}

bool Canvas::CancelSelect() {
    return document_.CancelSelect();
}

bool Canvas::SelectSimilar(int32_t tolerance) {
    return document_.SelectSimilar(tolerance);
}

void Canvas::SetAntVisible(bool value) {
    if (!ant_) return;
    ant_->Visible = value;
    UpdateBufferImage();
    UpdateGraphics();
}

void Canvas::UpdateSelectionRange() {
    if (!HasImage()) return;
    int32_t w = 0, h = 0;
    Image()->GetSelectionRange(w, h);
    emit SelectionRangeChanged(w, h);
}

// ------------------------------------------------------------------ status strip

void Canvas::DrawTextToPic(const QString& text) {
    statusText_ = text;
    status_->setText(text);
}

QString Canvas::ZoomBoxText() const {
    return zoomBox_->text();
}

void Canvas::CommitZoomBox(const QString& text) {
    if (committingZoom_ || !HasImage()) return;
    committingZoom_ = true;
    const double min = MinZoomPercent(canvasWidth_, canvasHeight_);
    const QString range = QStringLiteral("无效数字项，要求") + QString::number(min, 'f', 2) +
                          QStringLiteral("和2000%之间的整数。");
    double percent = 0;
    switch (ParseZoomBox(text, min, percent)) {
    case ZoomBoxInput::NotANumber:
        zoomBox_->setText(ZoomPercentText(zoom_));
        MessageBox(range + QStringLiteral("已插入前一个值。"), 0, QString(), ButtonsOk, IconExclamation);
        break;
    case ZoomBoxInput::OutOfRange:
        zoomBox_->setText(ZoomPercentText(percent / 100.0));
        MessageBox(range + QStringLiteral("已插入最接近的数值。"), 0, QString(), ButtonsOk, IconExclamation);
        if (!SetZoomFactor(2, percent / 100.0)) zoomBox_->setText(ZoomPercentText(zoom_));
        break;
    case ZoomBoxInput::Accepted:
        if (!SetZoomFactor(2, percent / 100.0)) {
            MessageBox(QStringLiteral("无法缩放到该比例，已恢复至原始的缩放系数."), 0, QString(), ButtonsOk,
                       IconExclamation);
        }
        zoomBox_->setText(ZoomPercentText(zoom_));
        break;
    }
    committingZoom_ = false;
}

// ------------------------------------------------------------------ history

bool Canvas::Undo() {
    return document_.Undo() != 0;
}

bool Canvas::Redo() {
    return document_.Redo() != 0;
}

// After a step back or forward: what the restored record changed is shown.
void Canvas::StepRestored(int32_t kind) {
    switch (kind) {
    case HistoryStepSelection:
        RenewOutline();
        UpdateSelectionRange();
        UpdateBufferImage();
        UpdateGraphics();
        emit MenusNeedUpdate(CanvasMenuAll);
        break;
    case HistoryStepPixels:
        UpdateBufferImage();
        UpdateGraphics();
        emit MenusNeedUpdate(CanvasMenuFile | CanvasMenuEdit);
        break;
    case HistoryStepSize:
        FollowSize();
        UpdateSelectionRange();
        AdjustMemoryBitmap(true);
        emit MenusNeedUpdate(CanvasMenuAll);
        break;
    case HistoryStepMode:
        UpdateBufferImage();
        UpdateGraphics();
        emit MenusNeedUpdate(CanvasMenuAll);
        break;
    default:
        break;
    }
    emit DocumentRefreshed();
}

// ------------------------------------------------------------------ what the document reports

void Canvas::OperationStarted() {
    if (busyDepth_++ == 0) QApplication::setOverrideCursor(Qt::WaitCursor);
}

void Canvas::OperationEnded() {
    if (busyDepth_ > 0 && --busyDepth_ == 0) QApplication::restoreOverrideCursor();
}

void Canvas::CommandFinished(const QString& name, int kind, const QString& extra, int64_t elapsed) {
    if (kind != ProgressVirtual)
        DrawTextToPic(name + QStringLiteral(": ") + QString::number(elapsed) + QStringLiteral("ms") + extra);
    switch (kind) {
    case ProgressSize:
        FollowSize();
        AdjustMemoryBitmap(false);
        UpdateSelectionRange();
        emit MenusNeedUpdate(CanvasMenuFile | CanvasMenuEdit | CanvasMenuMake | CanvasMenuBeautify);
        break;
    case ProgressMode:
        emit MenusNeedUpdate(CanvasMenuAll);
        break;
    default:
        emit MenusNeedUpdate(CanvasMenuFile | CanvasMenuEdit);
        break;
    }
    UpdateBufferImage();
    UpdateGraphics();
    emit DocumentRefreshed();
}

void Canvas::CommandRolledBack() {
    // The failed command's frames may never have closed.
    RestoreCursor();
    CancelStroke();
    FollowSize();
    UpdateSelectionRange();
    AdjustMemoryBitmap(true);
    emit MenusNeedUpdate(CanvasMenuAll);
    emit DocumentRefreshed();
}

void Canvas::RestoreCursor() {
    while (busyDepth_ > 0) {
        --busyDepth_;
        QApplication::restoreOverrideCursor();
    }
}

void Canvas::SelectionStepFinished(int64_t elapsed) {
    DrawTextToPic(QString::number(elapsed) + QStringLiteral("毫秒"));
    RenewOutline();
    UpdateBufferImage();
    UpdateGraphics();
    UpdateSelectionRange();
    emit MenusNeedUpdate(CanvasMenuAll);
}

} // namespace vm
