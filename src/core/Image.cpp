#include "core/Image.h"

#include "core/Numeric.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vm {

CImage::CImage() = default;

CImage::~CImage() {
    DisposeResource();
}

void CImage::DisposeResource() {
    if (!pixels_) return;
    view_ = QImage();
    std::free(pixels_);
    pixels_ = nullptr;
    width_ = 0;
    height_ = 0;
    wholeRect_.clear();
}

bool CImage::CreateNewImage(int32_t width, int32_t height, int32_t bitCount, int32_t backColor) {
    if (width < 1 || height < 1) return false;
    uint32_t format = 0;
    switch (bitCount) {
    case 1:
        format = PixelFormat1bppIndexed;
        break;
    case 4:
        format = PixelFormat4bppIndexed;
        break;
    case 8:
        format = PixelFormat8bppIndexed;
        break;
    case 16:
        format = PixelFormat16bppRGB555;
        break;
    case 24:
        format = PixelFormat24bppRGB;
        break;
    case 32:
        format = PixelFormat32bppARGB;
        break;
    default:
        return false;
    }
    const int64_t stride = StrideOf(width, bitCount);
    if (stride > MaxBlockBytes || stride * height > MaxBlockBytes) {
        DisposeResource();
        return false;
    }
    DisposeResource();
    // calloc hands out zeroed pages without touching them: a new block is black
    // (or white, for 1 bit) at no cost.
    auto* block = static_cast<uint8_t*>(std::calloc(static_cast<size_t>(stride * height), 1));
    if (!block) return false;
    pixels_ = block;
    stride_ = static_cast<int32_t>(stride);
    width_ = width;
    height_ = height;
    PixelFormat = format;

    if (bitCount == 8) {
        palette_.Count = 256;
        palette_.Flags = 2;
        for (int i = 0; i < 256; ++i)
            palette_.SetEntry(i, i, i, i, 255);
    } else if (bitCount == 1) {
        // A bit of 0 is white in our 1-bit images.
        palette_.Count = 2;
        palette_.Flags = 2;
        palette_.SetEntry(0, 255, 255, 255, 255);
        palette_.SetEntry(1, 0, 0, 0, 255);
    }
    RebuildView();
    if (bitCount == 8) PixelFormat = PixelFormat8bppGray;

    if (backColor != 0 && bitCount != 1 && bitCount != 4) {
        int32_t r = 0, g = 0, b = 0;
        SplitColor(backColor, r, g, b);
        if (backColor < 0) r = g = b = 0;
        for (int32_t y = 0; y < height_; ++y) {
            uint8_t* p = Row(y);
            switch (bitCount) {
            case 8: {
                // The nearest entry of the grey ramp.
                const uint8_t v = static_cast<uint8_t>(RoundHalfEven((r + g + b) / 3.0));
                std::memset(p, v, static_cast<size_t>(width_));
                break;
            }
            case 16: {
                const uint16_t v = static_cast<uint16_t>(((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3));
                for (int32_t x = 0; x < width_; ++x)
                    std::memcpy(p + 2 * x, &v, 2);
                break;
            }
            case 24:
                for (int32_t x = 0; x < width_; ++x) {
                    p[3 * x] = static_cast<uint8_t>(b);
                    p[3 * x + 1] = static_cast<uint8_t>(g);
                    p[3 * x + 2] = static_cast<uint8_t>(r);
                }
                break;
            case 32:
                // A solid fill leaves the alpha bytes at 0.
                for (int32_t x = 0; x < width_; ++x) {
                    p[4 * x] = static_cast<uint8_t>(b);
                    p[4 * x + 1] = static_cast<uint8_t>(g);
                    p[4 * x + 2] = static_cast<uint8_t>(r);
                }
                break;
            }
        }
    }
    return true;
}

static QList<QRgb> ColorTableOf(const PaletteData& pal, int n) {
    QList<QRgb> table(n);
    for (int i = 0; i < n; ++i) {
        const uint8_t* e = pal.Entry(i);
        table[i] = qRgba(e[2], e[1], e[0], e[3]);
    }
    return table;
}

void CImage::RebuildView() {
    view_ = QImage();
    if (!pixels_) return;
    QImage::Format f = QImage::Format_Invalid;
    switch (BitsPerPixel(PixelFormat)) {
    case 1:
        f = QImage::Format_Mono;
        break;
    case 8:
        f = QImage::Format_Indexed8;
        break;
    case 16:
        f = QImage::Format_RGB555;
        break;
    case 24:
        f = QImage::Format_BGR888;
        break;
    case 32:
        f = QImage::Format_ARGB32;
        break;
    default:
        return; // 4 bits: converted when drawn
    }
    view_ = QImage(pixels_, width_, height_, stride_, f);
    if (f == QImage::Format_Mono) view_.setColorTable(ColorTableOf(palette_, 2));
    if (f == QImage::Format_Indexed8) view_.setColorTable(ColorTableOf(palette_, 256));
}

std::unique_ptr<CImage> CImage::CloneImage() const {
    auto clone = std::make_unique<CImage>();
    if (pixels_) {
        if (!clone->CreateNewImage(width_, height_, BitsPerPixel(PixelFormat))) return clone;
        std::memcpy(clone->pixels_, pixels_, BlockSize());
    }
    clone->Resolution = Resolution;
    clone->PixelFormat = PixelFormat;
    clone->Left = Left;
    clone->Top = Top;
    clone->FileName = FileName;
    clone->RawPixelFormat = RawPixelFormat;
    clone->RleCompress = RleCompress;
    clone->BmpFlipRow = BmpFlipRow;
    clone->BmpFileSystem = BmpFileSystem;
    clone->FileComment = FileComment;
    clone->AuthorInformation = AuthorInformation;
    clone->RawDdsFileFormat = RawDdsFileFormat;
    clone->PnmStoreWay = PnmStoreWay;
    clone->PropertyCount = PropertyCount;
    clone->propertyBuffer_ = propertyBuffer_;
    if (BitsPerPixel(PixelFormat) <= 8) clone->SetPaletteData(palette_);
    return clone;
}

bool CImage::CloneToImage(CImage& dest) const {
    // The caller sees to it that the blocks match; we only refuse to run past
    // the smaller one.
    if (pixels_ && dest.pixels_) std::memcpy(dest.pixels_, pixels_, std::min(BlockSize(), dest.BlockSize()));
    return false;
}

void CImage::CopyPaletteTo(CImage& dest) const {
    PaletteData p;
    p.Flags = palette_.Flags;
    p.Count = std::min<uint32_t>(palette_.Count, 256);
    std::memcpy(p.Entries.data(), palette_.Entries.data(), 4 * p.Count);
    dest.SetPaletteData(p);
}

void CImage::CopyPaletteFrom(const CImage& source) {
    source.CopyPaletteTo(*this);
}

void CImage::SetPaletteData(const PaletteData& palette) {
    palette_ = palette;
    if (view_.format() == QImage::Format_Mono) view_.setColorTable(ColorTableOf(palette_, 2));
    if (view_.format() == QImage::Format_Indexed8) view_.setColorTable(ColorTableOf(palette_, 256));
}

void CImage::ClearImage() {
    if (pixels_) std::memset(pixels_, 0, BlockSize());
}

void CImage::FillSolidColor(uint8_t value) {
    if (pixels_) std::memset(pixels_, value, BlockSize());
}

void CImage::SetAlphaChannelToMaxValue() {
    if (!pixels_ || PixelFormat != PixelFormat32bppARGB) return;
    const size_t n = BlockSize();
    for (size_t i = 3; i < n; i += 4)
        pixels_[i] = 255;
}

void CImage::CheckAlpha() {
    if (!pixels_ || PixelFormat != PixelFormat32bppARGB) return;
    const size_t n = BlockSize();
    for (size_t i = 3; i < n; i += 4)
        if (pixels_[i] != 0) return;
    for (size_t i = 3; i < n; i += 4)
        pixels_[i] = 255;
}

void CImage::FillAlpha() {
    if (!pixels_) return;
    const size_t n = std::min(static_cast<size_t>(width_) * static_cast<size_t>(height_) * 4, BlockSize());
    for (size_t i = 3; i < n; i += 4)
        pixels_[i] = 255;
}

bool CImage::GetPixelColor(int32_t X, int32_t Y, int32_t& R, int32_t& G, int32_t& B, int32_t& A,
                           int32_t sampleSize) const {
    if (!pixels_ || X < 0 || Y < 0 || X >= width_ || Y >= height_) return false;
    int32_t half = 0;
    switch (sampleSize) {
    case 0:
        half = 0;
        break;
    case 1:
        half = 1;
        break;
    case 2:
        half = 2;
        break;
    default:
        return true;
    }
    const bool grey = PixelFormat == PixelFormat8bppGray;
    const bool indexed = PixelFormat == PixelFormat8bppIndexed;
    const bool rgb24 = PixelFormat == PixelFormat24bppRGB;
    const bool rgba = PixelFormat == PixelFormat32bppARGB;
    if (!grey && !indexed && !rgb24 && !rgba) return true;

    int64_t sr = 0, sg = 0, sb = 0, sa = 0, count = 0;
    for (int32_t y = std::max(0, Y - half); y <= std::min(height_ - 1, Y + half); ++y) {
        const uint8_t* row = Row(y);
        for (int32_t x = std::max(0, X - half); x <= std::min(width_ - 1, X + half); ++x) {
            if (grey) {
                sr += row[x];
                sg += row[x];
                sb += row[x];
            } else if (indexed) {
                const uint8_t* e = palette_.Entry(row[x]);
                sb += e[0];
                sg += e[1];
                sr += e[2];
            } else {
                const uint8_t* p = row + x * (rgba ? 4 : 3);
                sb += p[0];
                sg += p[1];
                sr += p[2];
                if (rgba) sa += p[3];
            }
            ++count;
        }
    }
    R = static_cast<int32_t>(sr / count);
    G = static_cast<int32_t>(sg / count);
    B = static_cast<int32_t>(sb / count);
    if (rgba) A = static_cast<int32_t>(sa / count);
    return true;
}

int32_t CImage::GetGrayK(int32_t X, int32_t Y) const {
    if (!pixels_ || X < 0 || Y < 0 || X >= width_ || Y >= height_) return 0;
    // Read as a 4-byte pixel whatever the format, but never past the block.
    const size_t off = static_cast<size_t>(Y) * stride_ + static_cast<size_t>(X) * 4;
    if (off + 2 >= BlockSize()) return 0;
    const double b = pixels_[off], g = pixels_[off + 1], r = pixels_[off + 2];
    const double l = std::pow(
        0.2973 * std::pow(r, 2.2) + 0.6274 * std::pow(g, 2.2) + 0.0753 * std::pow(b, 2.2), 1.0 / 2.2);
    return RoundHalfEven((1.0 - l / 255.0) * 100.0);
}

int64_t CImage::GetUsedColorAmount() const {
    if (!pixels_) return 0;
    if (PixelFormat == PixelFormat1bppIndexed) return 2;
    if (PixelFormat == PixelFormat8bppIndexed || PixelFormat == PixelFormat8bppGray) {
        bool seen[256] = {};
        for (int32_t y = 0; y < height_; ++y) {
            const uint8_t* row = Row(y);
            for (int32_t x = 0; x < width_; ++x)
                seen[row[x]] = true;
        }
        return std::count(std::begin(seen), std::end(seen), true);
    }
    if (PixelFormat == PixelFormat24bppRGB || PixelFormat == PixelFormat32bppARGB) {
        const int bpp = PixelFormat == PixelFormat24bppRGB ? 3 : 4;
        std::vector<uint8_t> flags(1u << 24, 0);
        int64_t count = 0;
        for (int32_t y = 0; y < height_; ++y) {
            const uint8_t* p = Row(y);
            for (int32_t x = 0; x < width_; ++x, p += bpp) {
                const uint32_t key = p[0] | (p[1] << 8) | (p[2] << 16);
                if (!flags[key]) {
                    flags[key] = 1;
                    ++count;
                }
            }
        }
        return count;
    }
    return 0;
}

bool CImage::GetHistgramArray(std::vector<uint32_t>& hist, int32_t channel, int32_t step) const {
    const auto& rects = SelectionDealRects();
    if (rects.empty()) return false;
    hist.assign(channel == 6 ? 3 * 256 : 256, 0);
    if (step < 1) step = 1;
    const int bpp = BitsPerPixel(PixelFormat);
    if (bpp == 1 || bpp == 16 || !pixels_) return true;
    const bool grey = PixelFormat == PixelFormat8bppGray;
    if (!grey && channel == 3) return true;
    for (const DealRect& r : rects) {
        for (int32_t y = std::max(0, r.Top); y <= std::min(r.Bottom, height_ - 1); y += step) {
            const uint8_t* row = Row(y);
            for (int32_t x = std::max(0, r.Left); x <= std::min(r.Right, width_ - 1); x += step) {
                if (grey) {
                    ++hist[row[x]];
                    continue;
                }
                const uint8_t* c;
                switch (PixelFormat) {
                case PixelFormat4bppIndexed:
                    c = palette_.Entry((x & 1) ? (row[x >> 1] & 15) : (row[x >> 1] >> 4));
                    break;
                case PixelFormat8bppIndexed:
                    c = palette_.Entry(row[x]);
                    break;
                case PixelFormat24bppRGB:
                    c = row + 3 * x;
                    break;
                case PixelFormat32bppARGB:
                    c = row + 4 * x;
                    break;
                default:
                    return true;
                }
                switch (channel) {
                case 0:
                    ++hist[c[0]];
                    break;
                case 1:
                    ++hist[c[1]];
                    break;
                case 2:
                    ++hist[c[2]];
                    break;
                case 4:
                    ++hist[c[0]];
                    ++hist[c[1]];
                    ++hist[c[2]];
                    break;
                case 5:
                    ++hist[(c[2] + 2 * c[1] + c[0]) / 4];
                    break;
                case 6:
                    ++hist[c[0]];
                    ++hist[256 + c[1]];
                    ++hist[512 + c[2]];
                    break;
                default:
                    break;
                }
            }
        }
    }
    return true;
}

std::unique_ptr<CImage> CImage::Get4BppIndexedImage() const {
    if (!pixels_ || PixelFormat != PixelFormat8bppIndexed || palette_.Count > 16) return nullptr;
    auto out = std::make_unique<CImage>();
    if (!out->CreateNewImage(width_, height_, 4)) return nullptr;
    CopyPaletteTo(*out);
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* s = Row(y);
        uint8_t* d = out->Row(y);
        for (int32_t x = 0; x < width_; ++x) {
            if (x & 1)
                d[x >> 1] = static_cast<uint8_t>(d[x >> 1] + s[x]);
            else
                d[x >> 1] = static_cast<uint8_t>(s[x] * 16);
        }
    }
    return out;
}

