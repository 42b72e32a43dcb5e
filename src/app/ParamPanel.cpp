#include "app/ParamPanel.h"

#include "core/Numeric.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

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

// ---------------------------------------------------------------- the panel

ParamPanel::ParamPanel(const Operation& op, const Params& start, uint32_t pixelFormat, int32_t width,
                       int32_t height, QWidget* parent)
    : QWidget(parent), op_(op), format_(pixelFormat), width_(width), height_(height) {
    busy_ = true;
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);

    auto* grid = new QGridLayout;
    for (const SliderSpec& s : op_.Sliders) {
        const int row = static_cast<int>(sliders_.size());
        auto* slider = new QSlider(Qt::Horizontal);
        auto* text = new QLineEdit;
        slider->setMinimumWidth(160);
        text->setFixedWidth(56);
        text->installEventFilter(this);
        const auto [min, max] = op_.SliderLimits(s, start, format_, width_, height_);
        slider->setRange(min, max);
        slider->setValue(start.Int(s.Key));
        text->setText(QString::number(slider->value()));
        // The label's access key leads to the number box.
        auto* label = new QLabel(s.Label.isEmpty() ? s.Key : s.Label);
        label->setBuddy(text);
        grid->addWidget(label, row, 0);
        grid->addWidget(slider, row, 1);
        grid->addWidget(text, row, 2);
        grid->addWidget(new QLabel(s.Unit), row, 3);
        sliders_.push_back({&s, slider, text});
        connect(slider, &QSlider::valueChanged, this, [this, text](int v) {
            if (text->text() != QString::number(v)) text->setText(QString::number(v));
            if (!busy_) emit SliderMoved();
        });
        connect(slider, &QSlider::sliderReleased, this, [this] { emit SliderReleased(); });
        // A number inside the range moves the slider; any other text nothing.
        connect(text, &QLineEdit::textEdited, this, [slider](const QString& t) {
            int32_t v = 0;
            if (ParseInt(t, v) && v >= slider->minimum() && v <= slider->maximum()) slider->setValue(v);
        });
    }
    outer->addLayout(grid);

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
        outer->addLayout(row);
        connect(dial_, &AngleDial::AngleChosen, this, [this](double radians) {
            if (busy_) return;
            angleText_->setText(QString::number(RoundHalfEven(radians * 180 / DialPi)));
            emit SliderMoved();
        });
        connect(angleText_, &QLineEdit::textEdited, this, [this](const QString& t) {
            int32_t v = 0;
            if (!ParseInt(t, v) || v < op_.Dial->Min || v > op_.Dial->Max) return;
            dial_->SetAngleRadians(v * DialPi / 180);
            emit SliderMoved();
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
            emit Chosen();
        });
        options_.emplace_back(&c, buttons);
        outer->addWidget(box);
    }
    for (const CheckSpec& c : op_.Checks) {
        auto* check = new QCheckBox(c.Label);
        check->setChecked(start.Int(c.Key) != 0);
        connect(check, &QCheckBox::toggled, this, [this] {
            if (!busy_) emit Chosen();
        });
        checks_.emplace_back(&c, check);
        outer->addWidget(check);
    }

    // Texts: the kernel grid (Matrix0 .. Matrix24, row by row), a picture file
    // with its browse button, and plain boxes.
    QGridLayout* kernel = nullptr;
    auto* form = new QGridLayout;
    int formRow = 0;
    for (const TextSpec& t : op_.Texts) {
        auto* edit = new QLineEdit(start.Text(t.Key));
        connect(edit, &QLineEdit::textEdited, this, [this, edit, check = t.Check](const QString& v) {
            const bool good = !check || check(v);
            edit->setStyleSheet(good ? QString() : QStringLiteral("color: #c00000"));
            if (good && !busy_) emit Chosen();
        });
        texts_.emplace_back(&t, edit);
        if (t.Key.startsWith(QLatin1String("Matrix"))) {
            if (!kernel) {
                kernel = new QGridLayout;
                outer->addLayout(kernel);
            }
            const int i = t.Key.mid(6).toInt();
            edit->setFixedWidth(48);
            edit->setAlignment(Qt::AlignRight);
            edit->setToolTip(t.Label);
            kernel->addWidget(edit, i / 5, i % 5);
            continue;
        }
        form->addWidget(new QLabel(t.Label), formRow, 0);
        if (t.Key == QLatin1String("FileName")) {
            auto* browse = new QPushButton(QStringLiteral("浏览..."));
            browse->setAutoDefault(false);
            connect(browse, &QPushButton::clicked, this, [this, edit] {
                const QString f = QFileDialog::getOpenFileName(this, QStringLiteral("打开"), edit->text());
                if (f.isEmpty()) return;
                edit->setText(f);
                if (!busy_) emit Chosen();
            });
            form->addWidget(edit, formRow, 1);
            form->addWidget(browse, formRow, 2);
        } else {
            form->addWidget(edit, formRow, 1, 1, 2);
        }
        ++formRow;
    }
    outer->addLayout(form);
    busy_ = false;
}

