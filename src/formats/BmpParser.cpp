#include "formats/BmpParser.h"

#include "core/AppSettings.h"
#include "core/Numeric.h"
#include "formats/DibCodec.h"
#include "formats/ParserRegistry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vm {

namespace {

constexpr uint16_t BmpSignature = 19778; // "BM"
constexpr int FileHeaderSize = 14;
// Our conversion between dots per inch and the header's pixels per metre. It
// is not 39.3701: files of every earlier version carry it, so it stays.
constexpr double PelsPerMeterPerDpi = 39.35833333;
// The core header's sizes are read back as signed 16-bit numbers.
constexpr int32_t Os2MaxSide = 32767;

bool IsKnownHeaderSize(uint32_t size) {
    return size == 12 || size == 40 || size == 56 || size == 108 || size == 124;
}

bool BmpHead(const QByteArray& bytes) {
    ByteReader reader(bytes);
    if (bytes.size() < FileHeaderSize + 4 || reader.U16() != BmpSignature) return false;
    reader.Seek(FileHeaderSize);
    return IsKnownHeaderSize(reader.U32());
}

int32_t DpiToPelsPerMeter(float dpi) {
    const double v = static_cast<double>(dpi) * PelsPerMeterPerDpi;
    if (!std::isfinite(v)) return 0;
    return RoundHalfEven(std::clamp(v, -2147483648.0, 2147483647.0));
}

// Whether the data from the reader's position can hold Rows rows of Width
// pixels of Bits: an uncompressed file that cannot is refused before its
// block is allocated, however small the file and however large the header's
// promise. Only the last row's padding may be missing.
bool HoldsPixels(const ByteReader& reader, int64_t width, int64_t rows, int bits) {
    return DibStoredBytes(width, rows, bits) <= reader.Remaining();
}

bool LoadWindowsBitmap(ByteReader& reader, CImage& image) {
    reader.Seek(FileHeaderSize);
    DibHeader h;
    // The file may have changed since its signature was looked at.
    if (!ReadDibHeader(reader, h) || !IsKnownHeaderSize(h.Size) || h.IsCore()) return false;

    // A mirrored width means nothing in this format, and the height's absolute
    // value has to fit the image's 32-bit height.
    if (h.Width < 0 || h.Height == std::numeric_limits<int32_t>::min()) return false;
    const int32_t width = h.Width;
    const int32_t height = static_cast<int32_t>(h.Rows());
    const bool topDown = h.TopDown();
    const bool checkAlpha = Globals().CheckBmp32or16Alpha;

    image.BmpFlipRow = topDown;
    image.RleCompress = h.Compression != DibRgb;

    switch (h.BitCount) {
    case 1:
    case 4:
    case 8: {
        const uint64_t count = h.ClrUsed ? h.ClrUsed : (uint64_t{1} << h.BitCount);
        const PaletteData palette =
            ReadDibPalette(reader, static_cast<uint32_t>(std::min<uint64_t>(count, UINT32_MAX)), 4);
        const bool rle =
            (h.Compression == DibRle8 && h.BitCount == 8) || (h.Compression == DibRle4 && h.BitCount == 4);
        if (h.Compression == DibRgb && !HoldsPixels(reader, width, height, h.BitCount)) return false;
        if (!NewBlock(image, width, height, h.BitCount)) return false;
        image.SetPaletteData(palette);
        if (h.Compression == DibRgb)
            ReadDibRows(reader, image, topDown);
        else if (rle)
            DecodeDibRle(reader.Rest(), image, h.BitCount, topDown);
        // Any other compression draws nothing: the picture stays as created.
        break;
    }
    case 16: {
        if (h.Size == 40 && h.Compression == DibBitfields) {
            // Four masks, although such a file usually holds three: the pixels
            // are then taken from offset 70, as they always were here.
            h.RedMask = reader.U32();
            h.GreenMask = reader.U32();
            h.BlueMask = reader.U32();
            h.AlphaMask = reader.U32();
        }
        const bool withAlpha = h.Compression == DibBitfields && h.Size > 40;
        if (!HoldsPixels(reader, width, height, 16)) return false;
        if (!NewBlock(image, width, height, withAlpha ? 32 : 24)) return false;
        ReadDibBitfields(reader, h, 16, image, withAlpha && checkAlpha);
        image.CheckAlpha();
        break;
    }
    case 24:
    case 32:
        if (h.Size == 40 && h.Compression == DibBitfields) reader.Skip(16);
        // One byte past the end of a 56-byte header; the editor's own 56-byte
        // files are never 24 or 32 bits, and other programs' files load as
        // they always have.
        if (h.Size == 56) reader.Seek(FileHeaderSize + 56 + 1);
        if (!HoldsPixels(reader, width, height, h.BitCount)) return false;
        if (!NewBlock(image, width, height, h.BitCount)) return false;
        ReadDibRows(reader, image, topDown);
        if (h.BitCount == 32 && checkAlpha) image.CheckAlpha();
        break;
    default:
        // No pixels for a depth the format does not have.
        return false;
    }

    // Every new 8-bit image is grey; only its palette tells indexed from grey.
    if (image.PixelFormat == PixelFormat8bppGray && !IsGrayRamp(image.Palette()))
        image.PixelFormat = PixelFormat8bppIndexed;
    image.RawPixelFormat = GetPixelFormatOfDepth(h.BitCount);
    image.BmpFileSystem = 0;
    image.Resolution =
        h.XPelsPerMeter == 0 ? 72.0f : static_cast<float>(h.XPelsPerMeter / PelsPerMeterPerDpi);
    return true;
}

bool LoadOs2Bitmap(ByteReader& reader, CImage& image) {
    reader.Seek(FileHeaderSize);
    DibHeader h;
    ReadDibHeader(reader, h);
    const int bits = h.BitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return false;
    PaletteData palette;
    if (bits <= 8) palette = ReadDibPalette(reader, 1u << bits, 3);
    if (!HoldsPixels(reader, h.Width, h.Height, bits)) return false;
    // Refuses negative and zero sizes.
    if (!NewBlock(image, h.Width, h.Height, bits)) return false;
    if (bits <= 8) image.SetPaletteData(palette);
    ReadDibRows(reader, image, false);

    image.BmpFileSystem = 1;
    if (bits == 8)
        image.PixelFormat = IsGrayRamp(image.Palette()) ? PixelFormat8bppGray : PixelFormat8bppIndexed;
    // Unlike the Windows flavour, the grey/indexed decision is recorded too.
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool LoadBmp(const QByteArray& bytes, CImage& image, LoadOptions&) {
    ByteReader reader(bytes);
    reader.Seek(FileHeaderSize);
    const uint32_t size = reader.U32();
    return size == 12 ? LoadOs2Bitmap(reader, image) : LoadWindowsBitmap(reader, image);
}

// The depth the writers store, 0 when there is none: the format code must
// name a depth the format has, and one whose rows fit the block's stride
// (PixelFormat is writable, the block is not).
int WritableDepth(const CImage& image) {
    const int depth = GetBitDepth(image.PixelFormat);
    if (depth != 1 && depth != 4 && depth != 8 && depth != 16 && depth != 24 && depth != 32) return 0;
    return StrideOf(image.Width(), depth) <= image.Stride() ? depth : 0;
}

// The bit fields of each 16-bit layout the writer offers.
void SetBitfieldHeader(DibHeader& header, int32_t bmp16Format) {
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
    if (bmp16Format < 1 || bmp16Format > 6) {
        header.Size = 40;
        header.Compression = DibRgb;
        header.RedMask = header.GreenMask = header.BlueMask = header.AlphaMask = 0;
        return;
    }
    const Fields& f = table[bmp16Format];
    header.Size = 56;
    header.Compression = DibBitfields;
    header.RedMask = f.Red;
    header.GreenMask = f.Green;
    header.BlueMask = f.Blue;
    header.AlphaMask = f.Alpha;
}

QByteArray SaveWindowsBitmap(const CImage& image, int depth, bool flipRow, bool rle, int32_t bmp16Format) {
    const uint32_t paletteCount = depth <= 8 ? std::min<uint32_t>(image.Palette().Count, 256) : 0;
    rle = rle && (depth == 4 || depth == 8);

    DibHeader h;
    h.Width = image.Width();
    h.Height = flipRow ? -image.Height() : image.Height();
    h.BitCount = static_cast<uint16_t>(depth);
    h.XPelsPerMeter = h.YPelsPerMeter = DpiToPelsPerMeter(image.Resolution);
    h.ClrUsed = paletteCount;
    // Only a 16-bit picture gets the 56-byte header; the data offset counts
    // the masks whenever a layout is chosen, as earlier versions wrote it.
    if (depth == 16) SetBitfieldHeader(h, bmp16Format);

    ByteWriter w;
    w.Data().reserve(static_cast<qsizetype>(70 + 4 * paletteCount + (rle ? 0 : image.BlockSize())));
    w.U16(BmpSignature);
    w.Zeros(8); // file size and the reserved words
    w.U32(54 + (bmp16Format != 0 ? 16 : 0) + 4 * paletteCount);
    WriteDibHeader(w, h);
    w.Bytes(image.Palette().Entries.data(), 4 * paletteCount);

    if (rle) {
        const QByteArray encoded = EncodeDibRle(image, depth);
        w.Bytes(encoded.constData(), static_cast<size_t>(encoded.size()));
        // The compressed picture is described by a header of its own: upright,
        // without resolution.
        DibHeader c;
        c.Width = image.Width();
        c.Height = image.Height();
        c.BitCount = static_cast<uint16_t>(depth);
        c.Compression = depth == 8 ? DibRle8 : DibRle4;
        c.SizeImage = static_cast<uint32_t>(encoded.size());
        c.ClrUsed = paletteCount;
        ByteWriter header;
        WriteDibHeader(header, c);
        w.Data().replace(FileHeaderSize, 40, header.Data());
    } else if (flipRow) {
        w.Bytes(image.Pointer(), image.BlockSize());
    } else {
        for (int32_t y = image.Height() - 1; y >= 0; --y)
            w.Bytes(image.Row(y), static_cast<size_t>(image.Stride()));
    }
    return w.Data();
}

QByteArray SaveOs2Bitmap(const CImage& image, int depth) {
    const uint32_t entries = depth <= 8 ? (1u << depth) : 0;
    const uint32_t paletteBytes = 3 * entries;
    const uint64_t pixelBytes = image.BlockSize();

    ByteWriter w;
    w.Data().reserve(static_cast<qsizetype>(26 + paletteBytes + pixelBytes));
    w.U16(BmpSignature);
    w.U32(static_cast<uint32_t>(26 + paletteBytes + pixelBytes));
    w.U32(0);
    w.U32(26 + paletteBytes);
    w.U32(12);
    w.U16(static_cast<uint16_t>(image.Width()));
    w.U16(static_cast<uint16_t>(image.Height()));
    w.U16(1);
    w.U16(static_cast<uint16_t>(depth));
    // The whole table the depth addresses, whatever Count says.
    for (uint32_t i = 0; i < entries; ++i)
        w.Bytes(image.Palette().Entry(static_cast<int>(i)), 3);
    for (int32_t y = image.Height() - 1; y >= 0; --y)
        w.Bytes(image.Row(y), static_cast<size_t>(image.Stride()));
    return w.Data();
}

bool SaveBmp(const CImage& image, const SaveOptions& options, QByteArray& out, QString& error) {
    const int depth = WritableDepth(image);
    if (!depth) return false;
    const int32_t fileSystem = options.Int(QStringLiteral("FileSystem"));
    if (fileSystem != 0) {
        if (image.Width() > Os2MaxSide || image.Height() > Os2MaxSide) {
            error = TooLargeMessage(QStringLiteral("OS/2 BMP"), Os2MaxSide);
            return false;
        }
        out = SaveOs2Bitmap(image, depth);
        return true;
    }
    // Unknown bit-field choices are written as the plain 16-bit layout.
    int32_t bmp16 = options.Int(QStringLiteral("Bmp16Format"));
    if (bmp16 < 0 || bmp16 > 6) bmp16 = 0;
    out = SaveWindowsBitmap(image, depth, options.Int(QStringLiteral("FlipRow")) != 0,
                            options.Int(QStringLiteral("Rle")) != 0, bmp16);
    return true;
}

} // namespace

const FileFamily& BmpFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawBmp;
        f.Name = "BmpParser";
        f.Signature = BmpHead;
        f.Load = LoadBmp;
        f.Save = SaveBmp;
        const QString windowsOnly = QStringLiteral("FileSystem");
        f.Options = {
            {.Key = QStringLiteral("FileSystem"),
             .Label = QStringLiteral("文件格式"),
             .Type = SaveOptionSpec::Choice,
             .Default = 0,
             .Choices = {{0, QStringLiteral("Windows")}, {1, QStringLiteral("OS/2")}},
             .SettingKey = QStringLiteral("BmpFileSystem"),
             .Remembered = [](const CImage& image) { return image.BmpFileSystem != 0 ? 1 : 0; }},
            {.Key = QStringLiteral("FlipRow"),
             .Label = QStringLiteral("翻转行序"),
             .Type = SaveOptionSpec::Switch,
             .SettingKey = QStringLiteral("BmpFlipRow"),
             .Remembered = [](const CImage& image) { return image.BmpFlipRow ? 1 : 0; },
             // The OS/2 header knows neither the row order nor the compression.
             .EnabledWhenKey = windowsOnly},
            {.Key = QStringLiteral("Rle"),
             .Label = QStringLiteral("压缩 (RLE)"),
             .Type = SaveOptionSpec::Switch,
             .SettingKey = QStringLiteral("BmpCompress"),
             .Remembered = [](const CImage& image) { return image.RleCompress ? 1 : 0; },
             .AppliesTo =
                 [](const CImage& image) {
                     const int bits = BitsPerPixel(image.PixelFormat);
                     return bits == 4 || bits == 8;
                 },
             .EnabledWhenKey = windowsOnly},
            // The 16-bit layouts only fit a 16-bit block: any other depth would
            // get a header that points past its pixels.
            {.Key = QStringLiteral("Bmp16Format"),
             .Label = QStringLiteral("16位格式"),
             .Type = SaveOptionSpec::Choice,
             .Default = 0,
             .Choices = {{0, QStringLiteral("X1 R5 G5 B5")},
                         {1, QStringLiteral("A1 R5 G5 B5")},
                         {2, QStringLiteral("R5 G6 B5")},
                         {3, QStringLiteral("R5 G5 B6")},
                         {4, QStringLiteral("R6 G5 B5")},
                         {5, QStringLiteral("X4 R4 G4 B4")},
                         {6, QStringLiteral("A4 R4 G4 B4")}},
             .SettingKey = QStringLiteral("Bmp16Format"),
             .Remembered = [](const CImage& image) { return image.Bmp16PixelFormat; },
             .AppliesTo = [](const CImage& image) { return BitsPerPixel(image.PixelFormat) == 16; },
             .EnabledWhenKey = windowsOnly},
        };
        return f;
    }();
    return family;
}

bool BmpParser::IsBmp(const QString& File) {
    return BmpHead(ReadFileHead(File, FileHeaderSize + 4));
}

bool BmpParser::LoadPictureFromFile(const QString& File, CImage& Image) {
    int32_t frame = 0;
    return LoadFamilyFile(BmpFamily(), File, Image, frame);
}

bool BmpParser::SavePictureToFile(const QString& File, CImage& Image, int32_t FileSystem, bool FlipRow,
                                  bool Rle, int32_t Bmp16Format) {
    SaveOptions options;
    options.Set(QStringLiteral("FileSystem"), FileSystem);
    options.Set(QStringLiteral("FlipRow"), FlipRow ? 1 : 0);
    options.Set(QStringLiteral("Rle"), Rle ? 1 : 0);
    options.Set(QStringLiteral("Bmp16Format"), Bmp16Format);
    return SaveFamilyFile(BmpFamily(), File, Image, options);
}

bool BmpParser::GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                                     int32_t& BitDepth) {
    return FamilyThumbAndInfo(BmpFamily(), File, Graphics, Width, Height, BitDepth);
}

} // namespace vm
