#include "filters/ui/FrmPreViewFilters.h"

#include "canvas/Canvas.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/OperationSettings.h"
#include "core/ProcessingFrame.h"
#include "core/SettingsStore.h"
#include "core/StartUpTables.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
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
constexpr double DialPi = 3.1415926535897;

bool ParseInt(const QString& text, int32_t& value) {
    bool ok = false;
    value = text.trimmed().toInt(&ok);
    return ok;
}

} // namespace

// ---------------------------------------------------------------- the dial

AngleDial::AngleDial(QWidget* parent) : QWidget(parent) {
    setFixedSize(36, 36);
    setCursor(Qt::PointingHandCursor);
}

void AngleDial::SetAngleRadians(double radians) {
    angle_ = radians;
    update();
}

double AngleDial::QuadrantAngle(double dx, double dy) {
    if (dx > 0 && dy >= 0) return std::atan(dy / dx);
    if (dx > 0 && dy < 0) return 6.2831853071794 - std::atan(-dy / dx);
    if (dx < 0) return std::atan(dy / dx) + DialPi;
    if (dy > 0) return DialPi / 2;
    if (dy < 0) return -DialPi / 2;
    return 0;
}

void AngleDial::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(palette().color(QPalette::WindowText), 1));
    p.drawEllipse(QPointF(17, 17), 1, 1);
    p.drawEllipse(QRectF(0.5, 0.5, 35, 35));
    p.drawLine(QPointF(18, 18), QPointF(18 + 18 * std::cos(angle_), 18 - 18 * std::sin(angle_)));
}

void AngleDial::Choose(const QPoint& at) {
    SetAngleRadians(QuadrantAngle(at.x() - 18, 18 - at.y()));
    emit AngleChosen(angle_);
}

void AngleDial::mousePressEvent(QMouseEvent* e) {
    if (e->button() == Qt::LeftButton) Choose(e->position().toPoint());
}

