#include "formats/BmpParser.h"

#include "core/AppSettings.h"
#include "core/Numeric.h"
#include "formats/CodecTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>

using namespace vm;
using namespace vmtest;

namespace {

uint32_t U32At(const QByteArray& b, int at) {
    return ByteReader(reinterpret_cast<const uint8_t*>(b.constData()) + at, 4).U32();
}

QByteArray Hex(const char* text) {
    return QByteArray::fromHex(text);
}

const auto Load = &LoadWith<BmpParser>;
const auto LoadBytes = &LoadBytesWith<BmpParser>;

bool Save(const QString& path, CImage& image, int fileSystem, bool flip, bool rle, int bmp16 = 0) {
    return BmpParser().SavePictureToFile(path, image, fileSystem, flip, rle, bmp16);
}

// The pixel bytes, top row first, without row padding.
QByteArray PixelBytes(const CImage& image) {
    QByteArray all;
    const int n = (image.Width() * GetBitDepth(image.PixelFormat) + 7) / 8;
    for (int y = 0; y < image.Height(); ++y)
        all += QByteArray(reinterpret_cast<const char*>(image.Row(y)), n);
    return all;
}

struct AlphaSetting {
    bool saved = Globals().CheckBmp32or16Alpha;
    explicit AlphaSetting(bool on) { Globals().CheckBmp32or16Alpha = on; }
    ~AlphaSetting() { Globals().CheckBmp32or16Alpha = saved; }
};

// A bitmap put together field by field, for what no other program writes.
struct BmpFile {
    uint32_t HeaderSize = 40;
    int32_t Width = 1, Height = 1;
    uint16_t BitCount = 24;
    uint32_t Compression = 0;
    uint32_t ClrUsed = 0;
    std::array<uint32_t, 4> Masks{};
    QByteArray AfterHeader{}; // a 40-byte header's masks, the palette
    QByteArray Pixels{};
    uint32_t OffBits = 0; // 0: where the pixels are, for other programs' sake

