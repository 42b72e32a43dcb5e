#include "formats/DibCodec.h"

#include "core/Numeric.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

namespace vm {

namespace {

// The 8-bit value of one colour field of a pixel, scaled over the field's
// full range so that the largest field value is 255.
struct ChannelScale {
    uint32_t Mask = 0;
    int Shift = 0;
    uint64_t Max = 0;

    explicit ChannelScale(uint32_t mask) : Mask(mask) {
        if (!Mask) return;
        Shift = std::countr_zero(Mask);
        const int top = 31 - std::countl_zero(Mask);
        Max = (uint64_t{1} << (top - Shift + 1)) - 1;
    }
    uint8_t operator()(uint32_t pixel) const {
        if (!Max) return 0;
        const uint64_t v = (pixel & Mask) >> Shift;
        return static_cast<uint8_t>((v * 255 + Max / 2) / Max);
    }
};

// Alpha as the editor has always rebuilt it: the range follows only from the
// mask's lowest bit, so a 1-bit alpha at bit 15 gives 128 and a 4-bit one at
// bits 12-15 tops out at 239. Every picture opened so far was read this way.
struct AlphaRebuild {
    int32_t Mask = 0;
    int64_t Div = 1;
    int32_t Range = 0;

    explicit AlphaRebuild(uint32_t mask) : Mask(static_cast<int32_t>(mask)) {
        const int shift = mask ? std::countr_zero(mask) : 0;
        Div = int64_t{1} << shift;
        // 2^(16 - Shift) taken to a whole number: below 1 it rounds to 0.
        Range = shift <= 16 ? (1 << (16 - shift)) : 0;
    }
    uint8_t operator()(uint16_t pixel) const {
        const int32_t signedPixel = static_cast<int16_t>(pixel);
        int64_t v = static_cast<int64_t>(signedPixel & Mask) / Div;
        if (v < 0) v += Range;
        return static_cast<uint8_t>(ClampByte(MulDiv(static_cast<int32_t>(v), 255, Range)));
    }
};

void PutIndex(CImage& image, int bits, int32_t x, int32_t row, uint8_t value) {
    uint8_t* p = image.Row(row);
    if (bits == 8) {
        p[x] = value;
    } else {
        uint8_t& b = p[x >> 1];
        b = (x & 1) ? static_cast<uint8_t>((b & 0xF0) | (value & 0x0F))
                    : static_cast<uint8_t>((b & 0x0F) | (value << 4));
    }
}

// One row's palette indices, one a byte.
void RowIndices(const CImage& image, int bits, int32_t y, std::vector<uint8_t>& out) {
    const uint8_t* p = image.Row(y);
    const int32_t w = image.Width();
    out.resize(static_cast<size_t>(w));
    if (bits == 8) {
        std::memcpy(out.data(), p, out.size());
    } else {
        for (int32_t x = 0; x < w; ++x)
            out[x] = (x & 1) ? (p[x >> 1] & 0x0F) : (p[x >> 1] >> 4);
    }
}

// RLE8: a run is a repeated index. RLE4: a run is a pair of indices that
// alternate, which is what one encoded byte of two nibbles draws.
int RunLength(const std::vector<uint8_t>& px, size_t i, int bits) {
    const size_t n = px.size();
    if (bits == 8) {
        size_t k = 1;
        while (i + k < n && k < 255 && px[i + k] == px[i])
            ++k;
        return static_cast<int>(k);
    }
    if (i + 1 >= n) return 1;
    size_t k = 2;
    while (i + k < n && k < 255 && px[i + k] == px[i + (k & 1)])
        ++k;
    return static_cast<int>(k);
}

void EncodeRow(const std::vector<uint8_t>& px, int bits, ByteWriter& out) {
    // A literal stretch costs 2 bytes of escape plus its padded data; below
    // this run length an encoded run is not worth breaking the stretch for.
    const int minRun = bits == 8 ? 3 : 4;
    const size_t n = px.size();
    size_t i = 0;
    while (i < n) {
        const int run = RunLength(px, i, bits);
        if (run >= minRun) {
            out.U8(static_cast<uint8_t>(run));
            out.U8(bits == 8 ? px[i] : static_cast<uint8_t>((px[i] << 4) | px[i + 1]));
            i += static_cast<size_t>(run);
            continue;
        }
        size_t j = i;
        while (j < n && j - i < 255 && RunLength(px, j, bits) < minRun)
            ++j;
        const size_t len = j - i;
        if (len >= 3) {
            out.U8(0);
            out.U8(static_cast<uint8_t>(len));
            size_t bytes = 0;
            if (bits == 8) {
                out.Bytes(px.data() + i, len);
                bytes = len;
            } else {
                for (size_t k = 0; k < len; k += 2, ++bytes)
                    out.U8(static_cast<uint8_t>((px[i + k] << 4) | (k + 1 < len ? px[i + k + 1] : 0)));
            }
            if (bytes & 1) out.U8(0);
        } else {
            // One or two pixels: a short encoded run is the only way to say it.
            for (size_t k = i; k < j;) {
                const size_t take =
                    (bits == 4 || (k + 1 < j && px[k + 1] == px[k])) ? std::min<size_t>(2, j - k) : 1;
                out.U8(static_cast<uint8_t>(take));
                out.U8(bits == 8 ? px[k] : static_cast<uint8_t>((px[k] << 4) | (take > 1 ? px[k + 1] : 0)));
                k += take;
            }
        }
        i = j;
    }
}

} // namespace

bool ReadDibHeader(ByteReader& r, DibHeader& h) {
    h = DibHeader();
    h.Size = r.U32();
    if (h.Size == 12) {
        h.Width = r.I16();
        h.Height = r.I16();
        h.Planes = r.U16();
        h.BitCount = r.U16();
        return true;
    }
    if (h.Size < 40) return false;
    ByteReader fields = r.Slice(r.Position(), h.Size - 4);
    r.Skip(h.Size - 4);
    h.Width = fields.I32();
    h.Height = fields.I32();
    h.Planes = fields.U16();
    h.BitCount = fields.U16();
    h.Compression = fields.U32();
    h.SizeImage = fields.U32();
    h.XPelsPerMeter = fields.I32();
    h.YPelsPerMeter = fields.I32();
    h.ClrUsed = fields.U32();
    h.ClrImportant = fields.U32();
    // A 40-byte header has no masks of its own: they are read behind it by
    // whoever knows where they lie.
    if (h.Size > 40) {
        h.RedMask = fields.U32();
        h.GreenMask = fields.U32();
        h.BlueMask = fields.U32();
        h.AlphaMask = fields.U32();
    }
    return true;
}

void WriteDibHeader(ByteWriter& w, const DibHeader& h) {
    w.U32(h.Size);
    w.I32(h.Width);
    w.I32(h.Height);
    w.U16(h.Planes);
    w.U16(h.BitCount);
    w.U32(h.Compression);
    w.U32(h.SizeImage);
    w.I32(h.XPelsPerMeter);
    w.I32(h.YPelsPerMeter);
    w.U32(h.ClrUsed);
    w.U32(h.ClrImportant);
    if (h.Size >= 56) {
        w.U32(h.RedMask);
        w.U32(h.GreenMask);
        w.U32(h.BlueMask);
        w.U32(h.AlphaMask);
    }
}

PaletteData ReadDibPalette(ByteReader& r, uint32_t count, int entryBytes, bool indices) {
    PaletteData palette;
    palette.Count = std::min<uint32_t>(count, 256);
    for (uint32_t i = 0; i < palette.Count; ++i) {
        if (indices) {
            const int v = r.U16() & 0xFF;
            palette.SetEntry(static_cast<int>(i), v, v, v);
            continue;
        }
        const uint8_t b = r.U8(), g = r.U8(), red = r.U8();
        if (entryBytes == 4) r.U8();
        palette.SetEntry(static_cast<int>(i), red, g, b);
    }
    for (int i = 0; i < 256; ++i)
        palette.Entry(i)[3] = 255;
    // An oversized table still stands between the header and the pixels.
    const uint64_t rest = static_cast<uint64_t>(count - palette.Count) * (indices ? 2 : entryBytes);
    r.Skip(static_cast<size_t>(std::min<uint64_t>(rest, r.Remaining())));
    return palette;
}

uint64_t DibStride(int64_t width, int bits) {
    return ((static_cast<uint64_t>(width) * static_cast<uint64_t>(bits) + 31) / 32) * 4;
}

uint64_t DibStoredBytes(int64_t width, int64_t rows, int bits) {
    if (width <= 0 || rows <= 0) return 0;
    const uint64_t last = (static_cast<uint64_t>(width) * static_cast<uint64_t>(bits) + 7) / 8;
    return DibStride(width, bits) * static_cast<uint64_t>(rows - 1) + last;
}

void ReadDibRows(ByteReader& r, CImage& image, bool topDown) {
    if (topDown) {
        r.ReadAvailable(image.Pointer(), image.BlockSize());
        return;
    }
    const size_t stride = static_cast<size_t>(image.Stride());
    for (int32_t y = image.Height() - 1; y >= 0 && !r.AtEnd(); --y)
        r.ReadAvailable(image.Row(y), stride);
}

void ReadDibBitfields(ByteReader& r, const DibHeader& h, int bits, CImage& image, bool rebuildAlpha) {
    // Without bit fields a 16-bit DIB is 5-5-5, red in the high bits, whatever
    // else its compression field says.
    const bool fields = h.Compression == DibBitfields;
    const uint32_t limit = bits == 16 ? 0xFFFF : 0xFFFFFFFF;
    const ChannelScale red(fields ? h.RedMask & limit : 0x7C00);
    const ChannelScale green(fields ? h.GreenMask & limit : 0x03E0);
    const ChannelScale blue(fields ? h.BlueMask & limit : 0x001F);
    const AlphaRebuild alpha(h.AlphaMask);

    const int32_t width = image.Width();
    const int32_t height = image.Height();
    const int bpp = image.PixelFormat == PixelFormat32bppARGB ? 4 : 3;
    const int unit = bits / 8;
    const size_t fileStride = static_cast<size_t>(DibStride(width, bits));
    const ByteReader data = r.Rest();
    // Rows the data does not hold read as 0, which converts to the zero the
    // fresh block already has, so they are skipped.
    for (int32_t row = 0; row < height; ++row) {
        const size_t rowStart = static_cast<size_t>(row) * fileStride;
        if (rowStart >= data.Size()) break;
        ByteReader src = data.Slice(rowStart, static_cast<size_t>(width) * unit);
        uint8_t* dest = image.Row(h.Height > 0 ? height - 1 - row : row);
        for (int32_t x = 0; x < width && !src.AtEnd(); ++x, dest += bpp) {
            const uint32_t pixel = unit == 2 ? src.U16() : src.U32();
            dest[0] = blue(pixel);
            dest[1] = green(pixel);
            dest[2] = red(pixel);
            if (rebuildAlpha) dest[3] = alpha(static_cast<uint16_t>(pixel));
        }
    }
    r.Skip(static_cast<size_t>(std::min<uint64_t>(data.Size(), uint64_t(height) * fileStride)));
}

void DecodeDibRle(ByteReader r, CImage& image, int bits, bool topRowFirst) {
    const int64_t width = image.Width();
    const int64_t height = image.Height();
    int64_t x = 0;
    int64_t y = 0; // stream row: 0 is the first row the stream draws
    auto put = [&](uint8_t value) {
        if (x < width)
            PutIndex(image, bits, static_cast<int32_t>(x),
                     static_cast<int32_t>(topRowFirst ? y : height - 1 - y), value);
        ++x;
    };
    while (y < height && r.Remaining() >= 2) {
        const uint8_t count = r.U8();
        const uint8_t code = r.U8();
        if (count > 0) {
            // An encoded run that overshoots the row is cut at the row's end.
            const int n = static_cast<int>(std::min<int64_t>(count, std::max<int64_t>(0, width - x)));
            for (int i = 0; i < n; ++i)
                put(bits == 8 ? code : ((i & 1) ? (code & 0x0F) : (code >> 4)));
            x += count - n;
            continue;
        }
        switch (code) {
        case 0: // end of line
            x = 0;
            ++y;
            break;
        case 1: // end of bitmap
            return;
        case 2: // delta
            if (r.Remaining() < 2) return;
            x += r.U8();
            y += r.U8();
            break;
        default: { // absolute run, padded to a word
            const size_t bytes = bits == 8 ? code : (code + 1u) / 2;
            ByteReader run = r.Slice(r.Position(), bytes);
            for (int i = 0; i < code; ++i) {
                const size_t at = bits == 8 ? static_cast<size_t>(i) : static_cast<size_t>(i) / 2;
                if (at >= run.Size()) return; // the stream broke off inside the run
                const uint8_t b = run.At(at);
                if (x >= width) {
                    x += code - i;
                    break;
                }
                put(bits == 8 ? b : ((i & 1) ? (b & 0x0F) : (b >> 4)));
            }
            r.Skip(bytes + (bytes & 1));
            break;
        }
        }
    }
}

QByteArray EncodeDibRle(const CImage& image, int bits) {
    ByteWriter out;
    std::vector<uint8_t> row;
    for (int32_t y = image.Height() - 1; y >= 0; --y) {
        RowIndices(image, bits, y, row);
        EncodeRow(row, bits, out);
        out.U8(0);
        out.U8(y > 0 ? 0 : 1); // end of line, or end of bitmap after the last row
    }
    return out.Data();
}

bool DecodeDib(ByteReader info, const ByteReader* bitsApart, bool indices, CImage& image, bool* bottomUp) {
    DibHeader h;
    if (info.Size() < 12 || !ReadDibHeader(info, h) || h.Size > info.Size()) return false;
    const int bits = h.BitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return false;
    const bool fields = h.Compression == DibBitfields && (bits == 16 || bits == 32);
    if (h.Compression != DibRgb && !fields) return false;
    if (fields && h.Size == 40) {
        h.RedMask = info.U32();
        h.GreenMask = info.U32();
        h.BlueMask = info.U32();
    }
    if (h.Width < 1 || h.Rows() < 1 || h.Width * h.Rows() > MaxEmbeddedDibPixels) return false;
    PaletteData palette;
    if (bits <= 8) {
        const uint32_t count = h.ClrUsed ? h.ClrUsed : (1u << bits);
        palette = ReadDibPalette(info, std::min<uint32_t>(count, 256), h.IsCore() ? 3 : 4, indices);
    }
    ByteReader pixels = bitsApart ? *bitsApart : info.Rest();
    // Bits shorter than the header declares are not a bitmap to draw.
    if (DibStride(h.Width, bits) * static_cast<uint64_t>(h.Rows()) > pixels.Size()) return false;
    const int depth = bits <= 8 ? bits : (bits == 32 && !fields ? 32 : 24);
    if (!NewBlock(image, h.Width, static_cast<int32_t>(h.Rows()), depth)) return false;
    if (bits <= 8) {
        image.SetPaletteData(palette);
        if (bits == 8) image.PixelFormat = PixelFormat8bppIndexed;
        ReadDibRows(pixels, image, h.TopDown());
    } else if (bits == 16 || fields) {
        ReadDibBitfields(pixels, h, bits, image, false);
    } else {
        ReadDibRows(pixels, image, h.TopDown());
        if (bits == 32) image.SetAlphaChannelToMaxValue();
    }
    if (bottomUp) *bottomUp = !h.TopDown();
    return true;
}

QByteArray BuildDibInfo(const CImage& image) {
    const int bits = BitsPerPixel(image.PixelFormat);
    const uint32_t colours = bits <= 8 ? (1u << bits) : 0;
    ByteWriter w;
    DibHeader h;
    h.Width = image.Width();
    h.Height = image.Height();
    h.BitCount = static_cast<uint16_t>(bits);
    h.SizeImage = static_cast<uint32_t>(image.BlockSize());
    h.XPelsPerMeter = h.YPelsPerMeter = static_cast<int32_t>(std::lround(image.Resolution / 0.0254));
    h.ClrUsed = colours;
    WriteDibHeader(w, h);
    for (uint32_t i = 0; i < colours; ++i) {
        const uint8_t* e = image.Palette().Entry(static_cast<int>(i));
        w.U8(e[0]);
        w.U8(e[1]);
        w.U8(e[2]);
        w.U8(0);
    }
    return w.Data();
}

QByteArray BuildDibBits(const CImage& image) {
    QByteArray out;
    out.reserve(static_cast<qsizetype>(image.BlockSize()));
    for (int32_t y = image.Height() - 1; y >= 0; --y)
        out.append(reinterpret_cast<const char*>(image.Row(y)), image.Stride());
    return out;
}

} // namespace vm
