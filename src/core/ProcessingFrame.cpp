#include "core/ProcessingFrame.h"

#include "core/MessageBox.h"

#include <algorithm>
#include <cstring>

namespace vm {

QString EmptySelectionMessage(const QString& name) {
    return QStringLiteral("不能完成\"\"") + name + QStringLiteral("\"\"命令,因为所选区域是空的.");
}

ProcessingFrame ProcessingFrame::Begin(CImage& image, const QString& name, const QString& announcedAs) {
    if (image.IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(name), 0, QString(), ButtonsOk, IconNone);
        return ProcessingFrame(nullptr, announcedAs, true);
    }
    image.RaiseProgressStart(image.RestrainProgress, announcedAs, ProgressPixels);
    // Read once: with everything selected the mask is never touched.
    return ProcessingFrame(&image, announcedAs, !image.UsesMask());
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

void ProcessingFrame::BlendSpan(int32_t y, int32_t left, int32_t right, const uint8_t* computed, int bpp,
                                int channels) const {
    uint8_t* p = image_->Row(y) + static_cast<ptrdiff_t>(left) * bpp;
    const uint8_t* weights = WeightRow(y);
    if (!weights && channels == bpp) {
        std::memcpy(p, computed, static_cast<size_t>(right - left + 1) * bpp);
        return;
    }
    for (int32_t x = left; x <= right; ++x, p += bpp, computed += bpp) {
        const int32_t m = WeightIn(weights, x);
        if (m == 255) {
            for (int c = 0; c < channels; ++c)
                p[c] = computed[c];
        } else if (m) {
            for (int c = 0; c < channels; ++c)
                p[c] = static_cast<uint8_t>(BlendByWeight(p[c], computed[c], m));
        }
    }
}

bool ProcessingFrame::End(int kind, const QString& extra) {
    if (!image_ || ended_) return false;
    ended_ = true;
    image_->RaiseProgressEnd(image_->RestrainProgress, name_, kind, extra);
    return true;
}

} // namespace vm
