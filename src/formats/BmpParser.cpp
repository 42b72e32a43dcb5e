#include "formats/BmpParser.h"

#include "core/AppSettings.h"
#include "core/Numeric.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace vm {

namespace {

constexpr uint16_t BmpSignature = 19778; // "BM"
constexpr int FileHeaderSize = 14;
// Our conversion between dots per inch and the header's pixels per metre. It
// is not 39.3701: files of every earlier version carry it, so it stays.
constexpr double PelsPerMeterPerDpi = 39.35833333;

constexpr uint32_t CompressionRgb = 0;
constexpr uint32_t CompressionRle8 = 1;
constexpr uint32_t CompressionRle4 = 2;
constexpr uint32_t CompressionBitfields = 3;

bool IsKnownHeaderSize(uint32_t size) {
    return size == 12 || size == 40 || size == 56 || size == 108 || size == 124;
}

int32_t DpiToPelsPerMeter(float dpi) {
    const double v = static_cast<double>(dpi) * PelsPerMeterPerDpi;
    if (!std::isfinite(v)) return 0;
    return RoundHalfEven(std::clamp(v, -2147483648.0, 2147483647.0));
}

// Copies up to Count bytes from the reader and moves past them. Unlike
// ByteReader::Read it leaves the missing tail alone: a fresh block is already
// zero, and a huge picture declared by a tiny file must not touch its pages.
size_t CopyAvailable(ByteReader& reader, uint8_t* dest, size_t count) {
    const size_t n = std::min(count, reader.Remaining());
    if (n) std::memcpy(dest, reader.Data() + reader.Position(), n);
    reader.Skip(n);
    return n;
}

// The 8-bit value of one colour field of a 16-bit pixel, scaled over the
// field's full range so that the largest field value is 255.
struct ChannelScale {
    uint32_t Mask = 0;
    int Shift = 0;
    uint32_t Max = 0;