    QByteArray Bytes() const {
        ByteWriter w;
        w.U16(19778);
        w.Zeros(8);
        w.U32(OffBits ? OffBits : 14 + HeaderSize + static_cast<uint32_t>(AfterHeader.size()));
        w.U32(HeaderSize);
        if (HeaderSize == 12) {
            for (int v : {Width, Height, 1, int{BitCount}})
                w.U16(static_cast<uint16_t>(v));
        } else {
            w.I32(Width);
            w.I32(Height);
            w.U16(1);
            w.U16(BitCount);
            w.U32(Compression);
            w.Zeros(12);
            w.U32(ClrUsed);
            w.U32(0);
            if (HeaderSize >= 56)
                for (uint32_t m : Masks)
                    w.U32(m);
            w.Zeros(HeaderSize - std::min<uint32_t>(HeaderSize, HeaderSize >= 56 ? 56 : 40));
        }
        w.Bytes(AfterHeader.constData(), AfterHeader.size());
        w.Bytes(Pixels.constData(), Pixels.size());
        return w.Data();
    }
};

QByteArray GreyRamp(int n, int entrySize = 4) {
    QByteArray p;
    for (int i = 0; i < n; ++i)
        p += QByteArray(3, static_cast<char>(i)) + QByteArray(entrySize - 3, '\0');
    return p;
}

// ImageMagick refuses a size field of 0, which our writer stores; it gets a
// copy with the size filled in.
QImage MagickDecode(const QString& file) {
    QByteArray bytes = ReadBytes(file);
    if (bytes.size() < 6 || U32At(bytes, 2) != 0) return DecodeWithMagick(file);
    for (int i = 0; i < 4; ++i)
        bytes[2 + i] = static_cast<char>(bytes.size() >> (8 * i));
    return WriteBytes(TempFile("sized.bmp"), bytes) ? DecodeWithMagick(TempFile("sized.bmp")) : QImage();
}

// ImageMagick's Target ("FORMAT:name") of Source with Options, in the
// temporary folder.
QString MagickWrite(const QString& source, const QStringList& options, const QString& target) {
    return Magick(QStringList{source} + options
                  << target.section(':', 0, 0) + ":" + TempFile(target.section(':', 1)));
}

// Two small pictures of our own: gradients with a flat block (runs for RLE),
// and the same with an alpha ramp.
QString SourcePicture(bool alpha) {
    static QString paths[2];
    if (paths[alpha].isEmpty()) {
        QStringList args{"-size",    "37x23",
                         "xc:",      "-sparse-color",
                         "Bilinear", "0,0 red 36,0 lime 0,22 blue 36,22 yellow",
                         "-fill",    "white",
                         "-draw",    "rectangle 4,5 20,12"};
        if (alpha) args += {"-alpha", "set", "-channel", "A", "-fx", "(i+j)/(w+h)", "+channel"};
        paths[alpha] = Magick(args << TempFile(alpha ? "source-alpha.png" : "source.png"));
    }
    return paths[alpha];
}

// Bits of red, green, blue and alpha of a 16-bit layout, the alpha at the top.
struct FieldBits {
    int R = 0, G = 0, B = 0, A = 0;
};

// What our loader must make of a 16-bit file that ImageMagick decoded. Its
// low bits are filled its own way, so only the field value is taken from it:
// colour is that value scaled over its range, alpha follows the lowest-bit
// range rule, and an alpha plane of zeros means opaque.
QImage ExpectedFrom16Bit(const QImage& magick, FieldBits bits) {
    QImage out = magick.convertToFormat(QImage::Format_RGBA8888);
    bool anyAlpha = false;
    for (int y = 0; y < out.height(); ++y) {
        uint8_t* p = out.scanLine(y);
        for (int x = 0; x < out.width(); ++x, p += 4) {
            const int n[3] = {bits.R, bits.G, bits.B};
            for (int c = 0; c < 3; ++c)
                p[c] = static_cast<uint8_t>(((p[c] >> (8 - n[c])) * 255 + ((1 << n[c]) - 1) / 2) /
                                            ((1 << n[c]) - 1));
            p[3] = bits.A ? static_cast<uint8_t>(MulDiv(p[3] >> (8 - bits.A), 255, 1 << bits.A)) : 255;
            anyAlpha |= p[3] != 0;
        }
    }
    for (int y = 0; y < out.height() && !anyAlpha; ++y)
        for (int x = 0; x < out.width(); ++x)
            out.scanLine(y)[4 * x + 3] = 255;
    return out;
}

long long MagickDifferences(const QString& file, const CImage& image, FieldBits bits = {}) {
    QImage magick = MagickDecode(file);
    if (magick.isNull()) return -1;
    return CountDifferences(ToRgba(image), bits.R ? ExpectedFrom16Bit(magick, bits) : magick);
}

// An indexed picture of runs, alternating pairs and noise: the shapes RLE
// has to tell apart.
std::unique_ptr<CImage> RunnyImage(int bits, unsigned seed) {
    auto image = RandomImage(61, 19, bits, seed);
    std::mt19937 gen(seed);
    for (int y = 0; y < image->Height(); ++y) {
        for (int x = 0; x < image->Width();) {
            const int kind = gen() % 3, len = 1 + gen() % (kind == 2 ? 6 : 90);
            const int a = gen() % (1 << bits), b = gen() % (1 << bits);
            for (int i = 0; i < len && x < image->Width(); ++i, ++x) {
                const int v = kind == 0 ? a : kind == 1 ? (i & 1 ? b : a) : gen() % (1 << bits);
                uint8_t& byte = image->Row(y)[bits == 8 ? x : x / 2];
                byte = static_cast<uint8_t>(bits == 8 ? v
                                            : (x & 1) ? (byte & 0xF0) | v
                                                      : (byte & 0x0F) | (v << 4));
            }
        }
    }
    return image;
}

} // namespace

