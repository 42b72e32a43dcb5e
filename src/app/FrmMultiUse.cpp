#include "app/FrmMultiUse.h"
#include "app/DialogButtons.h"

#include "core/AppSettings.h"
#include "core/ColorRef.h"
#include "core/Numeric.h"
#include "core/SettingsStore.h"

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace vm {

namespace {
const QString FillSection = QStringLiteral("Fill");

} // namespace

int32_t FillChoice::EffectiveColor() const {
    switch (Content) {
    case 0:
        return Globals().SystemForeColor;
    case 1:
        return Globals().SystemBackColor;
    default:
        return Color & 0xFFFFFF;
    }
}

FillChoice FillChoice::Stored() {
    FillChoice f;
    f.Content = std::clamp(GetSettingInt(SettingsRoot, FillSection, QStringLiteral("FillContent"), 0), 0, 2);
    f.Color = GetSettingInt(SettingsRoot, FillSection, QStringLiteral("FillColor"), 0) & 0xFFFFFF;
    f.Opacity =
        std::clamp(GetSettingInt(SettingsRoot, FillSection, QStringLiteral("FillOpacity"), 100), 1, 100);
    return f;
}

void FillChoice::Store() const {
    SaveSettingInt(SettingsRoot, FillSection, QStringLiteral("FillContent"), Content);
    SaveSettingInt(SettingsRoot, FillSection, QStringLiteral("FillColor"), Color);
    SaveSettingInt(SettingsRoot, FillSection, QStringLiteral("FillOpacity"), Opacity);
}

FrmMultiUse::FrmMultiUse(const QString& dialogCommand, QWidget* parent)
    : QDialog(parent), command_(dialogCommand) {
    auto* outer = new QVBoxLayout(this);
    if (command_ == QLatin1String("Fill")) {
        setWindowTitle(QStringLiteral("填充"));
        auto* group = new QGroupBox(QStringLiteral("内容"));
        auto* g = new QVBoxLayout(group);
        content_[0] = new QRadioButton(QStringLiteral("前景色(&F)"));
        content_[1] = new QRadioButton(QStringLiteral("背景色(&B)"));
        content_[2] = new QRadioButton(QStringLiteral("颜色(&C)..."));
        colourButton_ = new QPushButton;
        colourButton_->setFixedWidth(48);
        connect(colourButton_, &QPushButton::clicked, this, [this] {
            const QColor c =
                QColorDialog::getColor(ColorRefToQColor(chosen_), this, QStringLiteral("选择颜色"));
            if (!c.isValid()) return;
            chosen_ = QColorToColorRef(c);
            content_[2]->setChecked(true);
            ShowColour();
        });
        g->addWidget(content_[0]);
        g->addWidget(content_[1]);
        auto* row = new QHBoxLayout;
        row->addWidget(content_[2]);
        row->addWidget(colourButton_);
        row->addStretch(1);
        g->addLayout(row);
        outer->addWidget(group);
        auto* form = new QFormLayout;
        opacity_ = new QSpinBox;
        opacity_->setRange(1, 100);
        opacity_->setSuffix(QStringLiteral(" %"));
        form->addRow(QStringLiteral("不透明度(&O):"), opacity_);
        outer->addLayout(form);
        SetFill(FillChoice::Stored());
    }
    AddOkCancelButtons(this, outer);
}

void FrmMultiUse::ShowColour() {
    if (!colourButton_) return;
    QPalette p = colourButton_->palette();
    p.setColor(QPalette::Button, ColorRefToQColor(chosen_));
    colourButton_->setPalette(p);
    colourButton_->setStyleSheet(
        QStringLiteral("background-color: %1").arg(ColorRefToQColor(chosen_).name()));
}

FillChoice FrmMultiUse::Fill() const {
    FillChoice f;
    if (!opacity_) return f;
    f.Content = content_[1]->isChecked() ? 1 : content_[2]->isChecked() ? 2 : 0;
    f.Color = chosen_;
    f.Opacity = opacity_->value();
    return f;
}

void FrmMultiUse::SetFill(const FillChoice& choice) {
    if (!opacity_) return;
    content_[std::clamp(choice.Content, 0, 2)]->setChecked(true);
    chosen_ = choice.Color & 0xFFFFFF;
    opacity_->setValue(std::clamp(choice.Opacity, 1, 100));
    ShowColour();
}

void FrmMultiUse::accept() {
    if (command_ == QLatin1String("Fill")) Fill().Store();
    QDialog::accept();
}

} // namespace vm