Params ParamPanel::Values() const {
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
    return p;
}

bool ParamPanel::SetValue(const QString& key, const QString& value) {
    for (SliderRow& s : sliders_)
        if (s.Row->Key == key) {
            s.Slider->setValue(value.toInt());
            return true;
        }
    if (op_.Dial && op_.Dial->Key == key) {
        int32_t v = 0;
        if (ParseInt(value, v)) {
            v = std::clamp(v, op_.Dial->Min, op_.Dial->Max);
            angleText_->setText(QString::number(v));
            dial_->SetAngleRadians(v * DialPi / 180);
            if (!busy_) emit SliderMoved();
        }
        return true;
    }
    for (const auto& [item, buttons] : options_)
        if (item->Key == key) {
            const int i = value.toInt();
            if (i >= 0 && i < static_cast<int>(buttons.size()))
                buttons[static_cast<size_t>(i)]->setChecked(true);
            return true;
        }
    for (const auto& [item, check] : checks_)
        if (item->Key == key) {
            check->setChecked(value.toInt() != 0);
            return true;
        }
    for (const auto& [item, edit] : texts_)
        if (item->Key == key) {
            edit->setText(value);
            if (!busy_ && (!item->Check || item->Check(value))) emit Chosen();
            return true;
        }
    return false;
}

void ParamPanel::ResetValues() {
    busy_ = true;
    for (const auto& [item, buttons] : options_)
        if (item->Default >= 0 && item->Default < static_cast<int>(buttons.size()))
            buttons[static_cast<size_t>(item->Default)]->setChecked(true);
    for (const auto& [item, check] : checks_)
        check->setChecked(item->Default);
    ApplyChoiceRanges();
    for (SliderRow& s : sliders_) {
        s.Slider->setValue(s.Row->ResetValue());
        s.Text->setText(QString::number(s.Slider->value()));
    }
    if (op_.Dial) {
        angleText_->setText(QString::number(op_.Dial->ResetValue()));
        dial_->SetAngleRadians(op_.Dial->ResetValue() * DialPi / 180);
    }
    busy_ = false;
}

void ParamPanel::ApplyChoiceRanges() {
    if (op_.ChoiceRanges.empty()) return;
    const Params now = Values();
    const bool was = busy_;
    busy_ = true;
    for (SliderRow& s : sliders_) {
        const auto [min, max] = op_.SliderLimits(*s.Row, now, format_, width_, height_);
        s.Slider->setRange(min, max);
        s.Text->setText(QString::number(s.Slider->value()));
    }
    busy_ = was;
}

QSlider* ParamPanel::SliderAt(int i) const {
    return i >= 0 && i < static_cast<int>(sliders_.size()) ? sliders_[static_cast<size_t>(i)].Slider
                                                           : nullptr;
}

QLineEdit* ParamPanel::TextAt(int i) const {
    return i >= 0 && i < static_cast<int>(sliders_.size()) ? sliders_[static_cast<size_t>(i)].Text : nullptr;
}

QLineEdit* ParamPanel::TextBox(const QString& key) const {
    for (const auto& [item, edit] : texts_)
        if (item->Key == key) return edit;
    return nullptr;
}

bool ParamPanel::eventFilter(QObject* watched, QEvent* e) {
    if (e->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(e)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            // Up and Down in a number box step its value by one.
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
                    emit SliderMoved();
                }
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, e);
}

} // namespace vm