void AngleDial::mouseMoveEvent(QMouseEvent* e) {
    if (e->buttons() & Qt::LeftButton) Choose(e->position().toPoint());
}

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
    auto* sliders = new QGridLayout;
    for (const SliderSpec& s : op_.Sliders) {
        const int row = static_cast<int>(sliders_.size());
        auto* slider = new QSlider(Qt::Horizontal);
        auto* text = new QLineEdit;
        text->setFixedWidth(56);
        text->installEventFilter(this);
        const auto [min, max] =
            op_.SliderLimits(s, start, target_.PixelFormat, target_.Width(), target_.Height());
        slider->setRange(min, max);
        slider->setValue(start.Int(s.Key));
        text->setText(QString::number(slider->value()));
        sliders->addWidget(new QLabel(s.Label.isEmpty() ? s.Key : s.Label), row, 0);
        sliders->addWidget(slider, row, 1);
        sliders->addWidget(text, row, 2);
        sliders->addWidget(new QLabel(s.Unit), row, 3);
        sliders_.push_back({&s, slider, text});
        connect(slider, &QSlider::valueChanged, this, [this, slider, text](int v) {
            if (busy_) return;
            busy_ = true;
            tickCount_ = 0;
            timer_.start();
            if (text->text() != QString::number(v)) text->setText(QString::number(v));
            busy_ = false;
        });
        connect(slider, &QSlider::sliderReleased, this, [this] {
            if (!timer_.isActive()) return;
            tickCount_ = refreshDelay_;
            TimerTick();
        });
        connect(text, &QLineEdit::textEdited, this, [slider](const QString& t) {
            int32_t v = 0;
            if (ParseInt(t, v) && v >= slider->minimum() && v <= slider->maximum()) slider->setValue(v);
        });
    }
    right->addLayout(sliders);

    if (op_.Dial) {
        auto* row = new QHBoxLayout;
        dial_ = new AngleDial;
        angleText_ = new QLineEdit;
        angleText_->setFixedWidth(56);
        angleText_->installEventFilter(this);
        const int32_t degrees = start.Int(op_.Dial->Key);
        angleText_->setText(QString::number(degrees));
        dial_->SetAngleRadians(degrees * DialPi / 180);
        row->addWidget(new QLabel(op_.Dial->Label));
        row->addWidget(dial_);
        row->addWidget(angleText_);
        row->addWidget(new QLabel(QStringLiteral("度")));
        row->addStretch();
        right->addLayout(row);
        connect(dial_, &AngleDial::AngleChosen, this, [this](double radians) {
            if (busy_) return;
            busy_ = true;
            angleText_->setText(QString::number(RoundHalfEven(radians * 180 / DialPi)));
            busy_ = false;
            ParameterChanged();
        });
        connect(angleText_, &QLineEdit::textEdited, this, [this](const QString& t) {
            int32_t v = 0;
            if (!ParseInt(t, v) || v < op_.Dial->Min || v > op_.Dial->Max) return;
            dial_->SetAngleRadians(v * DialPi / 180);
            ParameterChanged();
        });
    }

    for (const ChoiceSpec& c : op_.Choices) {
        auto* box = new QGroupBox(c.Label);
        auto* layout = new QHBoxLayout(box);
        auto* group = new QButtonGroup(box);
        std::vector<QRadioButton*> buttons;
        for (qsizetype i = 0; i < c.Choices.size(); ++i) {
            auto* b = new QRadioButton(c.Choices[i]);
            group->addButton(b, static_cast<int>(i));
            layout->addWidget(b);
            buttons.push_back(b);
        }
        const int chosen = start.Int(c.Key);
        if (chosen >= 0 && chosen < static_cast<int>(buttons.size()))
            buttons[static_cast<size_t>(chosen)]->setChecked(true);
        connect(group, &QButtonGroup::idToggled, this, [this](int, bool on) {
            if (!on || busy_) return;
            ApplyChoiceRanges();
            Refresh();
        });
        options_.emplace_back(&c, buttons);
        right->addWidget(box);
    }
    for (const CheckSpec& c : op_.Checks) {
        auto* check = new QCheckBox(c.Label);
        check->setChecked(start.Int(c.Key) != 0);
        connect(check, &QCheckBox::toggled, this, [this] {
            if (!busy_) Refresh();
        });
        checks_.emplace_back(&c, check);
        right->addWidget(check);
    }
    for (const TextSpec& t : op_.Texts) {
        auto* row = new QHBoxLayout;
        auto* edit = new QLineEdit(start.Text(t.Key));
        row->addWidget(new QLabel(t.Label));
        row->addWidget(edit);
        connect(edit, &QLineEdit::textEdited, this, [this, check = t.Check](const QString& v) {
            if (!busy_ && (!check || check(v))) Refresh();
        });
        texts_.emplace_back(&t, edit);
        right->addLayout(row);
    }
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
    Params p;
    for (const SliderRow& s : sliders_)
        p.Set(s.Row->Key, s.Slider->value());
    if (op_.Dial) {
        int32_t v = 0;
        p.Set(op_.Dial->Key, ParseInt(angleText_->text(), v)
                                 ? std::clamp(v, op_.Dial->Min, op_.Dial->Max)
                                 : RoundHalfEven(dial_->AngleRadians() * 180 / DialPi));
    }
    for (const auto& [item, buttons] : options_) {
        int chosen = item->Default;
        for (size_t i = 0; i < buttons.size(); ++i)
            if (buttons[i]->isChecked()) chosen = static_cast<int>(i);
        p.Set(item->Key, chosen);
    }
    for (const auto& [item, check] : checks_)
        p.Set(item->Key, check->isChecked() ? 1 : 0);
    for (const auto& [item, edit] : texts_)
        p.Set(item->Key, edit->text());
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

void FrmPreViewFilters::ApplyChoiceRanges() {
    if (op_.ChoiceRanges.empty()) return;
    const Params now = CurrentParams();
    busy_ = true;
    for (SliderRow& s : sliders_) {
        const auto [min, max] =
            op_.SliderLimits(*s.Row, now, target_.PixelFormat, target_.Width(), target_.Height());
        s.Slider->setRange(min, max);
        s.Text->setText(QString::number(s.Slider->value()));
    }
    busy_ = false;
}

