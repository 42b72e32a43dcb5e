// The selection on disk: the *.Sel byte-run file, and any BMP or GIF picture
// read as a grey mask (and written as one).
#include "selection/Selection.h"

#include "core/Image.h"
#include "core/Numeric.h"
#include "core/PixelFormat.h"
#include "formats/BmpParser.h"
#include "formats/GifParser.h"
#include "formats/ParserCommon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace vm {

namespace {

constexpr int32_t HeaderBytes = 12;
constexpr int32_t LongestRun = 63;
// Count bytes are 193..255; a lone value of 192 or more must go as a pair so
// that it cannot be mistaken for one.
constexpr int32_t RunBase = 192;

// Grey of a colour by the editor's first grey method (Rec. 709 weights on
// gamma 2.2 values), so that a colour picture loads as the mask the grey mode
// would have made of it.
class GreyOfColour {
  public:
    GreyOfColour() {
        for (int i = 0; i < 256; ++i) {
            const double v = std::pow(static_cast<double>(i), 2.2);
            r_[i] = 0.2126 * v;
            g_[i] = 0.7152 * v;
            b_[i] = 0.0722 * v;
        }
    }
    uint8_t operator()(int r, int g, int b) const {
        const double grey = std::pow(r_[r] + g_[g] + b_[b] + 0.000001, 1.0 / 2.2);
        return static_cast<uint8_t>(std::min(255, RoundHalfEven(grey)));
    }

  private:
    std::array<double, 256> r_{}, g_{}, b_{};
};

// The picture's pixels as grey bytes, row by row (Width a row).
bool PictureToGrey(const CImage& image, std::vector<uint8_t>& grey) {
    const int32_t w = image.Width(), h = image.Height();
    if (!image.Pointer() || w < 1 || h < 1) return false;
    grey.resize(static_cast<size_t>(w) * h);
    const GreyOfColour toGrey;
    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat8bppGray) {
        for (int32_t y = 0; y < h; ++y)
            std::memcpy(grey.data() + int64_t{y} * w, image.Row(y), w);
        return true;
    }
    if (format == PixelFormat1bppIndexed || format == PixelFormat4bppIndexed ||
        format == PixelFormat8bppIndexed) {
        std::array<uint8_t, 256> entry{};
        for (int i = 0; i < 256; ++i) {
            const uint8_t* e = image.Palette().Entry(i);
            entry[i] = toGrey(e[2], e[1], e[0]);
        }
        const int bits = BitsPerPixel(format);
        for (int32_t y = 0; y < h; ++y) {
            const uint8_t* s = image.Row(y);
            uint8_t* d = grey.data() + int64_t{y} * w;
            for (int32_t x = 0; x < w; ++x)
                d[x] = entry[IndexInRow(s, x, bits)];
        }
        return true;
    }
    if (format == PixelFormat16bppRGB555 || format == PixelFormat16bppRGB565) {
        const bool g6 = format == PixelFormat16bppRGB565;
        for (int32_t y = 0; y < h; ++y) {
            const uint8_t* s = image.Row(y);
            uint8_t* d = grey.data() + int64_t{y} * w;
            for (int32_t x = 0; x < w; ++x) {
                const uint32_t v = s[2 * x] | (s[2 * x + 1] << 8);
                const uint32_t b = v & 31, r = g6 ? (v >> 11) & 31 : (v >> 10) & 31;
                const uint32_t g = g6 ? (v >> 5) & 63 : (v >> 5) & 31;
                d[x] = toGrey(static_cast<int>((r << 3) | (r >> 2)),
                              static_cast<int>(g6 ? ((g << 2) | (g >> 4)) : ((g << 3) | (g >> 2))),
                              static_cast<int>((b << 3) | (b >> 2)));
            }
        }
        return true;
    }
    if (format != PixelFormat24bppRGB && format != PixelFormat32bppARGB) return false;
    // Transparent pixels count as the white they are shown on.
    std::unique_ptr<CImage> opaque;
    const CImage* source = &image;
    if (format == PixelFormat32bppARGB) {
        opaque = image.GetRGB24Image(0xFFFFFF);
        if (!opaque || !opaque->Pointer()) return false;
        source = opaque.get();
    }
    for (int32_t y = 0; y < h; ++y) {
        const uint8_t* s = source->Row(y);
        uint8_t* d = grey.data() + int64_t{y} * w;
        for (int32_t x = 0; x < w; ++x, s += 3)
            d[x] = toGrey(s[2], s[1], s[0]);
    }
    return true;
}

} // namespace

