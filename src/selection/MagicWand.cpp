// Colour-based growth of the selection: the magic wand's flood with its soft
// rim, and "select similar" by the mean colour of what is selected.
#include "selection/Selection.h"

#include "core/Image.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/PixelFormat.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace vm {

namespace {

// The wand's difference between a pixel and the seed: the range of the three
// channel differences with 0 forced into it (so a pixel brighter in one
// channel and darker in another counts both), not their largest magnitude.
inline int32_t ColourDifference(int32_t db, int32_t dg, int32_t dr) {
    return std::max({db, dg, dr, 0}) - std::min({db, dg, dr, 0});
}

// Never: the pixel is neither selected nor does it spread.
constexpr int32_t Never = -1;

// D of a pixel against the seed, by the image's own format. 16-bit pixels are
// widened to 8 bits a channel and compared as colours.
class Difference {
  public:
    Difference(const CImage& image, int32_t sx, int32_t sy) : image_(image), format_(image.PixelFormat) {
        if (Supported()) Read(sx, sy, seed_);
    }
    bool Supported() const {
        switch (format_) {
        case PixelFormat8bppGray:
        case PixelFormat16bppRGB555:
        case PixelFormat16bppRGB565:
        case PixelFormat24bppRGB:
        case PixelFormat32bppRGB:
        case PixelFormat32bppARGB:
        case PixelFormat32bppPARGB:
            return true;
        default:
            return false;
        }
    }
    int32_t operator()(int32_t x, int32_t y) const {
        int32_t p[4];
        Read(x, y, p);
        if (format_ == PixelFormat8bppGray) return std::abs(p[0] - seed_[0]);
        if (format_ == PixelFormat32bppARGB || format_ == PixelFormat32bppPARGB) {
            if (p[3] == 0) return seed_[3] == 0 ? 0 : Never;
            if (seed_[3] == 0) return p[3];
        }
        return ColourDifference(p[0] - seed_[0], p[1] - seed_[1], p[2] - seed_[2]);
    }

  private:
    void Read(int32_t x, int32_t y, int32_t* c) const {
        const uint8_t* row = image_.Row(y);
        switch (format_) {
        case PixelFormat8bppGray:
            c[0] = row[x];
            break;
        case PixelFormat16bppRGB555:
        case PixelFormat16bppRGB565: {
            const uint32_t v = row[2 * x] | (row[2 * x + 1] << 8);
            const bool g6 = format_ == PixelFormat16bppRGB565;
            const uint32_t b = v & 31, g = g6 ? (v >> 5) & 63 : (v >> 5) & 31,
                           r = g6 ? (v >> 11) & 31 : (v >> 10) & 31;
            c[0] = static_cast<int32_t>((b << 3) | (b >> 2));
            c[1] = static_cast<int32_t>(g6 ? ((g << 2) | (g >> 4)) : ((g << 3) | (g >> 2)));
            c[2] = static_cast<int32_t>((r << 3) | (r >> 2));
            c[3] = 255;
            break;
        }
        case PixelFormat24bppRGB:
            c[0] = row[3 * x];
            c[1] = row[3 * x + 1];
            c[2] = row[3 * x + 2];
            c[3] = 255;
            break;
        default:
            c[0] = row[4 * x];
            c[1] = row[4 * x + 1];
            c[2] = row[4 * x + 2];
            c[3] = row[4 * x + 3];
            break;
        }
    }

    const CImage& image_;
    uint32_t format_;
    int32_t seed_[4] = {0, 0, 0, 0};
};

} // namespace

void CSelection::FloodFromImage(const CImage& image, int32_t x, int32_t y, int32_t tolerance,
                                bool contiguous) {
    if (!bits_ || !image.Pointer()) return;
    if (x < 0 || y < 0 || x >= image.Width() || y >= image.Height()) return;
    const Difference difference(image, x, y);
    if (!difference.Supported()) return;
    FillBuffer(0);
    const int32_t w = std::min(width_, image.Width()), h = std::min(height_, image.Height());
    if (x >= w || y >= h) return;

    const bool hard = !antiAlias_ || tolerance < 1;
    const int32_t outer = RoundHalfEven(1.5 * tolerance);
    // Mask value of a pixel, 0 for "not selected, does not spread". Across the
    // band between T and 1.5 T the soft rim falls from near 255 towards 0, and
    // the rim spreads like the core so that gradients are followed.
    auto verdict = [&](int32_t px, int32_t py) -> uint8_t {
        const int32_t d = difference(px, py);
        if (d == Never) return 0;
        if (hard) return d <= tolerance ? 255 : 0;
        if (d >= outer) return 0;
        if (d <= tolerance) return 255;
        return static_cast<uint8_t>(std::clamp(768 - d * 512 / tolerance, 1, 255));
    };

    if (!contiguous) {
        for (int32_t py = 0; py < h; ++py) {
            uint8_t* m = Row(py);
            for (int32_t px = 0; px < w; ++px)
                m[px] = verdict(px, py);
        }
        return;
    }
    // First in, first out, as linear positions. The system's queue held 16-bit
    // coordinates and lost pictures beyond 32767 pixels; ours holds 32 bits.
    // A pixel is queued once, when its mask byte turns non-zero, so one entry
    // a pixel is enough.
    std::vector<uint32_t> queue(static_cast<size_t>(w) * h);
    size_t head = 0, tail = 0;
    Row(y)[x] = 255;
    queue[tail++] = static_cast<uint32_t>(y) * static_cast<uint32_t>(w) + static_cast<uint32_t>(x);
    auto visit = [&](int32_t px, int32_t py) {
        uint8_t& m = Row(py)[px];
        if (m) return;
        const uint8_t v = verdict(px, py);
        if (!v) return;
        m = v;
        queue[tail++] = static_cast<uint32_t>(py) * static_cast<uint32_t>(w) + static_cast<uint32_t>(px);
    };
    while (head < tail) {
        const uint32_t at = queue[head++];
        const int32_t px = static_cast<int32_t>(at % static_cast<uint32_t>(w));
        const int32_t py = static_cast<int32_t>(at / static_cast<uint32_t>(w));
        if (px > 0) visit(px - 1, py);
        if (px + 1 < w) visit(px + 1, py);
        if (py > 0) visit(px, py - 1);
        if (py + 1 < h) visit(px, py + 1);
    }
}

