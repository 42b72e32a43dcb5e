#include "formats/PngParser.h"

#include "formats/CodecTestSupport.h"

#include <QImage>
#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

// The colour type and depth that a PNG file's IHDR holds.
struct Ihdr {
    int Depth = -1, ColourType = -1;
    bool Interlaced = false;
};
Ihdr ReadIhdr(const QString& file) {
    const QByteArray b = ReadBytes(file);
    if (b.size() < 29) return {};
    return {static_cast<uint8_t>(b[24]), static_cast<uint8_t>(b[25]), b[28] != 0};
}

// A colourful picture with a swirl, so that every palette entry and grey
// level is used.
QString BasePicture() {
    static const QString path =
        Magick({"-size", "37x29", "gradient:red-blue", "-swirl", "90", "-fill", "yellow", "-draw",
                "circle 25,14 30,18", "-depth", "8", TempFile("png-base.png")});
    return path;
}

const auto Load = &LoadWith<PngParser>;

struct ColourTypeCase {
    const char* Name;
    QStringList Args; // between the base picture and the output
    int Depth, ColourType;
    bool Interlaced;
    uint32_t Expected; // 0: refused
};

} // namespace

// Every colour type and bit depth ImageMagick writes, interlaced or not, opens
// as the decoder formats say and shows the pixels ImageMagick shows; the 16-bit
// colour files are refused, 16-bit grey opens as RGB 24.
TEST(PngParserFormats, EveryColourTypeAndDepthFromImageMagick) {
    const QString base = BasePicture();
    ASSERT_FALSE(base.isEmpty());
    const QStringList alpha = {"-alpha", "set", "-channel", "A", "-fx", "0.3+0.6*(i%5)/4", "+channel"};
    auto typed = [](int type, int depth) {
        return QStringList{"-define", QString("png:color-type=%1").arg(type), "-define",
                           QString("png:bit-depth=%1").arg(depth)};
    };
    const QStringList grey = {"-colorspace", "Gray"};
    const QStringList interlaced = {"-interlace", "PNG"};
    auto palette = [](int colours, int depth) {
        return QStringList{"-colors", QString::number(colours), "+dither", "-define",
                           QString("png:bit-depth=%1").arg(depth)};
    };
    // clang-format off
    const std::vector<ColourTypeCase> cases = {
        {"grey1", grey + typed(0, 1), 1, 0, false, PixelFormat1bppIndexed},
        {"grey2", grey + typed(0, 2), 2, 0, false, PixelFormat4bppIndexed},
        {"grey4", grey + typed(0, 4), 4, 0, false, PixelFormat4bppIndexed},
        {"grey8", grey + typed(0, 8), 8, 0, false, PixelFormat8bppGray},
        {"grey16", grey + typed(0, 16), 16, 0, false, PixelFormat24bppRGB},
        {"grey2i", grey + typed(0, 2) + interlaced, 2, 0, true, PixelFormat4bppIndexed},
        {"greyalpha8", alpha + grey + typed(4, 8), 8, 4, false, PixelFormat32bppARGB},
        {"greyalpha16", alpha + grey + typed(4, 16), 16, 4, false, 0},
        {"rgb8", typed(2, 8), 8, 2, false, PixelFormat24bppRGB},
        {"rgb8i", typed(2, 8) + interlaced, 8, 2, true, PixelFormat24bppRGB},
        {"rgb16", typed(2, 16), 16, 2, false, 0},
        {"rgba8", alpha + typed(6, 8), 8, 6, false, PixelFormat32bppARGB},
        {"rgba8i", alpha + typed(6, 8) + interlaced, 8, 6, true, PixelFormat32bppARGB},
        {"rgba16", alpha + typed(6, 16), 16, 6, false, 0},
        {"palette1", palette(2, 1), 1, 3, false, PixelFormat1bppIndexed},
        {"palette2", palette(4, 2), 2, 3, false, PixelFormat4bppIndexed},
        {"palette4", palette(16, 4), 4, 3, false, PixelFormat4bppIndexed},
        {"palette4i", palette(16, 4) + interlaced, 4, 3, true, PixelFormat4bppIndexed},
        {"palette8", {"-colors", "200"}, 8, 3, false, PixelFormat8bppIndexed},
    };
    // clang-format on
    for (const ColourTypeCase& c : cases) {
        SCOPED_TRACE(c.Name);
        const bool palette = c.ColourType == 3;
        const QString out = TempFile(QString("png-%1.png").arg(c.Name));
        const QString file = Magick(QStringList{base} + c.Args + QStringList{(palette ? "PNG8:" : "") + out});
        ASSERT_FALSE(file.isEmpty());
        const Ihdr ihdr = ReadIhdr(out);
        ASSERT_EQ(ihdr.Depth, c.Depth);
        ASSERT_EQ(ihdr.ColourType, c.ColourType);
        ASSERT_EQ(ihdr.Interlaced, c.Interlaced);

        if (c.Expected == 0) {
            EXPECT_TRUE(Refuses<PngParser>(out));
            continue;
        }
        auto image = Load(out);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->PixelFormat, c.Expected);
        EXPECT_EQ(image->RawPixelFormat, c.Expected);
        EXPECT_EQ(image->RawImageFormat, RawPng);
        // Sixteen bits come down to eight by rounding here; ImageMagick's own
        // scaling lands one level lower on about half the values.
        const int tolerance = c.Depth == 16 ? 1 : 0;
        EXPECT_EQ(CountDifferences(ToRgba(*image, true), DecodeWithMagick(out), tolerance), 0);
    }
}

