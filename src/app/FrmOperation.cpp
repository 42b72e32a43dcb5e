#include "app/FrmOperation.h"
#include "app/DialogButtons.h"

#include "app/ParamPanel.h"
#include "canvas/Canvas.h"
#include "core/MemoryGuard.h"
#include "core/OperationSettings.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
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
    const Params start = LoadStoredParams(op, image);

    auto* outer = new QVBoxLayout(this);
    panel_ = new ParamPanel(op, start, image.PixelFormat, image.Width(), image.Height());
    outer->addWidget(panel_);
    connect(panel_, &ParamPanel::SliderMoved, this, [this] { ArmRefresh(); });
    connect(panel_, &ParamPanel::Chosen, this, [this] { ArmRefresh(); });
    // Values without a control of their own (a filter's centre), as loaded.
    const Params shown = panel_->Values();
    for (auto it = start.Values().begin(); it != start.Values().end(); ++it)
        if (!shown.Has(it.key())) fixed_.Set(it.key(), it.value());
    preview_ = new QCheckBox(QStringLiteral("预览(&P)"));
    preview_->setChecked(GetSettingBool(SettingsRoot, op.SettingsSection(), PreviewKey, true));
    connect(preview_, &QCheckBox::toggled, this, [this] {
        if (preview_->isChecked())
            canvas_.UpdateBufferImageFromImage(work_.get());
        else
            canvas_.UpdateBufferImageFromImage(nullptr);
    });
    outer->addWidget(preview_);
    AddOkCancelButtons(this, outer);

    timer_.setSingleShot(true);
    timer_.setInterval(50);
    connect(&timer_, &QTimer::timeout, this, [this] { Refresh(); });
    Refresh();
}

FrmOperation::~FrmOperation() = default;

Params FrmOperation::CurrentParams() const {
    Params p = fixed_;
    const Params shown = panel_->Values();
    for (auto it = shown.Values().begin(); it != shown.Values().end(); ++it)
        p.Set(it.key(), it.value());
    // A text being typed that the row does not take yet runs with its default.
    for (const TextSpec& t : op_.Texts)
        if (t.Check && !t.Check(p.Text(t.Key))) p.Set(t.Key, t.Default);
    return p;
}

bool FrmOperation::SetParam(const QString& key, const QString& value) {
    return panel_->SetValue(key, value);
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
    GuardMemory([this] { return op_.Run(*work_, op_.WithDefaults(CurrentParams())); });
    dirty_ = false;
    if (preview_ && preview_->isChecked()) canvas_.UpdateBufferImageFromImage(work_.get());
}

void FrmOperation::accept() {
    if (dirty_) Refresh();
    // One command for the history, under the operation's own name; short of
    // memory for it, the dialog stays open.
    if (!GuardMemory([this] { canvas_.Image()->VirtualExecute(*work_, op_.Title); })) return;
    StoreParams(op_, CurrentParams());
    SaveSettingInt(SettingsRoot, op_.SettingsSection(), PreviewKey, preview_->isChecked() ? 1 : 0);
    QDialog::accept();
}

void FrmOperation::reject() {
    timer_.stop();
    canvas_.UpdateBufferImageFromImage(nullptr);
    QDialog::reject();
}

} // namespace vm