bool CSelection::AddMagicWnd(const CImage& image, int32_t x, int32_t y, int32_t tolerance, bool contiguous,
                             bool showWarning) {
    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat4bppIndexed || format == PixelFormat8bppIndexed ||
        format == PixelFormat1bppIndexed) {
        MessageBox(QStringLiteral("暂时不支持该模式下的魔术棒工具."), 0, QString(), ButtonsOk,
                   IconExclamation);
        return false;
    }
    if (!bits_) return false;
    RaiseBefore();
    // A click beside the picture leaves the selection as it was, in every
    // mode: an intersection with nothing would otherwise wipe it out.
    const bool seedInside = x >= 0 && y >= 0 && x < std::min(width_, image.Width()) &&
                            y < std::min(height_, image.Height()) && image.Pointer() &&
                            Difference(image, x, y).Supported();
    if (!seedInside) {
        RaiseChanged();
        return false;
    }
    if (useDefaultSetting_ || SelectionMode == SelectionModeNew) {
        Left = 0;
        Top = 0;
        FloodFromImage(image, x, y, tolerance, contiguous);
        nestedChange_ = true;
        Feather(FeatherRadius);
        nestedChange_ = false;
    } else {
        ResetSelectionPosoition();
        CSelection temp;
        if (temp.CreateNewSelection(width_, height_)) {
            temp.SetAntiAlias(antiAlias_);
            temp.FloodFromImage(image, x, y, tolerance, contiguous);
            FeatherRadius = FeatherRadius == 0 ? 0 : std::clamp(FeatherRadius, 1, 250);
            if (FeatherRadius) temp.FeatherPixels(FeatherRadius);
            CombineWith(temp.bits_, temp.stride_, SelectionMode);
        }
    }
    useDefaultSetting_ = false;
    CheckSeletion(showWarning);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

bool CSelection::SelectedSimilar(const CImage& image, int32_t tolerance) {
    if (!bits_ || !image.Pointer()) return false;
    const int bpp = image.PixelFormat == PixelFormat24bppRGB ? 3
                    : (image.PixelFormat == PixelFormat32bppARGB ||
                       image.PixelFormat == PixelFormat32bppRGB || image.PixelFormat == PixelFormat32bppPARGB)
                        ? 4
                        : 0;
    if (!bpp) return false;
    const int32_t w = std::min(width_, image.Width()), h = std::min(height_, image.Height());
    int64_t sum[3] = {0, 0, 0}, count = 0;
    for (int32_t y = 0; y < h; ++y) {
        const uint8_t* m = Row(y);
        const uint8_t* p = image.Row(y);
        for (int32_t x = 0; x < w; ++x, p += bpp) {
            if (!m[x]) continue;
            sum[0] += p[0];
            sum[1] += p[1];
            sum[2] += p[2];
            ++count;
        }
    }
    if (!count) return false;
    RaiseBefore();
    int32_t mean[3];
    for (int c = 0; c < 3; ++c)
        mean[c] = RoundHalfEven(static_cast<double>(sum[c]) / static_cast<double>(count));
    FillBuffer(0);
    for (int32_t y = 0; y < h; ++y) {
        uint8_t* m = Row(y);
        const uint8_t* p = image.Row(y);
        for (int32_t x = 0; x < w; ++x, p += bpp)
            if (ColourDifference(p[0] - mean[0], p[1] - mean[1], p[2] - mean[2]) <= tolerance) m[x] = 255;
    }
    useDefaultSetting_ = false;
    CheckSeletion(true);
    UpdateSelectionRegion();
    RaiseChanged();
    return true;
}

} // namespace vm
