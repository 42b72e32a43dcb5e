#include "adjust/PointOps.h"

#include "adjust/Curves.h"
#include "core/Numeric.h"
#include "core/ProcessingFrame.h"

#include <algorithm>

namespace vm {

namespace {

// Runs one colour-to-colour mapping in the frame, by format: colour pixels,
// grey pixels, or the palette. Other formats fall through with both events.
template <class F, class B = decltype(&BlendByWeight)>
bool MapColours(CImage& image, const Operation& row, bool paletteOnOneBit, F&& f, B blend = &BlendByWeight) {
    auto frame = ProcessingFrame::Begin(image, row);
    if (!frame) return false;
    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat24bppRGB || format == PixelFormat32bppARGB) {
        frame.MapColorPixels(f, blend);
    } else if (format == PixelFormat8bppGray) {
        frame.MapGreyPixels(
            [&](int v) {
                int32_t nb, ng, nr;
                f(v, v, v, nb, ng, nr);
                return nb;
            },
            blend);
    } else if (IsPaletteFormat(format) || (paletteOnOneBit && format == PixelFormat1bppIndexed)) {
        frame.MapPalette(f);
    }
    return frame.End();
}

} // namespace

// Inversion weighs a partly selected byte by its own closed form, which
// rounds the other way from the general rule in half the cases.
static int32_t InvertBlend(int32_t v, int32_t, int32_t m) {
    return v - Div255(2 * v * m) + m;
}

bool Invert(CImage& image) {
    return MapColours(
        image, RowOf("Invert"), true,
        [](int b, int g, int r, int& nb, int& ng, int& nr) {
            nb = 255 - b;
            ng = 255 - g;
            nr = 255 - r;
        },
        &InvertBlend);
}

std::array<uint8_t, 256> PosterizeTable(int32_t levels) {
    std::array<uint8_t, 256> table{};
    if (levels < 2) levels = 2;
    const int32_t step = std::max(1, RoundHalfEven(256.0 / levels));
    const int32_t scale = RoundHalfEven(255.0 / (levels - 1));
    for (int i = 0; i < 256; ++i)
        table[i] = static_cast<uint8_t>(std::min(255, (i / step) * scale));
    return table;
}

bool Posterize(CImage& image, int32_t levels) {
    auto frame = ProcessingFrame::Begin(image, RowOf("Posterize"));
    if (!frame) return false;
    const auto table = PosterizeTable(levels);
    frame.RestrainInner();
    Curve(image, table, table, table);
    frame.ReleaseInner();
    return frame.End();
}

bool Threshold(CImage& image, int32_t level) {
    return MapColours(image, RowOf("Threshold"), false,
                      [level](int b, int g, int r, int& nb, int& ng, int& nr) {
                          const int v = ((r + 2 * g + b) >> 2) <= level ? 0 : 255;
                          nb = ng = nr = v;
                      });
}

bool Desaturate(CImage& image) {
    return MapColours(image, RowOf("Desaturate"), false, [](int b, int g, int r, int& nb, int& ng, int& nr) {
        const int v = (std::max({r, g, b}) + std::min({r, g, b})) >> 1;
        nb = ng = nr = v;
    });
}

} // namespace vm