TEST(BmpParserTest, ReadsEveryImageMagickVariantAsImageMagickDoes) {
    struct Variant {
        const char* Target;
        QStringList Options;
        bool Alpha;
        uint32_t RawPixelFormat;
        FieldBits Bits;
    };
    // clang-format off
    const QStringList pal12{"-colors", "12", "-type", "Palette"};
    const QStringList pal200{"-colors", "200", "-type", "Palette"};
    const Variant variants[] = {
        {"BMP3:v3-24.bmp", {}, false, PixelFormat24bppRGB, {}},
        {"BMP3:v3-1.bmp", {"-monochrome"}, false, PixelFormat1bppIndexed, {}},
        {"BMP3:v3-4.bmp", pal12, false, PixelFormat4bppIndexed, {}},
        {"BMP3:v3-8.bmp", pal200, false, PixelFormat8bppIndexed, {}},
        {"BMP3:v3-rle8.bmp", pal200 + QStringList{"-compress", "RLE"}, false, PixelFormat8bppIndexed, {}},
        {"BMP3:v3-32.bmp", {"-define", "bmp3:alpha=true"}, true, PixelFormat32bppARGB, {}},
        {"BMP:v5-32.bmp", {}, true, PixelFormat32bppARGB, {}},
        {"BMP:v5-555.bmp", {"-alpha", "off", "-define", "bmp:subtype=RGB555"}, false, PixelFormat16bppRGB555,
         {5, 5, 5, 0}},
        {"BMP:v5-565.bmp", {"-alpha", "off", "-define", "bmp:subtype=RGB565"}, false, PixelFormat16bppRGB555,
         {5, 6, 5, 0}},
        {"BMP:v5-1555.bmp", {"-define", "bmp:subtype=ARGB1555"}, true, PixelFormat16bppRGB555, {5, 5, 5, 1}},
        {"BMP:v5-4444.bmp", {"-define", "bmp:subtype=ARGB4444"}, true, PixelFormat16bppRGB555, {4, 4, 4, 4}},
        {"BMP2:v2-1.bmp", {"-monochrome"}, false, PixelFormat1bppIndexed, {}},
        {"BMP2:v2-4.bmp", pal12, false, PixelFormat4bppIndexed, {}},
        {"BMP2:v2-8.bmp", pal200, false, PixelFormat8bppIndexed, {}},
        {"BMP2:v2-24.bmp", {}, false, PixelFormat24bppRGB, {}},
    };
    // clang-format on
    AlphaSetting setting(true);
    for (const Variant& v : variants) {
        SCOPED_TRACE(v.Target);
        const QString source = SourcePicture(v.Alpha);
        ASSERT_FALSE(source.isEmpty()) << "ImageMagick's convert is required";
        const QString file = MagickWrite(source, v.Options, v.Target);
        ASSERT_FALSE(file.isEmpty());
        const auto image = Load(file);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->RawImageFormat, RawBmp);
        EXPECT_EQ(image->RawPixelFormat, v.RawPixelFormat);
        EXPECT_EQ(image->BmpFileSystem, QString(v.Target).startsWith("BMP2") ? 1 : 0);
        EXPECT_EQ(MagickDifferences(file, *image, v.Bits), 0);
    }
    for (const char* name : {"palette.bmp", "sample.bmp", "svg.bmp", "svg64.bmp", "svg-class.bmp"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(QFile::exists(SdlSample(name))) << "install libsdl2-image-tests";
        const auto image = Load(SdlSample(name));
        ASSERT_TRUE(image);
        EXPECT_EQ(MagickDifferences(SdlSample(name), *image), 0);
    }
}

