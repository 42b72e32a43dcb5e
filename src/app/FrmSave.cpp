#include "app/FrmSave.h"
#include "app/DialogButtons.h"

#include "core/SettingsStore.h"
#include "formats/ParserRegistry.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace vm {

namespace {

bool Shown(const SaveOptionSpec& declared, const CImage& image) {
    return !declared.AppliesTo || declared.AppliesTo(image);
}

} // namespace

bool FrmSave::HasOptions(int32_t format, const CImage& image) {
    const FileFamily* family = ParserFor(format);
    if (!family) return false;
    for (const SaveOptionSpec& declared : family->Options)
        if (Shown(declared, image)) return true;
    return false;
}

bool FrmSave::HasOptions(int32_t format) {
    const FileFamily* family = ParserFor(format);
    return family && !family->Options.empty();
}

SaveOptions FrmSave::RememberedOptions(int32_t format, const CImage& image) {
    const FileFamily* family = ParserFor(format);
    return family ? ResolveSaveOptions(*family, image, SaveOptions(), true) : SaveOptions();
}

FrmSave::FrmSave(int32_t format, const CImage& image, QWidget* parent)
    : QDialog(parent), family_(ParserFor(format)), options_(RememberedOptions(format, image)) {
    setWindowTitle(QStringLiteral("保存选项"));
    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    outer->addLayout(form);
    if (family_) {
        for (const SaveOptionSpec& declared : family_->Options) {
            if (!Shown(declared, image)) continue;
            const int32_t value = declared.ValueIn(options_);
            const QString caption = declared.Label + QStringLiteral(":");
            switch (declared.Type) {
            case SaveOptionSpec::Switch: {
                auto* box = new QCheckBox(declared.Label);
                box->setChecked(value != 0);
                form->addRow(box);
                editors_.insert(declared.Key, box);
                connect(box, &QCheckBox::toggled, this, &FrmSave::SyncEnabled);
                break;
            }
            case SaveOptionSpec::Choice: {
                auto* list = new QComboBox;
                for (const SaveOptionChoice& c : declared.Choices) {
                    if (declared.Fits && !declared.Fits(c.Value, image)) continue;
                    list->addItem(c.Caption, c.Value);
                    if (c.Value == value) list->setCurrentIndex(list->count() - 1);
                }
                form->addRow(caption, list);
                editors_.insert(declared.Key, list);
                connect(list, &QComboBox::currentIndexChanged, this, &FrmSave::SyncEnabled);
                break;
            }
            default: {
                auto* row = new QWidget;
                auto* layout = new QHBoxLayout(row);
                layout->setContentsMargins(0, 0, 0, 0);
                auto* slider = new QSlider(Qt::Horizontal);
                auto* box = new QSpinBox;
                slider->setRange(declared.Min, declared.Max);
                box->setRange(declared.Min, declared.Max);
                layout->addWidget(slider, 1);
                layout->addWidget(box);
                connect(slider, &QSlider::valueChanged, box, &QSpinBox::setValue);
                connect(box, &QSpinBox::valueChanged, slider, &QSlider::setValue);
                box->setValue(declared.Clamped(value));
                form->addRow(caption, row);
                editors_.insert(declared.Key, box);
                break;
            }
            }
        }
    }
    SyncEnabled();
    AddOkCancelButtons(this, outer);
}

int32_t FrmSave::Value(const SaveOptionSpec& declared) const {
    QWidget* editor = editors_.value(declared.Key);
    if (auto* box = qobject_cast<QCheckBox*>(editor)) return box->isChecked() ? 1 : 0;
    if (auto* list = qobject_cast<QComboBox*>(editor)) return list->currentData().toInt();
    if (auto* box = qobject_cast<QSpinBox*>(editor)) return box->value();
    return declared.ValueIn(options_);
}

void FrmSave::SyncEnabled() {
    if (!family_) return;
    for (const SaveOptionSpec& declared : family_->Options) {
        QWidget* editor = editors_.value(declared.Key);
        if (!editor || declared.EnabledWhenKey.isEmpty()) continue;
        const SaveOptionSpec* other = family_->Option(declared.EnabledWhenKey);
        editor->setEnabled(!other || Value(*other) == declared.EnabledWhenValue);
    }
}

SaveOptions FrmSave::Options() const {
    SaveOptions o = options_;
    if (!family_) return o;
    for (const SaveOptionSpec& declared : family_->Options) {
        QWidget* editor = editors_.value(declared.Key);
        if (!editor) continue;
        // A switch that does not count for the choices made is written off.
        const int32_t value = Value(declared);
        o.Set(declared.Key, editor->isEnabled() || declared.Type != SaveOptionSpec::Switch ? value : 0);
    }
    return o;
}

void FrmSave::accept() {
    const SaveOptions o = Options();
    if (family_)
        for (const SaveOptionSpec& declared : family_->Options)
            if (editors_.contains(declared.Key) && !declared.SettingKey.isEmpty())
                SaveSettingInt(SettingsRoot, SaveSettingSection(), declared.SettingKey, declared.ValueIn(o));
    QDialog::accept();
}

} // namespace vm