QByteArray CSelection::EncodeSelectionFile() const {
    ByteWriter out;
    out.U32(SelectionFileMagic);
    out.I32(width_);
    out.I32(height_);
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* row = Row(y);
        // Rows are coded by themselves and over the whole stride, padding too.
        int32_t i = 0;
        while (i < stride_) {
            const uint8_t v = row[i];
            int32_t n = 1;
            while (i + n < stride_ && row[i + n] == v && n < LongestRun)
                ++n;
            if (n > 1 || v >= RunBase) {
                out.U8(static_cast<uint8_t>(RunBase + n));
                out.U8(v);
            } else {
                out.U8(v);
            }
            i += n;
        }
    }
    return out.Data();
}

bool CSelection::DecodeSelectionFile(const QByteArray& bytes) {
    ByteReader in(bytes);
    if (in.Size() < static_cast<size_t>(HeaderBytes) || in.U32() != SelectionFileMagic) return false;
    const int32_t w = in.I32(), h = in.I32();
    if (!CreateNewSelection(w, h)) return false;
    int32_t y = 0, x = 0;
    while (y < height_ && !in.AtEnd()) {
        const uint8_t b = in.U8();
        int32_t count = 1;
        uint8_t value = b;
        if (b > RunBase) {
            if (in.AtEnd()) break;
            count = b - RunBase;
            value = in.U8();
        }
        // A run that would pass the stride is cut at the width, not at the
        // stride, as files have always been read. A cut run leaves the padding
        // unfilled and the row goes on with the next bytes.
        if (x + count > stride_) count = width_ - x;
        if (count > 0) {
            std::memset(Row(y) + x, value, static_cast<size_t>(count));
            x += count;
        } else {
            x = std::min(x, width_);
        }
        if (x >= stride_) {
            x = 0;
            ++y;
        }
    }
    Left = 0;
    Top = 0;
    useDefaultSetting_ = false;
    UpdateSelectionRegion();
    return true;
}

bool CSelection::LoadPictureAsSelection(const QString& path) {
    CImage picture;
    bool loaded = false;
    {
        BmpParser bmp;
        if (bmp.IsBmp(path)) loaded = bmp.LoadPictureFromFile(path, picture);
    }
    if (!loaded) {
        GifParser gif;
        int32_t frame = 0;
        if (gif.IsGif(path)) loaded = gif.LoadPictureFromFile(path, picture, frame);
    }
    std::vector<uint8_t> grey;
    if (!loaded || !PictureToGrey(picture, grey)) return false;
    if (!CreateNewSelection(picture.Width(), picture.Height())) return false;
    for (int32_t y = 0; y < height_; ++y)
        std::memcpy(Row(y), grey.data() + int64_t{y} * width_, width_);
    useDefaultSetting_ = false;
    UpdateSelectionRegion();
    return true;
}

bool CSelection::LoadSelctionFromFile(const QString& path) {
    QByteArray bytes;
    if (!ReadWholeFile(path, bytes)) return false;
    ByteReader head(bytes);
    if (bytes.size() >= 4 && head.U32() == SelectionFileMagic) return DecodeSelectionFile(bytes);
    return LoadPictureAsSelection(path);
}

bool CSelection::SaveSelctionToFile(const QString& path, bool compressed, bool bmp) const {
    if (!bits_) return false;
    if (compressed) return WriteFileAtomically(path, EncodeSelectionFile());
    CImage picture;
    if (!picture.CreateNewImage(width_, height_, 8)) return false;
    for (int32_t y = 0; y < height_; ++y)
        std::memcpy(picture.Row(y), Row(y), width_);
    if (bmp) return BmpParser().SavePictureToFile(path, picture, 0, false, false, 0);
    return GifParser().SavePictureToFile(path, picture);
}

} // namespace vm