TEST(BmpParserTest, HeaderSizeAloneDecidesWhatIsABmp) {
    BmpParser parser;
    for (uint32_t size : {12u, 40u, 56u, 108u, 124u, 52u, 64u, 0u, 41u}) {
        ASSERT_TRUE(
            WriteBytes(TempFile("size.bmp"), BmpFile{.HeaderSize = size, .Pixels = Hex("00000000")}.Bytes()));
        const bool known = size == 12 || size == 40 || size == 56 || size == 108 || size == 124;
        CImage image;
        EXPECT_EQ(parser.IsBmp(TempFile("size.bmp")), known) << size;
        EXPECT_EQ(parser.LoadPictureFromFile(TempFile("size.bmp"), image), known) << size;
    }
    ASSERT_TRUE(WriteBytes(TempFile("short.bmp"), Hex("424d000000000000000000000000")));
    EXPECT_FALSE(parser.IsBmp(TempFile("short.bmp")));
    EXPECT_FALSE(parser.IsBmp(TempFile("missing.bmp")));
}

TEST(BmpParserTest, HandBuiltFilesReadAsTheFormatHasAlwaysBeenRead) {
    struct Case {
        const char* Name;
        BmpFile File;
        QByteArray Expected; // pixels top row first; empty when the file is refused
        uint32_t Format = 0;
        bool Setting = true;
    };
    // clang-format off
    const QByteArray fieldMasks = Hex("00f80000 e0070000 1f000000 ffffffff");
    const BmpFile alpha1{.HeaderSize = 56, .Width = 2, .BitCount = 16, .Compression = 3,
                         .Masks = {0x7C00, 0x03E0, 0x001F, 0x8000}};
    const BmpFile alpha4{.HeaderSize = 56, .Width = 2, .BitCount = 16, .Compression = 3,
                         .Masks = {0x0F00, 0x00F0, 0x000F, 0xF000}, .Pixels = Hex("00f0 0010")};
    const BmpFile rle8{.Width = 4, .Height = 3, .BitCount = 8, .Compression = 1, .ClrUsed = 8,
                       .AfterHeader = GreyRamp(8)};
    const BmpFile rle4{.Width = 4, .Height = 2, .BitCount = 4, .Compression = 2, .AfterHeader = GreyRamp(16)};
    auto with = [](BmpFile f, const char* hex) {
        f.Pixels = Hex(hex);
        return f;
    };
    const Case cases[] = {
        {"three colours used: the pixels right behind 12 palette bytes",
         {.Width = 3, .BitCount = 8, .ClrUsed = 3, .AfterHeader = Hex("0000ff00 00ff0000 ff000000"),
          .Pixels = Hex("02010000"), .OffBits = 0xDEADBEEF}, Hex("020100"), PixelFormat8bppIndexed},
        {"grey ramp", {.Width = 2, .BitCount = 8, .AfterHeader = GreyRamp(256), .Pixels = Hex("0506")},
         Hex("0506"), PixelFormat8bppGray},
        {"OS/2 grey ramp", {.HeaderSize = 12, .Width = 2, .BitCount = 8, .AfterHeader = GreyRamp(256, 3),
          .Pixels = Hex("0506")}, Hex("0506"), PixelFormat8bppGray},
        // The table it declares eats the file: nothing is left for the pixels.
        {"absurd colour count", {.BitCount = 8, .ClrUsed = 0xFFFFFFFF, .Pixels = Hex("05")}, {}},
        {"32 bits, zero alpha, setting on", {.Width = 2, .BitCount = 32, .Pixels = Hex("10203000 40506000")},
         Hex("102030ff 405060ff"), PixelFormat32bppARGB},
        {"32 bits, zero alpha, setting off", {.Width = 2, .BitCount = 32, .Pixels = Hex("10203000 40506000")},
         Hex("10203000 40506000"), PixelFormat32bppARGB, false},
        {"16 bits, 1-bit alpha at bit 15 reads 128", with(alpha1, "1f80 0000"), Hex("ff000080 00000000"),
         PixelFormat32bppARGB},
        {"16 bits, no alpha bit set: opaque", with(alpha1, "1f00 0000"), Hex("ff0000ff 000000ff"),
         PixelFormat32bppARGB},
        {"16 bits, 4-bit alpha tops out at 239", alpha4, Hex("000000ef 00000010"), PixelFormat32bppARGB},
        {"16 bits, alpha setting off", alpha4, Hex("000000ff 000000ff"), PixelFormat32bppARGB, false},
        {"40-byte header with bit fields: four masks, pixels from 70", {.BitCount = 16, .Compression = 3,
          .AfterHeader = fieldMasks, .Pixels = Hex("1f00"), .OffBits = 0xDEADBEEF}, Hex("ff0000"),
         PixelFormat24bppRGB},
        {"24 bits skip the four masks too", {.BitCount = 24, .Compression = 3, .AfterHeader = fieldMasks,
          .Pixels = Hex("010203")}, Hex("010203"), PixelFormat24bppRGB},
        {"56-byte header, 24 bits from offset 71", {.HeaderSize = 56, .Pixels = Hex("ff010203"),
          .OffBits = 70}, Hex("010203"), PixelFormat24bppRGB},
        {"RLE8: a run past the row end, a delta past it, an absolute run cut short",
         with(rle8, "0a01 0000 0202 00020900 0103 0000 00070405 06"), Hex("04050600 02020000 01010101"),
         PixelFormat8bppGray},
        {"RLE8: deltas out of the picture, no end of bitmap", with(rle8, "0207 0002ff00 0203 0002 00ff 0204"),
         Hex("00000000 00000000 07070000"), PixelFormat8bppGray},
        {"RLE4: a run past the row end, an absolute run cut short", with(rle4, "0912 0000 00083456"),
         Hex("3456 1212"), PixelFormat4bppIndexed},
        {"RLE8 on 4 bits draws nothing", with({.Width = 2, .BitCount = 4, .Compression = 1}, "0212 0001"),
         Hex("00"), PixelFormat4bppIndexed},
        {"negative width", {.Width = -5}, {}},
        {"zero height", {.Height = 0}, {}},
        {"height of -2^31", {.Height = INT32_MIN, .BitCount = 8}, {}},
        {"24-bit block over 2 GiB", {.Width = 100000, .Height = 100000}, {}},
        {"16-bit file over 2 GiB as 24 bits", {.Width = 70000, .Height = 70000, .BitCount = 16}, {}},
        {"widest width, top-down", {.Width = 0x7FFFFFFF, .Height = -2}, {}},
        {"bit count 2", {.BitCount = 2}, {}},
        {"bit count 0", {.BitCount = 0}, {}},
        {"bit count 48", {.HeaderSize = 124, .BitCount = 48}, {}},
        {"OS/2 negative width", {.HeaderSize = 12, .Width = -3, .BitCount = 8}, {}},
        {"OS/2 bit count 5", {.HeaderSize = 12, .BitCount = 5}, {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Name);
        AlphaSetting setting(c.Setting);
        const auto image = LoadBytes(c.File.Bytes());
        ASSERT_EQ(image != nullptr, !c.Expected.isEmpty());
        if (!image) continue;
        EXPECT_EQ(PixelBytes(*image).toHex(' '), c.Expected.toHex(' '));
        EXPECT_EQ(image->PixelFormat, c.Format);
        EXPECT_EQ(image->RawPixelFormat,
                  c.File.HeaderSize == 12 ? image->PixelFormat : GetPixelFormatOfDepth(c.File.BitCount));
    }
    // Colours used 3: the rest of the table is black and opaque.
    const auto image = LoadBytes(cases[0].File.Bytes());
    EXPECT_EQ(image->Palette().Count, 3u);
    EXPECT_EQ(std::memcmp(image->Palette().Entry(3), "\0\0\0\xff", 4), 0);
    EXPECT_EQ(std::memcmp(image->Palette().Entry(255), "\0\0\0\xff", 4), 0);
}

TEST(BmpParserTest, WriterHeaderBytesAndResolution) {
    // The resolution travels as pels a metre, truncated both ways; a file
    // without one reads as 72 dpi.
    auto image = RandomImage(5, 3, 8, 7);
    image->Resolution = 96;
    const QString path = TempFile("hdr.bmp");
    ASSERT_TRUE(Save(path, *image, 0, false, false));
    QByteArray b = ReadBytes(path);
    EXPECT_EQ(b.mid(38, 8), Hex("c20e0000 c20e0000")); // 3778
    EXPECT_EQ(Load(path)->Resolution, static_cast<float>(3778 / 39.35833333));
    EXPECT_EQ(LoadBytes(BmpFile{.Pixels = Hex("00000000")}.Bytes())->Resolution, 72.0f);

    image = RandomImage(5, 3, 8, 1);
    ASSERT_TRUE(Save(path, *image, 0, true, false));
    b = ReadBytes(path);
    EXPECT_EQ(b.left(54).toHex(' '),
              Hex("424d 00000000 00000000 36040000 28000000 05000000 fdffffff 0100 0800 00000000 "
                  "00000000 120b0000 120b0000 00010000 00000000")
                  .toHex(' ')); // 72 dpi: 2833.8 pels a metre
    EXPECT_EQ(b.mid(54, 1024),
              QByteArray(reinterpret_cast<const char*>(image->Palette().Entries.data()), 1024));
    EXPECT_EQ(b.size(), 54 + 1024 + image->Stride() * 3);

    // OS/2: the whole table the depth addresses, whatever Count says, and
    // none of the Windows options.
    auto image4 = RandomImage(5, 3, 4, 4);
    PaletteData palette = image4->Palette();
    palette.Count = 3;
    image4->SetPaletteBytes(palette);
    ASSERT_TRUE(Save(path, *image4, 1, true, true, 5));
    b = ReadBytes(path);
    EXPECT_EQ(b.left(26), Hex("424d 56000000 00000000 4a000000 0c000000 0500 0300 0100 0400"));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(std::memcmp(b.constData() + 26 + 3 * i, palette.Entry(i), 3), 0);
    EXPECT_EQ(std::memcmp(b.constData() + 74, image4->Row(2), 4), 0);
}

TEST(BmpParserTest, EveryWriterRoundTripsAndImageMagickAgrees) {
    AlphaSetting setting(true);
    const QString path = TempFile("trip.bmp");
    for (int bits : {1, 4, 8, 16, 24, 32}) {
        for (int fileSystem : {0, 1}) {
            for (bool flip : {false, true}) {
                SCOPED_TRACE(
                    QString("bits %1 OS/2 %2 flip %3").arg(bits).arg(fileSystem).arg(flip).toStdString());
                auto image = RandomImage(37, 11, bits, bits * 4 + fileSystem * 2 + flip);
                ASSERT_TRUE(Save(path, *image, fileSystem, flip, false));
                const auto back = Load(path);
                ASSERT_TRUE(back);
                EXPECT_EQ(back->BmpFileSystem, fileSystem);
                EXPECT_EQ(back->BmpFlipRow, flip && !fileSystem);
                if (bits == 16 && !fileSystem) continue; // read as 24 bits; see the next test
                EXPECT_EQ(back->PixelFormat, image->PixelFormat);
                ASSERT_EQ(back->BlockSize(), image->BlockSize());
                EXPECT_EQ(std::memcmp(back->Pointer(), image->Pointer(), image->BlockSize()), 0);
                if (bits <= 8) {
                    EXPECT_EQ(back->Palette().Count, image->Palette().Count);
                    EXPECT_EQ(std::memcmp(back->Palette().Entry(0), image->Palette().Entry(0),
                                          4 * image->Palette().Count),
                              0);
                }
                if (bits != 16 && (!fileSystem || bits != 32)) {
                    EXPECT_EQ(MagickDifferences(path, *image), 0);
                }
            }
        }
    }
}

TEST(BmpParserTest, SixteenBitLayoutsReadBackThroughTheirMasks) {
    const FieldBits layouts[7] = {{5, 5, 5, 0}, {5, 5, 5, 1}, {5, 6, 5, 0}, {5, 5, 6, 0},
                                  {6, 5, 5, 0}, {4, 4, 4, 0}, {4, 4, 4, 4}};
    AlphaSetting setting(true);
    auto image = RandomImage(37, 11, 16, 99);
    const QString path = TempFile("sixteen.bmp");
    for (int format = 0; format < 7; ++format) {
        for (bool flip : {false, true}) {
            SCOPED_TRACE(format * 2 + flip);
            ASSERT_TRUE(Save(path, *image, 0, flip, false, format));
            const auto back = Load(path);
            ASSERT_TRUE(back);
            EXPECT_EQ(back->PixelFormat, format ? PixelFormat32bppARGB : PixelFormat24bppRGB);
            EXPECT_EQ(back->RawPixelFormat, PixelFormat16bppRGB555);
            EXPECT_EQ(MagickDifferences(path, *back, layouts[format]), 0);
        }
    }
}

TEST(BmpParserTest, RleRoundTripsOnFourAndEightBits) {
    const QString path = TempFile("rle.bmp");
    for (int bits : {4, 8}) {
        for (unsigned seed = 1; seed <= 4; ++seed) {
            SCOPED_TRACE(bits * 10 + seed);
            auto image = RunnyImage(bits, seed);
            image->Resolution = 300;
            ASSERT_TRUE(Save(path, *image, 0, seed & 1, true));
            // The compressed picture's own header: upright, no resolution, no file size.
            const QByteArray b = ReadBytes(path);
            const uint32_t offset = 54 + 4 * image->Palette().Count;
            EXPECT_EQ(U32At(b, 2), 0u);
            EXPECT_EQ(U32At(b, 10), offset);
            EXPECT_EQ(b.mid(14, 20), Hex(bits == 8 ? "28000000 3d000000 13000000 0100 0800 01000000"
                                                   : "28000000 3d000000 13000000 0100 0400 02000000"));
            EXPECT_EQ(U32At(b, 34), static_cast<uint32_t>(b.size()) - offset);
            EXPECT_EQ(b.mid(38, 8), QByteArray(8, '\0'));
            EXPECT_LT(b.size() - offset, static_cast<qsizetype>(image->BlockSize()));
            const auto back = Load(path);
            ASSERT_TRUE(back);
            EXPECT_TRUE(back->RleCompress);
            EXPECT_EQ(back->Resolution, 72.0f);
            EXPECT_EQ(CountDifferences(ToRgba(*back), ToRgba(*image)), 0);
            EXPECT_EQ(MagickDifferences(path, *image), 0);
        }
    }
}

TEST(BmpParserTest, HandWrittenRleStreamsDecodeAsImageMagickDoes) {
    // Every escape: runs, absolute runs with and without padding, end of
    // line, delta (whose skipped pixels stay index 0), end of bitmap.
    const QByteArray palette = Hex("00000000 ff000000 00ff0000 0000ff00 ffff0000 00ffff00");
    BmpFile rle8{.Width = 7,
                 .Height = 4,
                 .BitCount = 8,
                 .Compression = 1,
                 .ClrUsed = 6,
                 .AfterHeader = palette,
                 .Pixels =
                     Hex("0301 0003020304 00 0105 0000 0002 0201 0403 0000 0204 000501020304 0500 0001")};
    BmpFile rle4{.Width = 7,
                 .Height = 3,
                 .BitCount = 4,
                 .Compression = 2,
                 .ClrUsed = 6,
                 .AfterHeader = palette,
                 .Pixels = Hex("0512 0234 0000 0003 5010 0004 1234 0000 0002 0300 0454 0001")};
    for (BmpFile* f : {&rle8, &rle4}) {
        SCOPED_TRACE(f->BitCount);
        ASSERT_TRUE(WriteBytes(TempFile("hand.bmp"), f->Bytes()));
        const auto image = Load(TempFile("hand.bmp"));
        ASSERT_TRUE(image);
        EXPECT_EQ(MagickDifferences(TempFile("hand.bmp"), *image), 0);
        // A negative height places the same stream mirrored top to bottom.
        f->Height = -f->Height;
        const auto mirrored = LoadBytes(f->Bytes());
        ASSERT_TRUE(mirrored);
        EXPECT_EQ(ToRgba(*mirrored), ToRgba(*image).mirrored(false, true));
    }
}

TEST(BmpParserTest, TruncatedFilesLoadWhatTheyHold) {
    const QString source = SourcePicture(true);
    ASSERT_FALSE(source.isEmpty());
    const QStringList files{
        SdlSample("palette.bmp"), SdlSample("svg.bmp"),
        MagickWrite(source, {"-colors", "100", "-type", "Palette", "-compress", "RLE"}, "BMP3:cut-rle.bmp"),
        MagickWrite(source, {"-define", "bmp:subtype=ARGB1555"}, "BMP:cut-16.bmp"),
        MagickWrite(source, {"-colors", "12", "-type", "Palette"}, "BMP2:cut-os2.bmp")};
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const QByteArray whole = ReadBytes(file);
        const auto full = Load(file);
        ASSERT_TRUE(full);
        // Only no crash for 32 bits: a cut picture may have lost all its alpha and turn opaque.
        const bool comparable = full->PixelFormat != PixelFormat32bppARGB;
        for (qsizetype n = 0; n < whole.size(); ++n) {
            const auto cut = LoadBytes(whole.left(n));
            if (!cut || !comparable || cut->BlockSize() != full->BlockSize()) continue;
            for (size_t i = 0; i < full->BlockSize(); ++i) {
                if (cut->Pointer()[i] != 0 && cut->Pointer()[i] != full->Pointer()[i]) {
                    ADD_FAILURE() << "cut at " << n << ": byte " << i << " is neither missing nor the file's";
                    break;
                }
            }
        }
    }
}

