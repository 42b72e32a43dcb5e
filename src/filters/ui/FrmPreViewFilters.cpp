#include "filters/ui/FrmPreViewFilters.h"

#include "canvas/Canvas.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/OperationSettings.h"
#include "core/ProcessingFrame.h"
#include "core/SettingsStore.h"
#include "core/StartUpTables.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vm {

namespace {

const QString PreviewKey = QStringLiteral("PreView");
constexpr int TimerInterval = 50;
constexpr int MaxRefreshDelay = 5;
constexpr int FrameSide = 275;
constexpr int ViewLimit = 256;

} // namespace

// ---------------------------------------------------------- the preview box

class PreviewPicture : public QWidget {
  public:
    explicit PreviewPicture(FrmPreViewFilters& owner, QWidget* parent) : QWidget(parent), owner_(owner) {
        setCursor(Qt::OpenHandCursor);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        owner_.PaintPicture(p);
    }
    void mousePressEvent(QMouseEvent* e) override {
        const QPoint at = e->position().toPoint() - QPoint(1, 1);
        if (e->button() == Qt::LeftButton) {
            owner_.zoomedCentre_ = at;
            owner_.dragging_ = true;
        } else if (e->button() == Qt::RightButton) {
            owner_.PictureRightPress(at);
        }
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (!owner_.dragging_) return;
        const QPoint at = e->position().toPoint() - QPoint(1, 1);
        owner_.scrollX_ =
            std::clamp(owner_.scrollX_ + owner_.zoomedCentre_.x() - at.x(), 0, owner_.scrollMaxX_);
        owner_.scrollY_ =
            std::clamp(owner_.scrollY_ + owner_.zoomedCentre_.y() - at.y(), 0, owner_.scrollMaxY_);
        owner_.zoomedCentre_ = at;
        update();
    }
    void mouseReleaseEvent(QMouseEvent* e) override {
        if (e->button() == Qt::LeftButton) owner_.dragging_ = false;
        update();
    }

  private:
    FrmPreViewFilters& owner_;
};

// ------------------------------------------------------- FrmPreViewFilters

FrmPreViewFilters::FrmPreViewFilters(const Operation& op, Canvas& target, QWidget* parent)
    : QDialog(parent), op_(op), canvas_(target), target_(*target.Image()),
      source_(target.Image()->CloneImage()) {
    source_->PixelFormat = target_.PixelFormat;
    setWindowTitle(op.CaptionOfDialog());
    canvas_.setEnabled(false);
    historyWas_ = canvas_.NeedWriteToHistory();
    canvas_.SetNeedWriteToHistory(false);

    busy_ = true;
    const Params start = LoadStoredParams(op_, target_);
    centre_ = QPoint(start.Int(QStringLiteral("CentreX")), start.Int(QStringLiteral("CentreY")));
    BuildControls(start);
    busy_ = false;

    timer_.setInterval(TimerInterval);
    connect(&timer_, &QTimer::timeout, this, [this] { TimerTick(); });

    zoomIndex_ = 0;
    LayoutPreview(false);
    // The first refresh's duration sets how long a slider must rest.
    QElapsedTimer clock;
    clock.start();
    Refresh();
    refreshDelay_ = std::min<int32_t>(MaxRefreshDelay, static_cast<int32_t>(clock.elapsed() / TimerInterval));
}

FrmPreViewFilters::~FrmPreViewFilters() {
    // Gone without being closed: the document still gets its pixels back.
    if (!committed_ && !closed_) RestoreSource();
}

