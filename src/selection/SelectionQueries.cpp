// What the rest of the system asks of a selection: its scan-line region, its
// bound, its pixel count, whether a point or the canvas is covered.
#include "selection/Selection.h"

#include "selection/MaskScan.h"

#include <QRect>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace vm {

QRegion CSelection::SelectionToRegion(int32_t threshold) const {
    if (!bits_) return QRegion();
    // GDI's rectangle, exclusive on both far edges, taken one short as the
    // system always did: the default region misses the last row and column.
    if (useDefaultSetting_) return QRegion(0, 0, width_ - 1, height_ - 1);

    // Runs of each row become one-row rectangles; a row whose runs equal the
    // row above's only makes that band taller. The result is already in the
    // banded y-x order a region keeps, so it is handed over in one piece
    // instead of being joined rectangle by rectangle.
    std::vector<QRect> rects;
    std::vector<std::pair<int32_t, int32_t>> runs, bandRuns;
    size_t bandStart = 0;
    int32_t bandBottom = -1; // exclusive bottom of the last band
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* m = Row(y);
        runs.clear();
        int32_t x = 0;
        while (x < width_) {
            if (threshold == 0)
                x = maskscan::SkipZeros(m, x, width_);
            else
                while (x < width_ && m[x] <= threshold)
                    ++x;
            if (x >= width_) break;
            const int32_t start = x;
            if (threshold == 0)
                x = maskscan::SkipNonZeros(m, x, width_);
            else
                while (x < width_ && m[x] > threshold)
                    ++x;
            runs.emplace_back(start, x);
        }
        if (runs.empty()) continue;
        if (bandBottom == y && runs == bandRuns) {
            for (size_t i = bandStart; i < rects.size(); ++i)
                rects[i].setBottom(y);
        } else {
            bandStart = rects.size();
            for (const auto& r : runs)
                rects.emplace_back(r.first, y, r.second - r.first, 1);
            bandRuns = runs;
        }
        bandBottom = y + 1;
    }
    QRegion region;
    if (!rects.empty()) region.setRects(rects.data(), static_cast<int>(rects.size()));
    return region;
}

void CSelection::UpdateSelectionRegion() {
    region_ = SelectionToRegion(0);
}

int32_t CSelection::GetSelectedPixelCount() const {
    if (!bits_) return 0;
    if (useDefaultSetting_) return width_ * height_;
    int64_t count = 0;
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* m = Row(y);
        for (int32_t x = 0; x < width_; ++x)
            count += m[x] != 0;
    }
    return static_cast<int32_t>(count);
}

bool CSelection::IsSelectionValidToCanvas() const {
    if (useDefaultSetting_ || !bits_) return false;
    const int64_t left = Left, top = Top;
    if (std::abs(left) >= width_ || std::abs(top) >= height_) return false;
    const int64_t x0 = left < 0 ? -left : 0, x1 = left < 0 ? width_ - 1 : width_ - left - 1;
    const int64_t y0 = top < 0 ? -top : 0, y1 = top < 0 ? height_ - 1 : height_ - top - 1;
    for (int64_t y = y0; y <= y1; ++y) {
        const uint8_t* m = Row(static_cast<int32_t>(y));
        for (int64_t x = x0; x <= x1; ++x)
            if (m[x]) return true;
    }
    return false;
}

bool CSelection::IsPtInSelection(int32_t x, int32_t y, int32_t threshold) const {
    if (useDefaultSetting_ || !bits_) return false;
    const int64_t mx = static_cast<int64_t>(x) - Left, my = static_cast<int64_t>(y) - Top;
    if (mx < 0 || my < 0 || mx >= width_ || my >= height_) return false;
    return Row(static_cast<int32_t>(my))[mx] > threshold;
}

void CSelection::GetSelectionBound(int32_t& left, int32_t& top, int32_t& right, int32_t& bottom,
                                   int32_t threshold) const {
    if (useDefaultSetting_) {
        left = 0;
        top = 0;
        right = width_;
        bottom = height_;
        return;
    }
    int32_t l = width_, t = height_, r = -1, b = -1;
    // Top edge: the first row holding a byte above the threshold; bottom edge
    // likewise from below. Between them, each row only needs looking at left
    // of the best left edge so far and right of the best right edge.
    for (int32_t y = 0; y < height_ && t == height_; ++y) {
        const uint8_t* m = Row(y);
        for (int32_t x = 0; x < width_; ++x)
            if (m[x] > threshold) {
                t = y;
                break;
            }
    }
    if (t == height_) {
        left = width_;
        top = height_;
        right = -1;
        bottom = -1;
        return;
    }
    for (int32_t y = height_ - 1; y >= t; --y) {
        const uint8_t* m = Row(y);
        for (int32_t x = 0; x < width_; ++x)
            if (m[x] > threshold) {
                b = y;
                break;
            }
        if (b >= 0) break;
    }
    for (int32_t y = t; y <= b; ++y) {
        const uint8_t* m = Row(y);
        for (int32_t x = 0; x < l; ++x)
            if (m[x] > threshold) {
                l = x;
                break;
            }
        for (int32_t x = width_ - 1; x > r; --x)
            if (m[x] > threshold) {
                r = x;
                break;
            }
    }
    left = l;
    top = t;
    right = r;
    bottom = b;
}

} // namespace vm