std::unique_ptr<CImage> CImage::Get8BppIndexedImage() const {
    if (!pixels_ || PixelFormat != PixelFormat4bppIndexed) return nullptr;
    auto out = std::make_unique<CImage>();
    if (!out->CreateNewImage(width_, height_, 8)) return nullptr;
    out->PixelFormat = PixelFormat8bppIndexed;
    CopyPaletteTo(*out);
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* s = Row(y);
        uint8_t* d = out->Row(y);
        for (int32_t x = 0; x < width_; ++x)
            d[x] = (x & 1) ? (s[x >> 1] & 15) : (s[x >> 1] >> 4);
    }
    return out;
}

std::unique_ptr<CImage> CImage::GetRGB24Image(int32_t backColor) const {
    auto out = std::make_unique<CImage>();
    if (!pixels_ || !out->CreateNewImage(width_, height_, 24)) return out;
    int32_t cr = 0, cg = 0, cb = 0;
    SplitColor(backColor, cr, cg, cb);
    auto over = [](int32_t p, int32_t c, int32_t a) { return static_cast<uint8_t>(c + (p - c) * a / 255); };
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* s = Row(y);
        uint8_t* d = out->Row(y);
        switch (PixelFormat) {
        case PixelFormat8bppIndexed:
            for (int32_t x = 0; x < width_; ++x) {
                const uint8_t* e = palette_.Entry(s[x]);
                d[3 * x] = over(e[0], cb, e[3]);
                d[3 * x + 1] = over(e[1], cg, e[3]);
                d[3 * x + 2] = over(e[2], cr, e[3]);
            }
            break;
        case PixelFormat8bppGray:
            for (int32_t x = 0; x < width_; ++x)
                d[3 * x] = d[3 * x + 1] = d[3 * x + 2] = s[x];
            break;
        case PixelFormat24bppRGB:
            std::memcpy(d, s, static_cast<size_t>(stride_));
            break;
        case PixelFormat32bppARGB:
            for (int32_t x = 0; x < width_; ++x) {
                const uint8_t* p = s + 4 * x;
                d[3 * x] = over(p[0], cb, p[3]);
                d[3 * x + 1] = over(p[1], cg, p[3]);
                d[3 * x + 2] = over(p[2], cr, p[3]);
            }
            break;
        default:
            return out; // 1, 4 and 16 bits are not converted: black
        }
    }
    return out;
}

