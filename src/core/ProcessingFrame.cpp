#include "core/ProcessingFrame.h"

#include "core/MessageBox.h"

#include <algorithm>

namespace vm {

QString EmptySelectionMessage(const QString& name) {
    return QStringLiteral("不能完成\"\"") + name + QStringLiteral("\"\"命令,因为所选区域是空的.");
}

ProcessingFrame ProcessingFrame::Begin(CImage& image, const QString& name) {
    if (image.IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(name), 0, QString(), ButtonsOk, IconNone);
        return ProcessingFrame(nullptr, name, true);
    }
    image.RaiseProgressStart(image.RestrainProgress, name, ProgressPixels);
    // Read once: with everything selected the mask is never touched.
    return ProcessingFrame(&image, name, !image.UsesMask());
}

ProcessingFrame::ProcessingFrame(ProcessingFrame&& other) noexcept
    : image_(other.image_), name_(std::move(other.name_)), full_(other.full_), ended_(other.ended_) {
    other.image_ = nullptr;
}

ProcessingFrame::~ProcessingFrame() {
    // An operation that leaves early still closes its step, so that a listener
    // never waits for an end that does not come.
    if (image_ && !ended_) End();
}

DealRect ProcessingFrame::Bounds() const {
    DealRect b{100000, 100000, 0, 0};
    for (const DealRect& r : Rects()) {
        b.Left = std::min(b.Left, r.Left);
        b.Top = std::min(b.Top, r.Top);
        b.Right = std::max(b.Right, r.Right);
        b.Bottom = std::max(b.Bottom, r.Bottom);
    }
    return b;
}

bool ProcessingFrame::End(int kind, const QString& extra) {
    if (!image_ || ended_) return false;
    ended_ = true;
    image_->RaiseProgressEnd(image_->RestrainProgress, name_, kind, extra);
    return true;
}

} // namespace vm