void FrmPreViewFilters::BuildControls(const Params& start) {
    auto* outer = new QHBoxLayout(this);
    // The preview: a 275 x 275 frame, the zoom buttons and the zoom label.
    auto* left = new QVBoxLayout;
    auto* frame = new QWidget;
    frame->setFixedSize(FrameSide, FrameSide);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::Dark);
    picture_ = new PreviewPicture(*this, frame);
    left->addWidget(frame);
    auto* zoomRow = new QHBoxLayout;
    auto* zoomIn = new QPushButton(QStringLiteral("+"));
    auto* zoomOut = new QPushButton(QStringLiteral("-"));
    zoomLabel_ = new QLabel;
    zoomLabel_->setAlignment(Qt::AlignCenter);
    for (QPushButton* b : {zoomIn, zoomOut}) {
        b->setFixedWidth(32);
        b->setAutoDefault(false);
    }
    connect(zoomIn, &QPushButton::clicked, this, [this] { ZoomIn(); });
    connect(zoomOut, &QPushButton::clicked, this, [this] { ZoomOut(); });
    zoomRow->addWidget(zoomOut);
    zoomRow->addWidget(zoomLabel_, 1);
    zoomRow->addWidget(zoomIn);
    left->addLayout(zoomRow);
    outer->addLayout(left);

    // The used panels, top to bottom.
    auto* right = new QVBoxLayout;
    if (!op_.DialogNote.isEmpty()) right->addWidget(new QLabel(op_.DialogNote));
    panel_ = new ParamPanel(op_, start, target_.PixelFormat, target_.Width(), target_.Height());
    right->addWidget(panel_);
    // Alt in a number box turns Cancel into Reset as anywhere in the dialog.
    for (QLineEdit* edit : panel_->findChildren<QLineEdit*>())
        edit->installEventFilter(this);
    connect(panel_, &ParamPanel::SliderMoved, this, [this] {
        if (!busy_) ParameterChanged();
    });
    connect(panel_, &ParamPanel::SliderReleased, this, [this] {
        if (!timer_.isActive()) return;
        tickCount_ = refreshDelay_;
        TimerTick();
    });
    connect(panel_, &ParamPanel::Chosen, this, [this] {
        if (!busy_) Refresh();
    });
    right->addStretch();

    preview_ = new QCheckBox(QStringLiteral("预览(&P)"));
    preview_->setChecked(GetSettingInt(SettingsRoot, op_.SettingsSection(), PreviewKey, 1) != 0);
    connect(preview_, &QCheckBox::toggled, this, [this] {
        canvas_.UpdateBufferImageFromImage(preview_->isChecked() ? nullptr : source_.get());
        canvas_.UpdateGraphics();
    });
    right->addWidget(preview_);
    auto* buttons = new QHBoxLayout;
    auto* ok = new QPushButton(QStringLiteral("确定"));
    ok->setDefault(true);
    cancel_ = new QPushButton(QStringLiteral("取消"));
    cancel_->setAutoDefault(false);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel_, &QPushButton::clicked, this, [this] {
        if (cancel_->text() == QStringLiteral("复位"))
            ResetValues();
        else
            reject();
    });
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel_);
    right->addLayout(buttons);
    outer->addLayout(right);
}

Params FrmPreViewFilters::CurrentParams() const {
    Params p = panel_->Values();
    if (op_.HasCentre) {
        p.Set(QStringLiteral("CentreX"), centre_.x());
        p.Set(QStringLiteral("CentreY"), centre_.y());
    }
    return p;
}

void FrmPreViewFilters::ParameterChanged() {
    tickCount_ = 0;
    timer_.start();
}

void FrmPreViewFilters::TimerTick() {
    if (tickCount_ == refreshDelay_) {
        Refresh();
        timer_.stop();
        tickCount_ = 0;
    }
    ++tickCount_;
}

void FrmPreViewFilters::Refresh() {
    // Every run starts from the pixels the dialog found, bytes at the row
    // ends included. The run is restrained: the canvas neither records nor
    // redraws it; the dialog shows it.
    std::memcpy(target_.Pointer(), source_->Pointer(), source_->BlockSize());
    target_.RestrainProgress = true;
    // A preview that runs out of memory says so; the next refresh starts from
    // the source again.
    GuardMemory([&] {
        MessageRecorder quiet; // a refusal shows once, at the menu, not at every refresh
        // A row whose family is not built yet shows its controls over the picture as it is.
        if (op_.Run) op_.Run(target_, op_.WithDefaults(CurrentParams()));
    });
    target_.RestrainProgress = false;
    ++refreshes_;
    picture_->update();
    if (preview_->isChecked()) {
        canvas_.UpdateBufferImageFromImage(nullptr);
        canvas_.UpdateGraphics();
    }
}

void FrmPreViewFilters::RestoreSource() {
    std::memcpy(target_.Pointer(), source_->Pointer(), source_->BlockSize());
    canvas_.UpdateBufferImageFromImage(nullptr);
    canvas_.UpdateGraphics();
}

double FrmPreViewFilters::Zoom() const {
    return ZoomFactorTable[static_cast<size_t>(10 + ZoomIndex())];
}