std::unique_ptr<CImage> CImage::GetRGB32Image() const {
    auto out = std::make_unique<CImage>();
    if (!pixels_ || !out->CreateNewImage(width_, height_, 32)) return out;
    for (int32_t y = 0; y < height_; ++y) {
        const uint8_t* s = Row(y);
        uint8_t* d = out->Row(y);
        switch (PixelFormat) {
        case PixelFormat8bppIndexed:
            for (int32_t x = 0; x < width_; ++x)
                std::memcpy(d + 4 * x, palette_.Entry(s[x]), 4);
            break;
        case PixelFormat8bppGray:
            for (int32_t x = 0; x < width_; ++x) {
                d[4 * x] = d[4 * x + 1] = d[4 * x + 2] = s[x];
                d[4 * x + 3] = 255;
            }
            break;
        case PixelFormat24bppRGB:
            for (int32_t x = 0; x < width_; ++x) {
                d[4 * x] = s[3 * x];
                d[4 * x + 1] = s[3 * x + 1];
                d[4 * x + 2] = s[3 * x + 2];
                d[4 * x + 3] = 255;
            }
            break;
        case PixelFormat32bppPARGB:
            std::memcpy(d, s, static_cast<size_t>(stride_));
            break;
        default:
            return out; // RGBA 32 among them: the caller keeps its own block
        }
    }
    return out;
}

