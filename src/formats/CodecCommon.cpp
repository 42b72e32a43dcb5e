#include "formats/CodecCommon.h"

#include "core/Numeric.h"

#include <cstring>

namespace vm {

LibraryMapping MapLibraryFormat(uint32_t format) {
    switch (format) {
    case PixelFormat1bppIndexed:
        return {1, PixelFormat1bppIndexed};
    case PixelFormat4bppIndexed:
        return {4, PixelFormat4bppIndexed};
    case PixelFormat8bppIndexed:
        return {8, PixelFormat8bppIndexed};
    case PixelFormat16bppRGB555:
    case PixelFormat16bppRGB565:
    case PixelFormat24bppRGB:
    case LibraryFormat16bppGrayScale:
        return {24, PixelFormat24bppRGB};
    case PixelFormat32bppRGB:
    case PixelFormat16bppARGB1555:
    case PixelFormat32bppPARGB:
    case PixelFormat32bppARGB:
        return {32, PixelFormat32bppARGB};
    default:
        return {0, format};
    }
}

int32_t HimetricToPixels(int32_t himetric) {
    return MulDiv(himetric, ScreenDpi, 2540);
}

namespace {

template <int N> void ConvertRow(const CImage& image, int32_t y, uint8_t* out) {
    const uint8_t* s = image.Row(y);
    const PaletteData& pal = image.Palette();
    const int32_t w = image.Width();
    auto put = [&](int32_t x, int b, int g, int r, int a) {
        uint8_t* d = out + N * x;
        d[0] = static_cast<uint8_t>(b);
        d[1] = static_cast<uint8_t>(g);
        d[2] = static_cast<uint8_t>(r);
        if constexpr (N == 4) d[3] = static_cast<uint8_t>(a);
    };
    auto entry = [&](int32_t x, int i) {
        const uint8_t* e = pal.Entry(i);
        put(x, e[0], e[1], e[2], e[3]);
    };
    switch (image.PixelFormat) {
    case PixelFormat1bppIndexed:
    case PixelFormat4bppIndexed:
    case PixelFormat8bppIndexed: {
        const int bits = BitsPerPixel(image.PixelFormat);
        for (int32_t x = 0; x < w; ++x)
            entry(x, IndexInRow(s, x, bits));
        break;
    }
    case PixelFormat8bppGray:
        for (int32_t x = 0; x < w; ++x)
            put(x, s[x], s[x], s[x], 255);
        break;
    case PixelFormat16bppRGB555:
        for (int32_t x = 0; x < w; ++x) {
            const int v = s[2 * x] | (s[2 * x + 1] << 8);
            // Five bits widen by repeating their top bits, so 31 becomes 255.
            auto widen = [](int c) { return (c << 3) | (c >> 2); };
            put(x, widen(v & 31), widen((v >> 5) & 31), widen((v >> 10) & 31), 255);
        }
        break;
    case PixelFormat24bppRGB:
        if constexpr (N == 3)
            std::memcpy(out, s, static_cast<size_t>(w) * 3);
        else
            for (int32_t x = 0; x < w; ++x)
                put(x, s[3 * x], s[3 * x + 1], s[3 * x + 2], 255);
        break;
    default:
        if constexpr (N == 4)
            std::memcpy(out, s, static_cast<size_t>(w) * 4);
        else
            for (int32_t x = 0; x < w; ++x)
                put(x, s[4 * x], s[4 * x + 1], s[4 * x + 2], 255);
        break;
    }
}

} // namespace

void RowToBgr(const CImage& image, int32_t y, uint8_t* out) {
    ConvertRow<3>(image, y, out);
}
void RowToBgra(const CImage& image, int32_t y, uint8_t* out) {
    ConvertRow<4>(image, y, out);
}

int32_t NearestPaletteIndex(const PaletteData& palette, uint8_t r, uint8_t g, uint8_t b) {
    const int32_t n = static_cast<int32_t>(std::min<uint32_t>(palette.Count, 256));
    int32_t best = 0;
    int32_t bestDistance = INT32_MAX;
    for (int32_t i = 0; i < n; ++i) {
        const uint8_t* e = palette.Entry(i);
        const int32_t db = e[0] - b, dg = e[1] - g, dr = e[2] - r;
        const int32_t d = db * db + dg * dg + dr * dr;
        if (d < bestDistance) {
            bestDistance = d;
            best = i;
            if (d == 0) break;
        }
    }
    return best;
}

} // namespace vm
