#include "core/EditOps.h"

#include "core/Numeric.h"
#include "core/ProcessingFrame.h"

#include <algorithm>

namespace vm {

int32_t GreyOfColor(int32_t color) {
    int32_t r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    return RoundHalfEven((r + g + b) / 3.0);
}

namespace {

// Moves every selected pixel towards a target: Channel(v, c) is the new value
// of a byte whose target is c, Alpha(a) the new alpha of an RGBA 32 pixel
// (null: alpha untouched, colour moves instead).
template <class ColourRule, class AlphaRule>
bool MoveSelectedPixels(CImage& image, const QString& name, int32_t color, ColourRule channel,
                        AlphaRule alpha, bool alphaOnly) {
    auto frame = ProcessingFrame::Begin(image, name);
    if (!frame) return false;
    int32_t r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    const int32_t target[3] = {b, g, r};
    const int32_t grey = GreyOfColor(color);
    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat24bppRGB || format == PixelFormat32bppARGB) {
        const int bpp = format == PixelFormat32bppARGB ? 4 : 3;
        for (const DealRect& rect : frame.Rects()) {
            for (int32_t y = rect.Top; y <= rect.Bottom; ++y) {
                uint8_t* p = image.Row(y) + static_cast<ptrdiff_t>(rect.Left) * bpp;
                const uint8_t* m = frame.WeightRow(y);
                for (int32_t x = rect.Left; x <= rect.Right; ++x, p += bpp) {
                    const int32_t w = m ? m[x] : 255;
                    if (w == 0) continue;
                    if (bpp == 4) p[3] = static_cast<uint8_t>(BlendByWeight(p[3], alpha(p[3]), w));
                    if (bpp == 4 && alphaOnly) continue;
                    for (int c = 0; c < 3; ++c)
                        p[c] = static_cast<uint8_t>(BlendByWeight(p[c], channel(p[c], target[c]), w));
                }
            }
        }
    } else if (format == PixelFormat8bppGray) {
        frame.MapGreyPixels([&](int v) { return channel(v, grey); });
    }
    return frame.End();
}

} // namespace

bool Clear(CImage& image, int32_t backColor) {
    return MoveSelectedPixels(
        image, QStringLiteral("清除"), backColor, [](int32_t, int32_t c) { return c; },
        [](int32_t) { return 0; }, true);
}

bool FillWithColor(CImage& image, int32_t color, int32_t opacity) {
    opacity = std::clamp(opacity, 1, 100);
    auto toward = [opacity](int32_t v, int32_t c) { return v + (c - v) * opacity / 100; };
    return MoveSelectedPixels(
        image, QStringLiteral("填充"), color, toward, [&](int32_t a) { return toward(a, 255); }, false);
}

} // namespace vm