void FrmPreViewFilters::Refresh() {
    // Every run starts from the pixels the dialog found, bytes at the row
    // ends included. The run is restrained: the canvas neither records nor
    // redraws it; the dialog shows it.
    std::memcpy(target_.Pointer(), source_->Pointer(), source_->BlockSize());
    target_.RestrainProgress = true;
    {
        MessageRecorder quiet; // a refusal shows once, at the menu, not at every refresh
        // A row whose family is not built yet shows its controls over the picture as it is.
        if (op_.Run) op_.Run(target_, op_.WithDefaults(CurrentParams()));
    }
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
    const double old = Zoom();
    const double mx = (scrollX_ + viewWidth_ / 2.0) / old, my = (scrollY_ + viewHeight_ / 2.0) / old;
    zoomIndex_ += 1;
    LayoutPreview(true);
    scrollX_ = std::clamp(static_cast<int32_t>(mx * Zoom() - viewWidth_ / 2.0), 0, scrollMaxX_);
    scrollY_ = std::clamp(static_cast<int32_t>(my * Zoom() - viewHeight_ / 2.0), 0, scrollMaxY_);
    viewFraction_[0] = scrollX_;
    viewFraction_[2] = scrollY_;
    picture_->update();
    return true;
}

bool FrmPreViewFilters::ZoomOut() {
    // The test is on the zoom at the present index.
    const double now = Zoom();
    if (zoomIndex_ <= -10 || target_.Width() * now < 5 || target_.Height() * now < 5) return false;
    const double mx = (scrollX_ + viewWidth_ / 2.0) / now, my = (scrollY_ + viewHeight_ / 2.0) / now;
    zoomIndex_ -= 1;
    LayoutPreview(true);
    scrollX_ = std::clamp(static_cast<int32_t>(mx * Zoom() - viewWidth_ / 2.0), 0, scrollMaxX_);
    scrollY_ = std::clamp(static_cast<int32_t>(my * Zoom() - viewHeight_ / 2.0), 0, scrollMaxY_);
    viewFraction_[0] = scrollX_;
    viewFraction_[2] = scrollY_;
    picture_->update();
    return true;
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
    return i >= 0 && i < static_cast<int>(sliders_.size()) ? sliders_[static_cast<size_t>(i)].Slider
                                                           : nullptr;
}

QLineEdit* FrmPreViewFilters::TextAt(int i) const {
    return i >= 0 && i < static_cast<int>(sliders_.size()) ? sliders_[static_cast<size_t>(i)].Text : nullptr;
}

void FrmPreViewFilters::ResetValues() {
    busy_ = true;
    for (const auto& [item, buttons] : options_)
        if (item->Default >= 0 && item->Default < static_cast<int>(buttons.size()))
            buttons[static_cast<size_t>(item->Default)]->setChecked(true);
    for (const auto& [item, check] : checks_)
        check->setChecked(item->Default);
    busy_ = false;
    ApplyChoiceRanges();
    busy_ = true;
    for (SliderRow& s : sliders_) {
        s.Slider->setValue(s.Row->ResetValue());
        s.Text->setText(QString::number(s.Slider->value()));
    }
    if (op_.Dial) {
        angleText_->setText(QString::number(op_.Dial->ResetValue()));
        dial_->SetAngleRadians(op_.Dial->ResetValue() * DialPi / 180);
    }
    busy_ = false;
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
    if (e->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(e)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            const int step = key == Qt::Key_Up ? 1 : -1;
            for (SliderRow& s : sliders_)
                if (watched == s.Text) {
                    s.Slider->setValue(s.Slider->value() + step);
                    return true;
                }
            if (watched == angleText_) {
                int32_t v = 0;
                if (ParseInt(angleText_->text(), v)) {
                    v = std::clamp(v + step, op_.Dial->Min, op_.Dial->Max);
                    angleText_->setText(QString::number(v));
                    dial_->SetAngleRadians(v * DialPi / 180);
                    ParameterChanged();
                }
                return true;
            }
        }
        if (key == Qt::Key_Alt) cancel_->setText(QStringLiteral("复位"));
    } else if (e->type() == QEvent::KeyRelease && static_cast<QKeyEvent*>(e)->key() == Qt::Key_Alt) {
        cancel_->setText(QStringLiteral("取消"));
    }
    return QDialog::eventFilter(watched, e);
}