TEST(BmpParserTest, SavingKeepsAKnownFamilyAndRefusesBadBlocks) {
    auto image = RandomImage(4, 4, 24, 5);
    image->RawImageFormat = RawPng;
    ASSERT_TRUE(Save(TempFile("family.bmp"), *image, 1, false, false));
    EXPECT_EQ(image->RawImageFormat, RawPng);
    CImage empty;
    EXPECT_FALSE(Save(TempFile("empty.bmp"), empty, 0, false, false));
    // A format code whose rows would run past the block's is refused.
    auto mono = RandomImage(40, 4, 1, 5);
    mono->PixelFormat = PixelFormat8bppIndexed;
    EXPECT_FALSE(Save(TempFile("relabelled.bmp"), *mono, 0, false, true));
    EXPECT_FALSE(Save(TempFile("relabelled.bmp"), *mono, 1, false, false));
}

TEST(BmpParserTest, ThumbnailFitsTheBoxAndReportsTheFileDepth) {
    // 300 x 150 becomes 128 x 64, centred.
    auto image = RandomImage(300, 150, 8, 6);
    ASSERT_TRUE(Save(TempFile("thumb.bmp"), *image, 0, false, true));
    EXPECT_EQ(ThumbOf<BmpParser>(TempFile("thumb.bmp")), "300x150 8 rows 32-95");
    EXPECT_EQ(ThumbOf<BmpParser>(TempFile("missing.bmp")), "");
}
