#include "app/FrmOperation.h"

#include "canvas/Canvas.h"
#include "core/OperationSettings.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cstring>

namespace vm {

namespace {
const QString PreviewKey = QStringLiteral("PreView");
} // namespace

FrmOperation::FrmOperation(const Operation& op, Canvas& target, QWidget* parent)
    : QDialog(parent), op_(op), canvas_(target) {
    setWindowTitle(op.Title);
    CImage& image = *canvas_.Image();
    source_ = image.CloneImage();
    work_ = image.CloneImage();
    // The copy runs inside the document's selection, as the document would.
    work_->SetSelection(canvas_.Selection());
    const uint32_t format = image.PixelFormat;
    const Params start = LoadStoredParams(op, image);

    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    outer->addLayout(form);
    auto addSlider = [&](const SliderSpec& s) {
        auto* row = new QHBoxLayout;
        auto* slider = new QSlider(Qt::Horizontal);
        auto* box = new QSpinBox;
        const auto [min, max] = op.SliderLimits(s, start, format, image.Width(), image.Height());
        slider->setRange(min, max);
        box->setRange(min, max);
        rangers_.push_back([this, s, slider, box, format, w = image.Width(), h = image.Height()] {
            const auto [lo, hi] = op_.SliderLimits(s, CurrentParams(), format, w, h);
            slider->setRange(lo, hi);
            box->setRange(lo, hi);
        });
        box->setSuffix(s.Unit.isEmpty() ? QString() : QLatin1Char(' ') + s.Unit);
        slider->setMinimumWidth(220);
        row->addWidget(slider, 1);
        row->addWidget(box);
        connect(slider, &QSlider::valueChanged, box, &QSpinBox::setValue);
        connect(box, &QSpinBox::valueChanged, slider, &QSlider::setValue);
        connect(box, &QSpinBox::valueChanged, this, [this] { ArmRefresh(); });
        box->setValue(start.Int(s.Key));
        // The label's access key leads to the number box.
        auto* label = new QLabel(s.Label.isEmpty() ? s.Key : s.Label);
        label->setBuddy(box);
        form->addRow(label, row);
        readers_[s.Key] = [box] { return QString::number(box->value()); };
        writers_[s.Key] = [box](const QString& v) { box->setValue(v.toInt()); };
    };
    for (const SliderSpec& s : op.Sliders)
        addSlider(s);
    if (op.Dial) addSlider(*op.Dial);
    for (const ChoiceSpec& c : op.Choices) {
        auto* combo = new QComboBox;
        combo->addItems(c.Choices);
        combo->setCurrentIndex(start.Int(c.Key));
        connect(combo, &QComboBox::currentIndexChanged, this, [this] {
            for (const auto& r : rangers_)
                r();
            ArmRefresh();
        });
        form->addRow(c.Label, combo);
        readers_[c.Key] = [combo] { return QString::number(combo->currentIndex()); };
        writers_[c.Key] = [combo](const QString& v) { combo->setCurrentIndex(v.toInt()); };
    }
    for (const CheckSpec& c : op.Checks) {
        auto* check = new QCheckBox(c.Label);
        check->setChecked(start.Bool(c.Key));
        connect(check, &QCheckBox::toggled, this, [this] { ArmRefresh(); });
        form->addRow(check);
        readers_[c.Key] = [check] { return QString::number(check->isChecked() ? 1 : 0); };
        writers_[c.Key] = [check](const QString& v) { check->setChecked(v.toInt() != 0); };
    }
    for (const TextSpec& t : op.Texts) {
        auto* edit = new QLineEdit(start.Text(t.Key));
        const auto check = t.Check;
        connect(edit, &QLineEdit::textChanged, this, [this, edit, check](const QString& v) {
            const bool good = !check || check(v);
            edit->setStyleSheet(good ? QString() : QStringLiteral("color: #c00000"));
            if (good) ArmRefresh();
        });
        form->addRow(t.Label, edit);
        readers_[t.Key] = [edit, check, def = t.Default] {
            return (!check || check(edit->text())) ? edit->text() : def;
        };
        writers_[t.Key] = [edit](const QString& v) { edit->setText(v); };
    }
    for (auto it = start.Values().begin(); it != start.Values().end(); ++it)
        if (!readers_.contains(it.key())) fixed_.Set(it.key(), it.value());
    preview_ = new QCheckBox(QStringLiteral("预览(&P)"));
    preview_->setChecked(GetSettingBool(SettingsRoot, op.SettingsSection(), PreviewKey, true));
    connect(preview_, &QCheckBox::toggled, this, [this] {
        if (preview_->isChecked())
            canvas_.UpdateBufferImageFromImage(work_.get());
        else
            canvas_.UpdateBufferImageFromImage(nullptr);
    });
    outer->addWidget(preview_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("确定"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("取消"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    outer->addWidget(buttons);

    timer_.setSingleShot(true);
    timer_.setInterval(50);
    connect(&timer_, &QTimer::timeout, this, [this] { Refresh(); });
    Refresh();
}

FrmOperation::~FrmOperation() = default;

Params FrmOperation::CurrentParams() const {
    Params p = fixed_;
    for (auto it = readers_.begin(); it != readers_.end(); ++it)
        p.Set(it.key(), it.value()());
    return p;
}

bool FrmOperation::SetParam(const QString& key, const QString& value) {
    auto it = writers_.find(key);
    if (it == writers_.end()) return false;
    it.value()(value);
    return true;
}

void FrmOperation::ArmRefresh() {
    dirty_ = true;
    timer_.start();
}

void FrmOperation::Refresh() {
    timer_.stop();
    // Every run starts from the document's pixels and palette as they were.
    std::memcpy(work_->Pointer(), source_->Pointer(), std::min(work_->BlockSize(), source_->BlockSize()));
    work_->SetPaletteData(source_->GetPaletteData());
    op_.Run(*work_, op_.WithDefaults(CurrentParams()));
    dirty_ = false;
    if (preview_ && preview_->isChecked()) canvas_.UpdateBufferImageFromImage(work_.get());
}

void FrmOperation::accept() {
    if (dirty_) Refresh();
    StoreParams(op_, CurrentParams());
    SaveSettingInt(SettingsRoot, op_.SettingsSection(), PreviewKey, preview_->isChecked() ? 1 : 0);
    // One command for the history, under the operation's own name.
    canvas_.Image()->VirtualExecute(*work_, op_.Title);
    QDialog::accept();
}

void FrmOperation::reject() {
    timer_.stop();
    canvas_.UpdateBufferImageFromImage(nullptr);
    QDialog::reject();
}

} // namespace vm