void FrmPreViewFilters::accept() {
    if (timer_.isActive()) {
        timer_.stop();
        Refresh();
    }
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
    QDialog::accept();
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
    const Params start = LoadStoredParams(op, image);
    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    for (const SliderSpec& s : op.Sliders) {
        auto* box = new QSpinBox;
        const auto [min, max] = op.SliderLimits(s, start, image.PixelFormat, image.Width(), image.Height());
        box->setRange(min, max);
        box->setValue(start.Int(s.Key));
        if (!s.Unit.isEmpty()) box->setSuffix(QStringLiteral(" ") + s.Unit);
        form->addRow(s.Label, box);
        readers_.emplace_back(s.Key, [box] { return QString::number(box->value()); });
        writers_.emplace_back(s.Key, [box](const QString& v) { box->setValue(v.toInt()); });
    }
    for (const ChoiceSpec& c : op.Choices) {
        auto* box = new QGroupBox(c.Label);
        auto* layout = new QHBoxLayout(box);
        auto* group = new QButtonGroup(box);
        for (qsizetype i = 0; i < c.Choices.size(); ++i) {
            auto* b = new QRadioButton(c.Choices[i]);
            group->addButton(b, static_cast<int>(i));
            layout->addWidget(b);
        }
        if (auto* b = group->button(start.Int(c.Key))) b->setChecked(true);
        form->addRow(box);
        readers_.emplace_back(c.Key, [group] { return QString::number(std::max(0, group->checkedId())); });
        writers_.emplace_back(c.Key, [group](const QString& v) {
            if (auto* b = group->button(v.toInt())) b->setChecked(true);
        });
    }
    for (const CheckSpec& c : op.Checks) {
        auto* check = new QCheckBox(c.Label);
        check->setChecked(start.Int(c.Key) != 0);
        form->addRow(check);
        readers_.emplace_back(c.Key, [check] { return QString::number(check->isChecked() ? 1 : 0); });
        writers_.emplace_back(c.Key, [check](const QString& v) { check->setChecked(v.toInt() != 0); });
    }
    // The kernel grid: Matrix0 .. Matrix24, row by row.
    auto* grid = new QGridLayout;
    outer->addLayout(grid);
    for (const TextSpec& t : op.Texts) {
        auto* edit = new QLineEdit(start.Text(t.Key));
        readers_.emplace_back(t.Key, [edit] { return edit->text(); });
        writers_.emplace_back(t.Key, [edit](const QString& v) { edit->setText(v); });
        if (t.Key.startsWith(QLatin1String("Matrix"))) {
            const int i = t.Key.mid(6).toInt();
            edit->setFixedWidth(48);
            edit->setAlignment(Qt::AlignRight);
            grid->addWidget(edit, i / 5, i % 5);
        } else if (t.Key == QLatin1String("FileName")) {
            auto* row = new QHBoxLayout;
            auto* browse = new QPushButton(QStringLiteral("浏览..."));
            row->addWidget(edit, 1);
            row->addWidget(browse);
            connect(browse, &QPushButton::clicked, this, [this, edit] {
                const QString f = QFileDialog::getOpenFileName(this, QStringLiteral("打开"), edit->text());
                if (!f.isEmpty()) edit->setText(f);
            });
            form->addRow(t.Label, row);
        } else {
            form->addRow(t.Label, edit);
        }
    }
    outer->addLayout(form);
    auto* buttons = new QHBoxLayout;
    auto* ok = new QPushButton(QStringLiteral("确定"));
    auto* cancel = new QPushButton(QStringLiteral("取消"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    outer->addLayout(buttons);
}

Params FrmNoPreviewFilter::CurrentParams() const {
    Params p;
    for (const auto& [key, read] : readers_)
        p.Set(key, read());
    return p;
}

bool FrmNoPreviewFilter::SetParam(const QString& key, const QString& value) {
    for (const auto& [k, write] : writers_)
        if (k == key) {
            write(value);
            return true;
        }
    return false;
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
    if (!op_.Run || !op_.Run(image, op_.WithDefaults(p))) return;
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