void FrmPreViewFilters::LayoutPreview(bool keepMiddle) {
    const double zoom = Zoom();
    const double prevRangeX = viewFraction_[1], prevRangeY = viewFraction_[3];
    const int32_t prevX = scrollX_, prevY = scrollY_;
    auto side = [&](int32_t size, int32_t& view, int32_t& margin, int32_t& scrollMax) {
        const auto whole = static_cast<int32_t>(size * zoom);
        if (whole <= ViewLimit) {
            scrollMax = 0;
            view = whole;
            margin = (size - view) / 2; // kept as it has always been computed
        } else {
            scrollMax = whole - ViewLimit;
            view = ViewLimit;
            margin = 0;
        }
    };
    side(target_.Width(), viewWidth_, viewLeft_, scrollMaxX_);
    side(target_.Height(), viewHeight_, viewTop_, scrollMaxY_);
    if (!keepMiddle) {
        scrollX_ = prevRangeX == 0 ? scrollMaxX_ / 2 : static_cast<int32_t>(scrollMaxX_ * prevX / prevRangeX);
        scrollY_ = prevRangeY == 0 ? scrollMaxY_ / 2 : static_cast<int32_t>(scrollMaxY_ * prevY / prevRangeY);
    }
    viewFraction_[0] = scrollX_;
    viewFraction_[1] = scrollMaxX_;
    viewFraction_[2] = scrollY_;
    viewFraction_[3] = scrollMaxY_;
    picture_->setGeometry((FrameSide - viewWidth_) / 2 - 1, (FrameSide - viewHeight_) / 2 - 1, viewWidth_ + 2,
                          viewHeight_ + 2);
    zoomLabel_->setText(QString::number(RoundHalfEven(zoom * 100)) + QStringLiteral("%"));
    picture_->update();
}

bool FrmPreViewFilters::ZoomIn() {
    if (zoomIndex_ >= 9) return false;
    StepZoom(+1);
    return true;
}

bool FrmPreViewFilters::ZoomOut() {
    // The test is on the zoom at the present index.
    const double now = Zoom();
    if (zoomIndex_ <= -10 || target_.Width() * now < 5 || target_.Height() * now < 5) return false;
    StepZoom(-1);
    return true;
}

void FrmPreViewFilters::StepZoom(int step) {
    // The point in the middle of the view stays in the middle.
    const double old = Zoom();
    const double mx = (scrollX_ + viewWidth_ / 2.0) / old, my = (scrollY_ + viewHeight_ / 2.0) / old;
    zoomIndex_ += step;
    LayoutPreview(true);
    scrollX_ = std::clamp(static_cast<int32_t>(mx * Zoom() - viewWidth_ / 2.0), 0, scrollMaxX_);
    scrollY_ = std::clamp(static_cast<int32_t>(my * Zoom() - viewHeight_ / 2.0), 0, scrollMaxY_);
    viewFraction_[0] = scrollX_;
    viewFraction_[2] = scrollY_;
    picture_->update();
}

QPoint FrmPreViewFilters::PictureToImage(const QPoint& at) const {
    const double zoom = Zoom();
    return {static_cast<int>((at.x() + scrollX_ - viewLeft_) / zoom + 0.5),
            static_cast<int>((at.y() + scrollY_ - viewTop_) / zoom + 0.5)};
}

void FrmPreViewFilters::PictureRightPress(const QPoint& at) {
    if (!op_.HasCentre) return;
    busy_ = true;
    centre_ = PictureToImage(at);
    ParameterChanged();
    busy_ = false;
}

void FrmPreViewFilters::PaintPicture(QPainter& p) const {
    p.setPen(palette().color(QPalette::Shadow));
    p.drawRect(0, 0, viewWidth_ + 1, viewHeight_ + 1);
    const double zoom = Zoom();
    const int32_t sx = static_cast<int32_t>(scrollX_ / zoom), sy = static_cast<int32_t>(scrollY_ / zoom);
    const int32_t sw = std::max(1, static_cast<int32_t>(std::ceil(viewWidth_ / zoom)));
    const int32_t sh = std::max(1, static_cast<int32_t>(std::ceil(viewHeight_ / zoom)));
    target_.Render(p, 1, 1, viewWidth_, viewHeight_, sx, sy, std::min(sw, target_.Width() - sx),
                   std::min(sh, target_.Height() - sy));
}

QSlider* FrmPreViewFilters::SliderAt(int i) const {
    return panel_->SliderAt(i);
}

QLineEdit* FrmPreViewFilters::TextAt(int i) const {
    return panel_->TextAt(i);
}

QLineEdit* FrmPreViewFilters::AngleText() const {
    return panel_->AngleText();
}

AngleDial* FrmPreViewFilters::Dial() const {
    return panel_->Dial();
}

void FrmPreViewFilters::ResetValues() {
    panel_->ResetValues();
    timer_.stop();
    tickCount_ = 0;
    Refresh();
}

void FrmPreViewFilters::keyPressEvent(QKeyEvent* e) {
    if (e->key() == Qt::Key_Alt) cancel_->setText(QStringLiteral("复位"));
    QDialog::keyPressEvent(e);
}