// A palette whose entries carry alpha (tRNS) keeps it per entry; an RGB file
// with a transparent colour opens as RGBA 32.
TEST(PngParserFormats, TransparencyChunk) {
    const QString base = BasePicture();
    ASSERT_FALSE(base.isEmpty());
    const QStringList corner = {"-alpha", "set", "-channel", "A", "-fx", "i<10&&j<10?0:1", "+channel"};
    const QString palettePath = Magick(QStringList{base, "-colors", "50"} + corner +
                                       QStringList{"PNG8:" + TempFile("png-trns-palette.png")});
    const QString rgbPath =
        Magick(QStringList{base} + corner + QStringList{"PNG24:" + TempFile("png-trns-rgb.png")});
    ASSERT_FALSE(palettePath.isEmpty());
    ASSERT_FALSE(rgbPath.isEmpty());
    ASSERT_TRUE(ReadBytes(palettePath).contains("tRNS"));
    ASSERT_TRUE(ReadBytes(rgbPath).contains("tRNS"));
    ASSERT_EQ(ReadIhdr(rgbPath).ColourType, 2);

    auto indexed = Load(palettePath);
    ASSERT_TRUE(indexed);
    EXPECT_EQ(indexed->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(indexed->Palette().Entry(indexed->Row(0)[0])[3], 0);
    EXPECT_EQ(CountDifferences(ToRgba(*indexed, true), DecodeWithMagick(palettePath)), 0);

    auto rgba = Load(rgbPath);
    ASSERT_TRUE(rgba);
    EXPECT_EQ(rgba->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(rgba->Row(0)[3], 0);
    EXPECT_EQ(CountDifferences(ToRgba(*rgba), DecodeWithMagick(rgbPath)), 0);
}

TEST(PngParserFormats, ShippedSampleWithoutResolution) {
    const QString sample = SdlSample("sample.png");
    ASSERT_TRUE(QFileInfo::exists(sample)) << "libsdl2-image-tests is not installed";
    auto image = Load(sample);
    ASSERT_TRUE(image);
    EXPECT_EQ(DifferencesFromMagick(sample, *image), 0);
    // No pHYs chunk: the decoder's screen resolution.
    EXPECT_FLOAT_EQ(image->Resolution, 96.0f);
}

// Every pixel format the save dialog offers for PNG is written so that
// ImageMagick reads the same pixels, and reads back into the same format.
TEST(PngParserWriter, EveryOfferedFormatRoundTrips) {
    struct Case {
        const char* Name;
        int Bits;
        uint32_t Expected;
    };
    for (const Case& c : {Case{"1", 1, PixelFormat1bppIndexed}, Case{"4", 4, PixelFormat4bppIndexed},
                          Case{"8", 8, PixelFormat8bppIndexed}, Case{"grey", 8, PixelFormat8bppGray},
                          Case{"24", 24, PixelFormat24bppRGB}, Case{"32", 32, PixelFormat32bppARGB}}) {
        SCOPED_TRACE(c.Name);
        auto image = RandomPicture(33, 19, c.Bits, 7, c.Expected == PixelFormat8bppGray);
        if (c.Expected == PixelFormat8bppIndexed) {
            // Some entries translucent: they travel in a tRNS chunk.
            PaletteData p = image->Palette();
            p.Entry(3)[3] = 0;
            p.Entry(200)[3] = 128;
            image->SetPaletteData(p);
        }
        image->Resolution = 150;
        image->RawImageFormat = 0;
        const QString out = TempFile(QString("png-write-%1.png").arg(c.Name));
        ASSERT_TRUE(PngParser().SavePictureToFile(out, *image));
        EXPECT_EQ(image->RawImageFormat, RawPng);
        EXPECT_EQ(CountDifferences(ToRgba(*image, true), DecodeWithMagick(out)), 0);

        auto back = Load(out);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->PixelFormat, c.Expected);
        EXPECT_EQ(CountDifferences(ToRgba(*back, true), ToRgba(*image, true)), 0);
        // pHYs counts whole pixels per metre: 5906 of them.
        EXPECT_NEAR(back->Resolution, 5906 * 0.0254, 1e-3);
    }
}

TEST(PngParserWriter, SixteenBitPixelsAreWidenedToRgb) {
    auto image = RandomImage(20, 10, 16, 5);
    const QString out = TempFile("png-write-555.png");
    ASSERT_TRUE(PngParser().SavePictureToFile(out, *image));
    EXPECT_EQ(ReadIhdr(out).ColourType, 2);
    // Five bits widen by repeating their top bits; the test's own reference
    // scales by 255 / 31, which differs by at most one.
    EXPECT_EQ(CountDifferences(ToRgba(*image), DecodeWithMagick(out), 1), 0);
    CImage empty;
    EXPECT_FALSE(PngParser().SavePictureToFile(TempFile("png-write-empty.png"), empty));
    EXPECT_FALSE(QFileInfo::exists(TempFile("png-write-empty.png")));
}

// Signature, truncation and damage: nothing crashes, nothing is left in the
// image, and only the 8-byte signature decides whether the file is a PNG.
TEST(PngParserMalformed, SignatureTruncationAndDamage) {
    const QString good = Magick({BasePicture(), "-define", "png:color-type=2", TempFile("png-good.png")});
    ASSERT_FALSE(good.isEmpty());
    const QByteArray bytes = ReadBytes(good);
    PngParser parser;
    EXPECT_TRUE(parser.IsPng(good));

    ASSERT_TRUE(WriteBytes(TempFile("png-wrong.png"), Patched(bytes, 7, "x")));
    EXPECT_FALSE(parser.IsPng(TempFile("png-wrong.png")));
    EXPECT_FALSE(parser.IsPng(TempFile("no-such-file.png")));

    // Whatever stands behind the image data is never needed: cuts up to the
    // end of the last IDAT chunk must fail.
    const qsizetype lastIdat = bytes.lastIndexOf("IDAT");
    ASSERT_GT(lastIdat, 0);
    const qsizetype dataEnd =
        lastIdat + 8 +
        static_cast<qsizetype>(
            ByteReader(reinterpret_cast<const uint8_t*>(bytes.constData()) + lastIdat - 4, 4).U32BE());
    for (qsizetype cut = 8; cut < dataEnd; cut += 7) {
        SCOPED_TRACE(cut);
        const QString path = TempFile("png-cut.png");
        ASSERT_TRUE(WriteBytes(path, bytes.left(cut)));
        EXPECT_TRUE(parser.IsPng(path));
        EXPECT_TRUE(Refuses<PngParser>(path));
    }

    // A flipped byte in the compressed data fails its CRC.
    const qsizetype idat = bytes.indexOf("IDAT");
    ASSERT_GT(idat, 0);
    EXPECT_TRUE(Refuses<PngParser>(Patched(bytes, idat + 10, QByteArray(1, bytes[idat + 10] ^ 0x55))));
}
