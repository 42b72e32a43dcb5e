#include "app/NavigatorPanel.h"

#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/ColorRef.h"
#include "core/Image.h"
#include "core/StartUpTables.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

constexpr int SliderSteps = 1000;
constexpr int RepeatDelay = 400;
constexpr int RepeatInterval = 120;

// A magnifier with a plus or a minus, for the two zoom buttons.
QIcon ZoomIcon(bool in) {
    QPixmap pm(16, 16);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(40, 40, 40), 1.5));
    p.drawEllipse(QRectF(1.5, 1.5, 9, 9));
    p.drawLine(QPointF(9.5, 9.5), QPointF(14.5, 14.5));
    p.drawLine(QPointF(3.5, 6), QPointF(8.5, 6));
    if (in) p.drawLine(QPointF(6, 3.5), QPointF(6, 8.5));
    return QIcon(pm);
}

} // namespace

// The small picture; presses and drags move the canvas.
class NavigatorView : public QWidget {
  public:
    explicit NavigatorView(NavigatorPanel* owner) : QWidget(owner), owner_(owner) {
        setMinimumSize(160, 120);
        setObjectName(QStringLiteral("PicPanView"));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.fillRect(rect(), palette().window());
        if (!owner_->composed_.isNull()) p.drawImage(owner_->place_.topLeft(), owner_->composed_);
    }
    void resizeEvent(QResizeEvent*) override { owner_->UpdatePlacementAndBuffer(); }
    void mousePressEvent(QMouseEvent* e) override {
        if (e->button() == Qt::LeftButton) owner_->ScrollTo(e->position().toPoint());
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (e->buttons() & Qt::LeftButton) owner_->ScrollTo(e->position().toPoint());
    }

  private:
    NavigatorPanel* owner_;
};