void FrmPreViewFilters::keyReleaseEvent(QKeyEvent* e) {
    if (e->key() == Qt::Key_Alt) cancel_->setText(QStringLiteral("取消"));
    QDialog::keyReleaseEvent(e);
}

bool FrmPreViewFilters::eventFilter(QObject* watched, QEvent* e) {
    if (e->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(e)->key() == Qt::Key_Alt)
        cancel_->setText(QStringLiteral("复位"));
    else if (e->type() == QEvent::KeyRelease && static_cast<QKeyEvent*>(e)->key() == Qt::Key_Alt)
        cancel_->setText(QStringLiteral("取消"));
    return QDialog::eventFilter(watched, e);
}

void FrmPreViewFilters::accept() {
    if (timer_.isActive()) {
        timer_.stop();
        Refresh();
    }
    // Short of memory for the hand-over, the dialog stays open: the user can
    // cancel, which puts the source back.
    if (!GuardMemory([this] { Commit(); })) {
        std::memcpy(target_.Pointer(), source_->Pointer(), source_->BlockSize());
        canvas_.SetNeedWriteToHistory(false);
        Refresh();
        return;
    }
    QDialog::accept();
}

void FrmPreViewFilters::Commit() {
    canvas_.setEnabled(true);
    // The last refresh's result goes over the document as one command: the
    // source first, then the result through VirtualExecute, with the history on.
    const std::unique_ptr<CImage> result = target_.CloneImage();
    std::memcpy(target_.Pointer(), source_->Pointer(), source_->BlockSize());
    canvas_.SetNeedWriteToHistory(true);
    target_.VirtualExecute(*result, op_.Title);
    historyWas_ = true;
    StoreParams(op_, CurrentParams());
    SaveSettingInt(SettingsRoot, op_.SettingsSection(), PreviewKey, preview_->isChecked() ? 1 : 0);
    committed_ = true;
    canvas_.ImageChanged = true;
}

void FrmPreViewFilters::done(int result) {
    timer_.stop();
    if (!committed_ && !closed_) RestoreSource();
    closed_ = true;
    canvas_.SetNeedWriteToHistory(historyWas_);
    canvas_.setEnabled(true);
    QDialog::done(result);
}

// ------------------------------------------------------ FrmNoPreviewFilter

FrmNoPreviewFilter::FrmNoPreviewFilter(const Operation& op, Canvas& target, QWidget* parent)
    : QDialog(parent), op_(op), canvas_(target) {
    setWindowTitle(op.CaptionOfDialog());
    const CImage& image = *target.Image();
    auto* outer = new QVBoxLayout(this);
    if (!op.DialogNote.isEmpty()) outer->addWidget(new QLabel(op.DialogNote));
    panel_ =
        new ParamPanel(op, LoadStoredParams(op, image), image.PixelFormat, image.Width(), image.Height());
    outer->addWidget(panel_);
    auto* buttons = new QHBoxLayout;
    auto* ok = new QPushButton(QStringLiteral("确定"));
    auto* cancel = new QPushButton(QStringLiteral("取消"));
    ok->setDefault(true);
    cancel->setAutoDefault(false);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    outer->addLayout(buttons);
}

Params FrmNoPreviewFilter::CurrentParams() const {
    return panel_->Values();
}

bool FrmNoPreviewFilter::SetParam(const QString& key, const QString& value) {
    return panel_->SetValue(key, value);
}

void FrmNoPreviewFilter::accept() {
    Params p = CurrentParams();
    CImage& image = *canvas_.Image();
    // A file that cannot be read, or a value the row does not take, keeps the
    // dialog open.
    QString error;
    if (!op_.Validate(p, image, error)) {
        MessageBox(error);
        return;
    }
    for (const TextSpec& t : op_.Texts)
        if (t.Key == QLatin1String("FileName") && p.Text(t.Key).trimmed().isEmpty()) return;
    if (op_.HasCentre) {
        const QPoint c = SelectionCentre(image);
        p.Set(QStringLiteral("CentreX"), c.x());
        p.Set(QStringLiteral("CentreY"), c.y());
    }
    if (!op_.Run || !GuardMemory([&] { return op_.Run(image, op_.WithDefaults(p)); })) return;
    StoreParams(op_, p);
    QDialog::accept();
}

bool ShowFilterDialog(QWidget* parent, Canvas& target, const Operation& op) {
    if (!target.Image() || !op.Run) return false;
    if (target.Image()->IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(op.Title));
        return false;
    }
    if (op.NoPreview) {
        FrmNoPreviewFilter dialog(op, target, parent);
        return dialog.exec() == QDialog::Accepted;
    }
    FrmPreViewFilters dialog(op, target, parent);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace vm
