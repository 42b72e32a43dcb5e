#include "core/EditOps.h"

#include "core/BlendModes.h"
#include "core/Numeric.h"
#include "core/ProcessingFrame.h"

#include <algorithm>
#include <memory>

namespace vm {

int32_t GreyOfColor(int32_t color) {
    int32_t r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    return RoundHalfEven((r + g + b) / 3.0);
}

namespace {

// The commands' names, as their events and refusals carry them: their rows'.
QString ClearName() {
    return RowOf(QStringLiteral("Clear")).Title;
}
QString FillName() {
    return RowOf(QStringLiteral("Fill")).Title;
}

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
        frame.VisitPixels(bpp, [&](int32_t, int32_t, int32_t m, uint8_t* p) {
            if (bpp == 4 && alphaOnly) {
                const int32_t a = alpha(p[3]);
                ProcessingFrame::BlendPixel(p + 3, &a, 1, m);
                return;
            }
            int32_t n[4];
            for (int c = 0; c < 3; ++c)
                n[c] = channel(p[c], target[c]);
            if (bpp == 4) n[3] = alpha(p[3]);
            ProcessingFrame::BlendPixel(p, n, bpp, m);
        });
    } else if (format == PixelFormat8bppGray) {
        frame.MapGreyPixels([&](int v) { return channel(v, grey); });
    }
    return frame.End();
}

} // namespace

bool Clear(CImage& image, int32_t backColor) {
    return MoveSelectedPixels(
        image, ClearName(), backColor, [](int32_t, int32_t c) { return c; }, [](int32_t) { return 0; }, true);
}

bool FillWithColor(CImage& image, int32_t color, int32_t opacity) {
    opacity = std::clamp(opacity, 1, 100);
    auto toward = [opacity](int32_t v, int32_t c) { return v + (c - v) * opacity / 100; };
    return MoveSelectedPixels(
        image, FillName(), color, toward, [&](int32_t a) { return toward(a, 255); }, false);
}

namespace {

// A pixel of RGBA 32 that is not opaque: the blend covers it by the opacity
// over what shows of it, the usual straight-alpha "source over" with the mixed
// colour where both are present. Alpha ab and opacity s are 0..255; colour
// written into base.
int32_t CompositeOverTranslucent(const CBlender& blender, Rgb& base, const Rgb& blend, int32_t ab) {
    const int32_t s = blender.Opacity();
    const Rgb mixed = MixColors(blender.Mode(), base, blend);
    // Alpha of the result times 65025, and each channel's numerator over it.
    const int64_t area = int64_t{s} * 255 + int64_t{ab} * (255 - s);
    if (area == 0) return ab;
    auto channel = [&](int32_t cb, int32_t cs, int32_t m) {
        const int64_t num = int64_t{s} * ((255 - ab) * cs + ab * m) + int64_t{255 - s} * ab * cb;
        return static_cast<int32_t>((num * 2 + area) / (area * 2));
    };
    base = {ClampByte(channel(base.R, blend.R, mixed.R)), ClampByte(channel(base.G, blend.G, mixed.G)),
            ClampByte(channel(base.B, blend.B, mixed.B))};
    return ClampByte(static_cast<int32_t>((area * 2 + 255) / 510));
}

// Lays Source(x, y), an Rgb, on every selected pixel; a grey picture takes
// the grey of it.
template <class Source>
bool LaySelectedPixels(CImage& image, const QString& name, int32_t blendMode, int32_t opacity,
                       Source source) {
    auto frame = ProcessingFrame::Begin(image, name);
    if (!frame) return false;
    const CBlender blender(blendMode, std::clamp(opacity, 0, 255));
    const bool dissolve = blendMode == BlendDissolve;
    const uint32_t format = image.PixelFormat;
    if (blender.Valid() && (format == PixelFormat24bppRGB || format == PixelFormat32bppARGB)) {
        const int bpp = format == PixelFormat32bppARGB ? 4 : 3;
        frame.VisitPixels(bpp, [&](int32_t x, int32_t y, int32_t m, uint8_t* p) {
            const Rgb blend = source(x, y);
            Rgb n{p[2], p[1], p[0]};
            int32_t alpha = bpp == 4 ? p[3] : 255;
            if (dissolve) {
                if (!blender.DissolveTakes()) return;
                n = blend;
                alpha = 255;
            } else if (alpha == 255) {
                n = blender.Apply(n, blend);
            } else {
                alpha = CompositeOverTranslucent(blender, n, blend, alpha);
            }
            const int32_t values[4] = {n.B, n.G, n.R, alpha};
            ProcessingFrame::BlendPixel(p, values, bpp, m);
        });
    } else if (blender.Valid() && format == PixelFormat8bppGray) {
        frame.VisitPixels(1, [&](int32_t x, int32_t y, int32_t m, uint8_t* p) {
            const Rgb c = source(x, y);
            // The mean of three bytes is never a half: (sum + 1) / 3 rounds it.
            const int32_t n = blender.ApplyGrey(*p, (c.R + c.G + c.B + 1) / 3);
            ProcessingFrame::BlendPixel(p, &n, 1, m);
        });
    }
    return frame.End();
}

} // namespace

bool FillWithColor(CImage& image, int32_t color, int32_t blendMode, int32_t opacity) {
    int32_t r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    const Rgb c{r, g, b};
    return LaySelectedPixels(image, FillName(), blendMode, opacity, [c](int32_t, int32_t) { return c; });
}

bool FillWithPattern(CImage& image, const CImage& pattern, int32_t blendMode, int32_t opacity) {
    if (!pattern.Pointer() || pattern.Width() < 1 || pattern.Height() < 1) return false;
    std::unique_ptr<CImage> onWhite;
    const CImage* tile = &pattern;
    if (pattern.PixelFormat != PixelFormat24bppRGB) {
        onWhite = pattern.GetRGB24Image(0xFFFFFF);
        if (!onWhite || !onWhite->Pointer()) return false;
        tile = onWhite.get();
    }
    const int32_t pw = tile->Width(), ph = tile->Height();
    return LaySelectedPixels(image, FillName(), blendMode, opacity, [tile, pw, ph](int32_t x, int32_t y) {
        const uint8_t* p = tile->Row(ModPositive(y, ph)) + 3 * ModPositive(x, pw);
        return Rgb{p[2], p[1], p[0]};
    });
}

} // namespace vm
