// The image's side of the selection: the list of rectangles operations visit,
// the selected part as a picture, counting, and handing over a result.
#include "core/Image.h"
#include "core/Numeric.h"
#include "selection/Selection.h"

#include <algorithm>
#include <cstring>

namespace vm {

void CImage::SetSelection(CSelection* selection) {
    selection_ = selection;
    UpdateSelectionDealRect();
}

bool CImage::UsesMask() const {
    return selection_ && !selection_->UseDefaultSetting();
}

const uint8_t* CImage::MaskRowFor(int32_t y) const {
    // The weight of image pixel x on this row is the returned pointer [x].
    // The mask's position is read afresh for every row: it moves while dragged.
    const CSelection& s = *selection_;
    return s.Pointer() + static_cast<ptrdiff_t>(Top - s.Top + y) * s.Stride() + (Left - s.Left);
}

bool CImage::UpdateSelectionDealRect() {
    if (!selection_) {
        dealRects_.clear();
        return !SelectionDealRects().empty();
    }
    if (selection_->UseDefaultSetting()) {
        // The image's own position is not taken off here: images that run
        // operations stand at 0, 0.
        dealRects_.assign(1, DealRect{Left, Top, width_ + Left - 1, height_ + Top - 1});
        return true;
    }
    QRegion region = selection_->Region().translated(selection_->Left, selection_->Top);
    region &= QRect(Left, Top, width_, height_);
    if (region.isEmpty()) {
        dealRects_.clear();
        return false;
    }
    std::vector<DealRect> rects;
    rects.reserve(static_cast<size_t>(region.rectCount()));
    for (const QRect& r : region)
        rects.push_back({r.left() - Left, r.top() - Top, r.right() - Left, r.bottom() - Top});
    if (!rects.empty()) dealRects_ = std::move(rects);
    return true;
}

bool CImage::GetSelectionDealRect() {
    UpdateSelectionDealRect();
    return false;
}

const std::vector<DealRect>& CImage::SelectionDealRects() const {
    if (selection_) return dealRects_;
    // No selection attached: everything is selected.
    wholeRect_.clear();
    if (pixels_) wholeRect_.push_back({Left, Top, width_ + Left - 1, height_ + Top - 1});
    return wholeRect_;
}

static DealRect OuterBound(const std::vector<DealRect>& rects) {
    DealRect b{100000, 100000, 0, 0};
    for (const DealRect& r : rects) {
        b.Left = std::min(b.Left, r.Left);
        b.Top = std::min(b.Top, r.Top);
        b.Right = std::max(b.Right, r.Right);
        b.Bottom = std::max(b.Bottom, r.Bottom);
    }
    return b;
}

void CImage::GetSelectionRange(int32_t& width, int32_t& height) const {
    const auto& rects = SelectionDealRects();
    if (rects.empty()) return;
    const DealRect b = OuterBound(rects);
    width = b.Right - b.Left + 1;
    height = b.Bottom - b.Top + 1;
}

std::unique_ptr<CImage> CImage::GetSelectionImage() const {
    const auto& rects = SelectionDealRects();
    if (rects.empty() || !pixels_) return nullptr;
    const DealRect b = OuterBound(rects);
    auto out = std::make_unique<CImage>();
    if (!out->CreateNewImage(b.Right - b.Left + 1, b.Bottom - b.Top + 1, 32)) return nullptr;
    const bool masked = UsesMask();
    const int bits = BitsPerPixel(PixelFormat);
    for (int32_t y = b.Top; y <= b.Bottom; ++y) {
        const uint8_t* s = Row(y);
        const uint8_t* mask = masked ? MaskRowFor(y) : nullptr;
        uint8_t* d = out->Row(y - b.Top);
        for (int32_t x = b.Left; x <= b.Right; ++x) {
            const int32_t m = mask ? mask[x] : 255;
            uint8_t* p = d + 4 * (x - b.Left);
            switch (PixelFormat) {
            case PixelFormat24bppRGB:
                std::memcpy(p, s + 3 * x, 3);
                p[3] = static_cast<uint8_t>(m);
                break;
            case PixelFormat8bppGray:
                p[0] = p[1] = p[2] = s[x];
                p[3] = static_cast<uint8_t>(m);
                break;
            case PixelFormat32bppARGB:
                std::memcpy(p, s + 4 * x, 3);
                p[3] = static_cast<uint8_t>(Div255(m * s[4 * x + 3]));
                break;
            default:
                // Indexed pictures give their palette colours, so that copying
                // from them works as from the others.
                if (bits == 1 || bits == 4 || bits == 8) {
                    const int index = IndexInRow(s, x, bits);
                    std::memcpy(p, palette_.Entry(index), 3);
                    p[3] = static_cast<uint8_t>(m);
                }
                break;
            }
        }
    }
    return out;
}

DealRect CImage::GetSelectionClipRect() const {
    DealRect r{Left, Top, width_ + Left - 1, height_ + Top - 1};
    if (!UsesMask()) return r;
    const CSelection& s = *selection_;
    r.Left = std::max(r.Left, s.Left);
    r.Top = std::max(r.Top, s.Top);
    r.Right = std::min(r.Right, s.Left + s.Width() - 1);
    r.Bottom = std::min(r.Bottom, s.Top + s.Height() - 1);
    return r;
}

DealRect CImage::GetSelectionBoundRect() const {
    if (!UsesMask()) return {0, 0, width_ - 1, height_ - 1};
    const CSelection& s = *selection_;
    int32_t l = 0, t = 0, r = 0, b = 0;
    s.GetSelectionBound(l, t, r, b, 0);
    DealRect out{std::max(l + s.Left, Left), std::max(t + s.Top, Top),
                 std::min(r + s.Left, Left + width_ - 1), std::min(b + s.Top, Top + height_ - 1)};
    out.Left -= Left;
    out.Right -= Left;
    out.Top -= Top;
    out.Bottom -= Top;
    return out;
}

int64_t CImage::GetSelectedPixelCount(int32_t step) const {
    if (step < 1) step = 1;
    if (!UsesMask()) return RoundHalfEven64(static_cast<double>(width_) * height_ / step / step);
    const CSelection& s = *selection_;
    const DealRect r = GetSelectionClipRect();
    int64_t count = 0;
    for (int32_t y = r.Top; y <= r.Bottom; y += step) {
        const uint8_t* m = s.Pointer() + static_cast<ptrdiff_t>(y - s.Top) * s.Stride() - s.Left;
        for (int32_t x = r.Left; x <= r.Right; x += step)
            if (m[x]) ++count;
    }
    return count;
}

bool CImage::VirtualExecute(const CImage& source, const QString& name) {
    RaiseProgressStart(RestrainProgress, name, ProgressVirtual);
    if (pixels_ && source.pixels_)
        std::memcpy(pixels_, source.pixels_, std::min(BlockSize(), source.BlockSize()));
    // By bytes: the view's colour table is left alone, Render hands the
    // current palette over at every draw.
    SetPaletteBytes(source.palette_);
    RaiseProgressEnd(RestrainProgress, name, ProgressVirtual, QString());
    return false;
}

} // namespace vm