    explicit ChannelScale(uint32_t mask) : Mask(mask & 0xFFFF) {
        if (!Mask) return;
        Shift = std::countr_zero(Mask);
        const int top = 31 - std::countl_zero(Mask);
        Max = (1u << (top - Shift + 1)) - 1;
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

// The depth the writers store, 0 when there is none: the format code must
// name a depth the format has, and one whose rows fit the block's stride
// (PixelFormat is writable, the block is not).
int WritableDepth(const CImage& image) {
    const int depth = GetBitDepth(image.PixelFormat);
    if (depth != 1 && depth != 4 && depth != 8 && depth != 16 && depth != 24 && depth != 32) return 0;
    return StrideOf(image.Width(), depth) <= image.Stride() ? depth : 0;
}

} // namespace

bool BmpParser::IsBmp(const QString& File) {
    const QByteArray head = ReadFileHead(File, FileHeaderSize + 4);
    ByteReader reader(head);
    if (reader.U16() != BmpSignature) return false;
    reader.Seek(FileHeaderSize);
    return IsKnownHeaderSize(reader.U32());
}

bool BmpParser::LoadPictureFromFile(const QString& File, CImage& Image) {
    if (!IsBmp(File)) return false;
    QByteArray bytes;
    if (!ReadWholeFile(File, bytes)) return false;
    ByteReader reader(bytes);
    reader.Seek(FileHeaderSize);
    const uint32_t size = reader.U32();
    reader.Seek(0);
    if (size == 12) return LoadOs2Bitmap(reader, File, Image);
    return LoadWindowsBitmap(reader, File, Image);
}

bool BmpParser::LoadWindowsBitmap(ByteReader& Reader, const QString& File, CImage& Image) {
    Reader.Seek(FileHeaderSize);
    std::array<uint8_t, 124> raw{};
    const uint32_t headerSize = Reader.U32();
    // The file may have changed since IsBmp looked at it.
    if (!IsKnownHeaderSize(headerSize) || headerSize == 12) return false;
    Reader.Read(raw.data() + 4, headerSize - 4);

    ByteReader fields(raw.data(), raw.size());
    InfoHeader h;
    h.Size = headerSize;
    fields.Seek(4);
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
    h.RedMask = fields.U32();
    h.GreenMask = fields.U32();
    h.BlueMask = fields.U32();
    h.AlphaMask = fields.U32();

    // A mirrored width means nothing in this format, and the height's absolute
    // value has to fit the image's 32-bit height.
    if (h.Width < 0 || h.Height == std::numeric_limits<int32_t>::min()) return false;
    const int32_t width = h.Width;
    const int32_t height = std::abs(h.Height);
    const bool topDown = h.Height < 0;
    const bool checkAlpha = Globals().CheckBmp32or16Alpha;

    Image.BmpFlipRow = topDown;
    Image.RleCompress = h.Compression != 0;

    switch (h.BitCount) {
    case 1:
    case 4:
    case 8: {
        const uint64_t count = h.ClrUsed ? h.ClrUsed : (uint64_t{1} << h.BitCount);
        PaletteData palette;
        palette.Count = static_cast<uint32_t>(std::min<uint64_t>(count, 256));
        Reader.Read(palette.Entries.data(), 4 * palette.Count);
        // An oversized table still stands between header and pixels.
        Reader.Skip(static_cast<size_t>(std::min<uint64_t>(4 * (count - palette.Count), Reader.Remaining())));
        for (int i = 0; i < 256; ++i)
            palette.Entry(i)[3] = 255;

        if (!Image.CreateNewImage(width, height, h.BitCount)) return false;
        Image.SetPaletteData(palette);
        if (h.Compression == CompressionRgb) {
            ReadRawRows(Reader, Image, topDown);
        } else if ((h.Compression == CompressionRle8 && h.BitCount == 8) ||
                   (h.Compression == CompressionRle4 && h.BitCount == 4)) {
            DecodeRle(Reader.Data() + Reader.Position(), Reader.Remaining(), Image, h.BitCount, topDown);
        }
        // Any other compression draws nothing: the picture stays as created.
        break;
    }
    case 16: {
        if (h.Size == 40 && h.Compression == CompressionBitfields) {
            // Four masks, although such a file usually holds three: the pixels
            // are then taken from offset 70, as they always were here.
            h.RedMask = Reader.U32();
            h.GreenMask = Reader.U32();
            h.BlueMask = Reader.U32();
            h.AlphaMask = Reader.U32();
        }
        const bool withAlpha = h.Compression == CompressionBitfields && h.Size > 40;
        if (!Image.CreateNewImage(width, height, withAlpha ? 32 : 24)) return false;
        Convert16BitPixels(Reader, h, Image, withAlpha && checkAlpha);
        Image.CheckAlpha();
        break;
    }
    case 24:
    case 32:
        if (h.Size == 40 && h.Compression == CompressionBitfields) Reader.Skip(16);
        // One byte past the end of a 56-byte header; the editor's own 56-byte
        // files are never 24 or 32 bits, and other programs' files load as
        // they always have.
        if (h.Size == 56) Reader.Seek(FileHeaderSize + 56 + 1);
        if (!Image.CreateNewImage(width, height, h.BitCount)) return false;
        ReadRawRows(Reader, Image, topDown);
        if (h.BitCount == 32 && checkAlpha) Image.CheckAlpha();
        break;
    default:
        // No pixels for a depth the format does not have.
        return false;
    }

    // Every new 8-bit image is grey; only its palette tells indexed from grey.
    if (Image.PixelFormat == PixelFormat8bppGray && !IsGrayRamp(Image.Palette()))
        Image.PixelFormat = PixelFormat8bppIndexed;
    Image.FileName = File;
    Image.RawImageFormat = RawBmp;
    Image.RawPixelFormat = GetPixelFormatOfDepth(h.BitCount);
    Image.BmpFileSystem = 0;
    Image.Resolution =
        h.XPelsPerMeter == 0 ? 72.0f : static_cast<float>(h.XPelsPerMeter / PelsPerMeterPerDpi);
    return true;
}

bool BmpParser::LoadOs2Bitmap(ByteReader& Reader, const QString& File, CImage& Image) {
    Reader.Seek(FileHeaderSize + 4);
    const int16_t width = Reader.I16();
    const int16_t height = Reader.I16();
    Reader.I16(); // planes
    const int16_t bitCount = Reader.I16();
    // Refuses negative and zero sizes and depths the format does not have.
    if (!Image.CreateNewImage(width, height, bitCount)) return false;

    if (bitCount <= 8) {
        PaletteData palette;
        palette.Count = 1u << bitCount;
        for (uint32_t i = 0; i < palette.Count; ++i) {
            uint8_t* e = palette.Entry(static_cast<int>(i));
            e[0] = Reader.U8();
            e[1] = Reader.U8();
            e[2] = Reader.U8();
            e[3] = 255;
        }
        Image.SetPaletteData(palette);
    }
    ReadRawRows(Reader, Image, false);

    Image.FileName = File;
    Image.BmpFileSystem = 1;
    if (bitCount == 8)
        Image.PixelFormat = IsGrayRamp(Image.Palette()) ? PixelFormat8bppGray : PixelFormat8bppIndexed;
    // Unlike the Windows flavour, the grey/indexed decision is recorded too.
    Image.RawPixelFormat = Image.PixelFormat;
    Image.RawImageFormat = RawBmp;
    return true;
}

void BmpParser::ReadRawRows(ByteReader& Reader, CImage& Image, bool TopDown) {
    if (TopDown) {
        CopyAvailable(Reader, Image.Pointer(), Image.BlockSize());
        return;
    }
    const size_t stride = static_cast<size_t>(Image.Stride());
    for (int32_t y = Image.Height() - 1; y >= 0 && !Reader.AtEnd(); --y)
        CopyAvailable(Reader, Image.Row(y), stride);
}

void BmpParser::Convert16BitPixels(ByteReader& Reader, const InfoHeader& Header, CImage& Image,
                                   bool RebuildAlpha) {
    // Without bit fields a 16-bit file is 5-5-5, red in the high bits,
    // whatever else its compression field says.
    const bool bitfields = Header.Compression == CompressionBitfields;
    const ChannelScale red(bitfields ? Header.RedMask : 0x7C00);
    const ChannelScale green(bitfields ? Header.GreenMask : 0x03E0);
    const ChannelScale blue(bitfields ? Header.BlueMask : 0x001F);
    const AlphaRebuild alpha(Header.AlphaMask);

    const int32_t width = Image.Width();
    const int32_t height = Image.Height();
    const int bpp = Image.PixelFormat == PixelFormat32bppARGB ? 4 : 3;
    const size_t fileStride = (static_cast<size_t>(width) * 2 + 3) & ~size_t{3};
    const uint8_t* data = Reader.Data() + Reader.Position();
    const size_t available = Reader.Remaining();

    // Rows and pixels the file does not hold read as 0, which converts to the
    // zero the fresh block already has, so they are skipped.
    for (int32_t r = 0; r < height; ++r) {
        const size_t rowStart = static_cast<size_t>(r) * fileStride;
        if (rowStart >= available) break;
        const uint8_t* src = data + rowStart;
        const size_t rowBytes = std::min(available - rowStart, static_cast<size_t>(width) * 2);
        uint8_t* dest = Image.Row(Header.Height > 0 ? height - 1 - r : r);
        for (size_t x = 0; 2 * x < rowBytes; ++x, dest += bpp) {
            const uint16_t pixel =
                static_cast<uint16_t>(src[2 * x] | (2 * x + 1 < rowBytes ? src[2 * x + 1] << 8 : 0));
            dest[0] = blue(pixel);
            dest[1] = green(pixel);
            dest[2] = red(pixel);
            if (RebuildAlpha) dest[3] = alpha(pixel);
        }
    }
    Reader.Skip(std::min(available, static_cast<size_t>(height) * fileStride));
}

void BmpParser::DecodeRle(const uint8_t* Data, size_t Size, CImage& Image, int Bits, bool TopRowFirst) {
    const int64_t width = Image.Width();
    const int64_t height = Image.Height();
    int64_t x = 0;
    int64_t y = 0; // stream row: 0 is the first row the stream draws
    size_t p = 0;
    auto put = [&](uint8_t value) {
        if (x < width)
            PutIndex(Image, Bits, static_cast<int32_t>(x),
                     static_cast<int32_t>(TopRowFirst ? y : height - 1 - y), value);
        ++x;
    };
    while (y < height && p + 2 <= Size) {
        const uint8_t count = Data[p++];
        const uint8_t code = Data[p++];
        if (count > 0) {
            // An encoded run that overshoots the row is cut at the row's end.
            const int n = static_cast<int>(std::min<int64_t>(count, std::max<int64_t>(0, width - x)));
            for (int i = 0; i < n; ++i)
                put(Bits == 8 ? code : ((i & 1) ? (code & 0x0F) : (code >> 4)));
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
            if (p + 2 > Size) return;
            x += Data[p];
            y += Data[p + 1];
            p += 2;
            break;
        default: { // absolute run, padded to a word
            const size_t bytes = Bits == 8 ? code : (code + 1u) / 2;
            const size_t have = std::min(bytes, Size - p);
            for (int i = 0; i < code; ++i) {
                const size_t at = Bits == 8 ? static_cast<size_t>(i) : static_cast<size_t>(i) / 2;
                if (at >= have) return; // the stream broke off inside the run
                const uint8_t b = Data[p + at];
                if (x >= width) {
                    x += code - i;
                    break;
                }
                put(Bits == 8 ? b : ((i & 1) ? (b & 0x0F) : (b >> 4)));
            }
            p += std::min(bytes + (bytes & 1), Size - p);
            break;
        }
        }
    }
}

QByteArray BmpParser::EncodeRle(const CImage& Image, int Bits) {
    ByteWriter out;
    std::vector<uint8_t> row;
    for (int32_t y = Image.Height() - 1; y >= 0; --y) {
        RowIndices(Image, Bits, y, row);
        EncodeRow(row, Bits, out);
        out.U8(0);
        out.U8(y > 0 ? 0 : 1); // end of line, or end of bitmap after the last row
    }
    return out.Data();
}

void BmpParser::SetBitfieldHeader(InfoHeader& Header, int32_t Bmp16Format) {
    struct Fields {
        uint32_t Red, Green, Blue, Alpha;
    };
    static constexpr Fields table[] = {
        {0, 0, 0, 0},
        {0x7C00, 0x03E0, 0x001F, 0x8000},
        {0xF800, 0x07E0, 0x001F, 0},
        {0xF800, 0x07C0, 0x003F, 0},
        {0xFC00, 0x03E0, 0x001F, 0},
        {0x0F00, 0x00F0, 0x000F, 0},
        {0x0F00, 0x00F0, 0x000F, 0xF000},
    };
    if (Bmp16Format < 1 || Bmp16Format > 6) {
        Header.Size = 40;
        Header.Compression = CompressionRgb;
        Header.RedMask = Header.GreenMask = Header.BlueMask = Header.AlphaMask = 0;
        return;
    }
    const Fields& f = table[Bmp16Format];
    Header.Size = 56;
    Header.Compression = CompressionBitfields;
    Header.RedMask = f.Red;
    Header.GreenMask = f.Green;
    Header.BlueMask = f.Blue;
    Header.AlphaMask = f.Alpha;
}

void BmpParser::WriteInfoHeader(ByteWriter& Writer, const InfoHeader& Header) {
    Writer.U32(Header.Size);
    Writer.I32(Header.Width);
    Writer.I32(Header.Height);
    Writer.U16(Header.Planes);
    Writer.U16(Header.BitCount);
    Writer.U32(Header.Compression);
    Writer.U32(Header.SizeImage);
    Writer.I32(Header.XPelsPerMeter);
    Writer.I32(Header.YPelsPerMeter);
    Writer.U32(Header.ClrUsed);
    Writer.U32(Header.ClrImportant);
    if (Header.Size >= 56) {
        Writer.U32(Header.RedMask);
        Writer.U32(Header.GreenMask);
        Writer.U32(Header.BlueMask);
        Writer.U32(Header.AlphaMask);
    }
}

bool BmpParser::SavePictureToFile(const QString& File, CImage& Image, int32_t FileSystem, bool FlipRow,
                                  bool Rle, int32_t Bmp16Format) {
    if (!Image.Handle()) return false;
    const bool saved = FileSystem != 0 ? SaveOs2Bitmap(File, Image)
                                       : SaveWindowsBitmap(File, Image, FlipRow, Rle, Bmp16Format);
    if (saved && Image.RawImageFormat == RawNone) Image.RawImageFormat = RawBmp;
    return saved;
}

bool BmpParser::SaveWindowsBitmap(const QString& File, const CImage& Image, bool FlipRow, bool Rle,
                                  int32_t Bmp16Format) {
    const int depth = WritableDepth(Image);
    if (!depth) return false;
    // Unknown bit-field choices are written as the plain 16-bit layout.
    if (Bmp16Format < 0 || Bmp16Format > 6) Bmp16Format = 0;
    const uint32_t paletteCount = depth <= 8 ? std::min<uint32_t>(Image.Palette().Count, 256) : 0;
    const bool rle = Rle && (depth == 4 || depth == 8);

    InfoHeader h;
    h.Width = Image.Width();
    h.Height = FlipRow ? -Image.Height() : Image.Height();
    h.BitCount = static_cast<uint16_t>(depth);
    h.XPelsPerMeter = h.YPelsPerMeter = DpiToPelsPerMeter(Image.Resolution);
    h.ClrUsed = paletteCount;
    // Only a 16-bit picture gets the 56-byte header; the data offset counts
    // the masks whenever a layout is chosen, as earlier versions wrote it.
    if (depth == 16) SetBitfieldHeader(h, Bmp16Format);

    ByteWriter w;
    w.Data().reserve(static_cast<qsizetype>(70 + 4 * paletteCount + Image.BlockSize()));
    w.U16(BmpSignature);
    w.Zeros(8); // file size and the reserved words
    w.U32(54 + (Bmp16Format != 0 ? 16 : 0) + 4 * paletteCount);
    WriteInfoHeader(w, h);
    w.Bytes(Image.Palette().Entries.data(), 4 * paletteCount);

    if (rle) {
        const QByteArray encoded = EncodeRle(Image, depth);
        w.Bytes(encoded.constData(), static_cast<size_t>(encoded.size()));
        // The compressed picture is described by a header of its own: upright,
        // without resolution.
        InfoHeader c;
        c.Width = Image.Width();
        c.Height = Image.Height();
        c.BitCount = static_cast<uint16_t>(depth);
        c.Compression = depth == 8 ? CompressionRle8 : CompressionRle4;
        c.SizeImage = static_cast<uint32_t>(encoded.size());
        c.ClrUsed = paletteCount;
        ByteWriter header;
        WriteInfoHeader(header, c);
        std::memcpy(w.Data().data() + FileHeaderSize, header.Data().constData(), 40);
    } else if (FlipRow) {
        w.Bytes(Image.Pointer(), Image.BlockSize());
    } else {
        for (int32_t y = Image.Height() - 1; y >= 0; --y)
            w.Bytes(Image.Row(y), static_cast<size_t>(Image.Stride()));
    }
    return WriteFileAtomically(File, w.Data());
}

bool BmpParser::SaveOs2Bitmap(const QString& File, const CImage& Image) {
    const int depth = WritableDepth(Image);
    if (!depth) return false;
    // The core header's sizes are read back as signed 16-bit numbers.
    if (Image.Width() > 32767 || Image.Height() > 32767) return false;
    const uint32_t entries = depth <= 8 ? (1u << depth) : 0;
    const uint32_t paletteBytes = 3 * entries;
    const uint64_t pixelBytes = Image.BlockSize();

    ByteWriter w;
    w.Data().reserve(static_cast<qsizetype>(26 + paletteBytes + pixelBytes));
    w.U16(BmpSignature);
    w.U32(static_cast<uint32_t>(26 + paletteBytes + pixelBytes));
    w.U32(0);
    w.U32(26 + paletteBytes);
    w.U32(12);
    w.U16(static_cast<uint16_t>(Image.Width()));
    w.U16(static_cast<uint16_t>(Image.Height()));
    w.U16(1);
    w.U16(static_cast<uint16_t>(depth));
    // The whole table the depth addresses, whatever Count says.
    for (uint32_t i = 0; i < entries; ++i)
        w.Bytes(Image.Palette().Entry(static_cast<int>(i)), 3);
    for (int32_t y = Image.Height() - 1; y >= 0; --y)
        w.Bytes(Image.Row(y), static_cast<size_t>(Image.Stride()));
    return WriteFileAtomically(File, w.Data());
}

bool BmpParser::GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                                     int32_t& BitDepth) {
    return ThumbAndInfo([&](CImage& image) { return LoadPictureFromFile(File, image); }, Graphics, Width,
                        Height, BitDepth);
}

} // namespace vm