bool CImage::Render(QPainter& dest, int32_t destX, int32_t destY, int32_t destWidth, int32_t destHeight,
                    int32_t srcX, int32_t srcY, int32_t srcWidth, int32_t srcHeight, int32_t interpolation,
                    int32_t pixelOffset, int32_t opacity, bool useImaging) const {
    if (!pixels_) return false;
    if (destWidth == 0) destWidth = width_;
    if (destHeight == 0) destHeight = height_;
    if (srcX < 0) srcX = 0;
    if (srcY < 0) srcY = 0;
    if (srcWidth == 0) srcWidth = width_;
    if (srcHeight == 0) srcHeight = height_;
    if (srcWidth < 0) {
        srcWidth = -srcWidth;
        destWidth = -destWidth;
    }
    if (srcHeight < 0) {
        srcHeight = -srcHeight;
        destHeight = -destHeight;
    }

    // The picture with the palette as it stands now: palette bytes may have
    // been written without going through SetPaletteData.
    QImage picture;
    if (PixelFormat == PixelFormat4bppIndexed) {
        picture = QImage(width_, height_, QImage::Format_Indexed8);
        for (int32_t y = 0; y < height_; ++y) {
            const uint8_t* s = Row(y);
            uint8_t* d = picture.scanLine(y);
            for (int32_t x = 0; x < width_; ++x)
                d[x] = (x & 1) ? (s[x >> 1] & 15) : (s[x >> 1] >> 4);
        }
        picture.setColorTable(ColorTableOf(palette_, 256));
    } else {
        picture = view_;
        if (picture.format() == QImage::Format_Mono || picture.format() == QImage::Format_Indexed8) {
            const auto table = ColorTableOf(palette_, picture.format() == QImage::Format_Mono ? 2 : 256);
            if (table != picture.colorTable()) picture.setColorTable(table); // detaches metadata only
        }
    }
    if (picture.isNull()) return false;

    const bool imaging = useImaging || PixelFormat == PixelFormat32bppARGB ||
                         PixelFormat == PixelFormat8bppIndexed || PixelFormat == PixelFormat4bppIndexed;
    dest.save();
    QTransform t = dest.transform();
    t.translate(destX, destY);
    t.scale(destWidth < 0 ? -1 : 1, destHeight < 0 ? -1 : 1);
    dest.setTransform(t);
    const QRectF target(0, 0, std::abs(destWidth), std::abs(destHeight));
    bool result = false;
    if (!imaging) {
        // A plain block transfer: nearest pixel, no blending of colours.
        dest.setRenderHint(QPainter::SmoothPixmapTransform, false);
        dest.drawImage(target, picture, QRectF(srcX, srcY, srcWidth, srcHeight));
    } else {
        dest.setRenderHint(QPainter::SmoothPixmapTransform, interpolation != InterpolationNearestNeighbor);
        // Without the half-pixel offset, pixel centres sit on whole coordinates.
        const double shift =
            (pixelOffset == PixelOffsetHalf || pixelOffset == PixelOffsetHighQuality) ? 0.0 : 0.5;
        if (opacity != 255) dest.setOpacity(dest.opacity() * std::clamp(opacity / 100.0, 0.0, 1.0));
        dest.drawImage(target, picture, QRectF(srcX + shift, srcY + shift, srcWidth, srcHeight));
        result = true;
    }
    dest.restore();
    return result;
}