NavigatorPanel::NavigatorPanel(QWidget* parent) : QWidget(parent) {
    view_ = new NavigatorView(this);
    slider_ = new QSlider(Qt::Horizontal, this);
    slider_->setObjectName(QStringLiteral("ZoomSlider"));
    slider_->setRange(0, SliderSteps);
    zoomOut_ = new QToolButton(this);
    zoomOut_->setObjectName(QStringLiteral("PanZoomOut"));
    zoomOut_->setIcon(ZoomIcon(false));
    zoomOut_->setAutoRaise(true);
    zoomOut_->setToolTip(QStringLiteral("缩小"));
    zoomIn_ = new QToolButton(this);
    zoomIn_->setObjectName(QStringLiteral("PanZoomIn"));
    zoomIn_->setIcon(ZoomIcon(true));
    zoomIn_->setAutoRaise(true);
    zoomIn_->setToolTip(QStringLiteral("放大"));

    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(zoomOut_);
    row->addWidget(slider_, 1);
    row->addWidget(zoomIn_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    column->addWidget(view_, 1);
    column->addLayout(row);

    // A press zooms one step at once; held, it repeats after a pause.
    connect(zoomIn_, &QToolButton::pressed, this, [this] { StartRepeat(1); });
    connect(zoomOut_, &QToolButton::pressed, this, [this] { StartRepeat(0); });
    connect(zoomIn_, &QToolButton::released, this, &NavigatorPanel::StopRepeat);
    connect(zoomOut_, &QToolButton::released, this, &NavigatorPanel::StopRepeat);
    connect(&repeat_, &QTimer::timeout, this, [this] {
        repeat_.setInterval(RepeatInterval);
        StepZoom(repeatMode_);
    });
    connect(slider_, &QSlider::valueChanged, this, [this](int v) {
        if (syncing_ || !canvas_ || !canvas_->HasImage()) return;
        canvas_->SetZoomFactor(2, FactorOfSlider(v));
    });
    UpdateStandardZoomControlState();
}

void NavigatorPanel::SetCanvas(Canvas* target) {
    if (canvas_ == target) return;
    if (canvas_) disconnect(canvas_, nullptr, this, nullptr);
    canvas_ = target;
    if (canvas_) {
        connect(canvas_, &Canvas::ViewChanged, this, [this] {
            UpdateBlendImage();
            UpdateStandardZoomControlState();
        });
        connect(canvas_, &QObject::destroyed, this, [this] { canvas_ = nullptr; });
    }
    UpdatePlacementAndBuffer();
    UpdateStandardZoomControlState();
}

void NavigatorPanel::UpdatePlacementAndBuffer() {
    small_ = QImage();
    place_ = QRect();
    if (canvas_ && canvas_->HasImage()) {
        int32_t w = 0, h = 0, x = 0, y = 0;
        canvas_->GetBestFitInfo(std::max(1, view_->width() - 4), std::max(1, view_->height() - 4), w, h, x,
                                y);
        w = std::max(1, w);
        h = std::max(1, h);
        small_ = QImage(w, h, QImage::Format_RGB32);
        small_.fill(Qt::white);
        QPainter p(&small_);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        canvas_->Image()->Render(p, 0, 0, w, h, 0, 0, 0, 0, InterpolationBilinear);
        place_ = QRect(x + 2, y + 2, w, h);
    }
    UpdateBlendImage();
}

void NavigatorPanel::UpdateBlendImage() {
    composed_ = small_;
    frame_ = QRect();
    if (!composed_.isNull() && canvas_ && canvas_->HasImage()) {
        int32_t l = 0, t = 0, r = 0, b = 0;
        canvas_->GetVisibleRect(l, t, r, b);
        const double sx = double(small_.width()) / std::max(1, canvas_->CanvasWidth());
        const double sy = double(small_.height()) / std::max(1, canvas_->CanvasHeight());
        const QRect box(static_cast<int>(std::floor(l * sx)), static_cast<int>(std::floor(t * sy)),
                        std::max(2, static_cast<int>(std::ceil((r - l) * sx))),
                        std::max(2, static_cast<int>(std::ceil((b - t) * sy))));
        const QRect inside =
            box.intersected(QRect(0, 0, small_.width(), small_.height())).adjusted(0, 0, -1, -1);
        QPainter p(&composed_);
        p.setPen(QPen(ColorRefToQColor(Globals().BorderColor), 1));
        p.drawRect(inside);
        frame_ = inside.translated(place_.topLeft());
    }
    view_->update();
}

void NavigatorPanel::ScrollTo(const QPoint& at) {
    if (!canvas_ || !canvas_->HasImage() || place_.isEmpty()) return;
    int32_t l = 0, t = 0, r = 0, b = 0;
    canvas_->GetVisibleRect(l, t, r, b);
    // The point in image pixels becomes the centre of the visible part.
    const double ix = double(at.x() - place_.left()) * canvas_->CanvasWidth() / place_.width();
    const double iy = double(at.y() - place_.top()) * canvas_->CanvasHeight() / place_.height();
    const double zoom = canvas_->ZoomFactor();
    canvas_->SetHoriVertPos((ix - (r - l) / 2.0) * zoom, (iy - (b - t) / 2.0) * zoom);
}

int NavigatorPanel::SliderValueOf(double factor) {
    const double lo = std::log(ZoomFactorTable.front()), hi = std::log(ZoomFactorTable.back());
    const double f = std::clamp(factor, ZoomFactorTable.front(), ZoomFactorTable.back());
    return static_cast<int>(std::lround((std::log(f) - lo) / (hi - lo) * SliderSteps));
}

double NavigatorPanel::FactorOfSlider(int value) {
    const double lo = std::log(ZoomFactorTable.front()), hi = std::log(ZoomFactorTable.back());
    const double f = std::exp(lo + (hi - lo) * std::clamp(value, 0, SliderSteps) / SliderSteps);
    // Whole percentages, as the zoom box shows them.
    return std::clamp(std::round(f * 10000) / 10000, ZoomFactorTable.front(), ZoomFactorTable.back());
}

void NavigatorPanel::UpdateStandardZoomControlState() {
    const bool doc = canvas_ && canvas_->HasImage();
    const double zoom = doc ? canvas_->ZoomFactor() : 1.0;
    syncing_ = true;
    slider_->setValue(SliderValueOf(zoom));
    syncing_ = false;
    slider_->setEnabled(doc);
    zoomIn_->setEnabled(doc && zoom < ZoomFactorTable.back());
    zoomOut_->setEnabled(doc && zoom > ZoomFactorTable.front());
}

void NavigatorPanel::StepZoom(int mode) {
    if (!canvas_ || !canvas_->HasImage() || !canvas_->SetZoomFactor(mode)) StopRepeat();
    UpdateStandardZoomControlState();
}

void NavigatorPanel::StartRepeat(int mode) {
    repeatMode_ = mode;
    StepZoom(mode);
    repeat_.start(RepeatDelay);
}

void NavigatorPanel::StopRepeat() {
    repeat_.stop();
}

} // namespace vm