bool CImage::LoadPictureFromStdPicture(const QImage& picture) {
    if (picture.isNull()) return false;
    if (picture.format() == QImage::Format_Indexed8) {
        if (!CreateNewImage(picture.width(), picture.height(), 8)) return false;
        PixelFormat = PixelFormat8bppIndexed;
        PaletteData pal;
        pal.Count = static_cast<uint32_t>(std::min<qsizetype>(picture.colorCount(), 256));
        for (uint32_t i = 0; i < pal.Count; ++i) {
            const QRgb c = picture.color(static_cast<int>(i));
            pal.SetEntry(static_cast<int>(i), qRed(c), qGreen(c), qBlue(c), qAlpha(c));
        }
        SetPaletteData(pal);
        for (int32_t y = 0; y < height_; ++y)
            std::memcpy(Row(y), picture.constScanLine(y), static_cast<size_t>(width_));
    } else {
        const bool alpha = picture.hasAlphaChannel();
        const QImage src = picture.convertToFormat(alpha ? QImage::Format_ARGB32 : QImage::Format_BGR888);
        if (!CreateNewImage(src.width(), src.height(), alpha ? 32 : 24)) return false;
        const size_t rowBytes = static_cast<size_t>(width_) * (alpha ? 4 : 3);
        for (int32_t y = 0; y < height_; ++y)
            std::memcpy(Row(y), src.constScanLine(y), rowBytes);
    }
    RawImageFormat = 0;
    return true;
}

void CImage::AddListener(IImageListener* listener) {
    if (listener && std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end())
        listeners_.push_back(listener);
}

void CImage::RemoveListener(IImageListener* listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), listener), listeners_.end());
}

void CImage::RaiseProgressStart(bool restrain, const QString& name, int kind) const {
    const auto copy = listeners_;
    for (auto* l : copy)
        l->ProgressStart(restrain, name, kind);
}

void CImage::RaiseProgressEnd(bool restrain, const QString& name, int kind, const QString& extra) const {
    const auto copy = listeners_;
    for (auto* l : copy)
        l->ProgressEnd(restrain, name, kind, extra);
}

} // namespace vm
