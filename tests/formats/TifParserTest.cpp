#include "formats/TifParser.h"

#include "formats/CodecTestSupport.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

std::unique_ptr<CImage> Load(const QString& file, int32_t frame = 0) {
    return LoadWith<TifParser>(file, frame);
}

// ImageMagick's built-in rose picture, with Args, written as a TIFF.
QString Rose(const QString& name, const QStringList& args) {
    return Magick(QStringList{"rose:", "-depth", "8"} + args + QStringList{TempFile(name)});
}

struct LayoutCase {
    const char* Name;
    QStringList Args;
    QString Layout;    // photometric, bits a sample and compression as identify tells them
    uint32_t Expected; // 0: refused
    int Tolerance;
};

} // namespace

// The layouts ImageMagick writes open in the decoder formats and show what
// ImageMagick shows. A 16-bit value (a sample, a colour map entry) comes to
// 8 bits by rounding here, which may differ by a level from ImageMagick, and
// premultiplied alpha is divided out again.
TEST(TifParserFormats, LayoutsFromImageMagick) {
    const QStringList alpha = {"-alpha", "set", "-channel", "A", "-fx", "0.3+0.6*(i%5)/4", "+channel"};
    const QStringList grey = {"-colorspace", "gray"}, mono = {"-monochrome", "-depth", "1"};
    // clang-format off
    const std::vector<LayoutCase> cases = {
        {"bilevel", mono, "min-is-black 1 None", PixelFormat1bppIndexed, 0},
        {"fax4", mono + QStringList{"-compress", "Group4"}, "min-is-white 1 Group4", PixelFormat1bppIndexed,
         0},
        {"grey4", grey + QStringList{"-depth", "4"}, "min-is-black 4 None", PixelFormat4bppIndexed, 0},
        {"grey8", grey, "min-is-black 8 None", PixelFormat8bppGray, 0},
        {"grey16", grey + QStringList{"-depth", "16"}, "min-is-black 16 None", PixelFormat24bppRGB, 1},
        {"greyalpha", grey + alpha, "min-is-black 8 None", PixelFormat32bppARGB, 0},
        {"palette4", {"-colors", "16", "-type", "Palette", "-depth", "4"}, "palette 4 None",
         PixelFormat4bppIndexed, 1},
        {"palette8", {"-colors", "200", "-type", "Palette"}, "palette 8 None", PixelFormat8bppIndexed, 1},
        {"rgb", {"-type", "TrueColor"}, "RGB 8 None", PixelFormat24bppRGB, 0},
        {"rgb-lzw", {"-compress", "LZW"}, "RGB 8 LZW", PixelFormat24bppRGB, 0},
        {"rgb-zip", {"-compress", "Zip"}, "RGB 8 Zip", PixelFormat24bppRGB, 0},
        {"rgb-jpeg", {"-compress", "JPEG", "-quality", "95"}, "RGB 8 JPEG", PixelFormat24bppRGB, 0},
        {"rgb-tiled", {"-define", "tiff:tile-geometry=16x16"}, "RGB 8 None", PixelFormat24bppRGB, 0},
        {"rgb-planar", {"-interlace", "plane"}, "RGB 8 None", PixelFormat24bppRGB, 0},
        {"rgba", alpha + QStringList{"-define", "tiff:alpha=unassociated"}, "RGB 8 None", PixelFormat32bppARGB,
         0},
        {"rgba-premultiplied", alpha + QStringList{"-define", "tiff:alpha=associated"}, "RGB 8 None",
         PixelFormat32bppARGB, 3},
        {"cmyk", {"-colorspace", "CMYK"}, "separated 8 None", PixelFormat24bppRGB, 1},
        {"rgb16", {"-depth", "16"}, "RGB 16 None", 0, 0},
        {"rgba16", alpha + QStringList{"-depth", "16"}, "RGB 16 None", 0, 0},
    };
    // clang-format on
    for (const LayoutCase& c : cases) {
        SCOPED_TRACE(c.Name);
        const QString file = Rose(QString("tif-%1.tif").arg(c.Name), c.Args);
        ASSERT_FALSE(file.isEmpty());
        ASSERT_EQ(Identify("%[tiff:photometric] %z %C", file), c.Layout);
        if (c.Expected == 0) {
            EXPECT_TRUE(Refuses<TifParser>(file, 0));
            continue;
        }
        auto image = Load(file);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->PixelFormat, c.Expected);
        EXPECT_EQ(image->RawPixelFormat, c.Expected);
        EXPECT_EQ(image->RawImageFormat, RawTiff);
        // One bit keeps white at entry 0 and black at entry 1 whatever the
        // file's photometric says.
        if (c.Expected == PixelFormat1bppIndexed) {
            EXPECT_EQ(image->Palette().Count, 2u);
            EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(image->Palette().Entry(0)), 8),
                      QByteArray("\xFF\xFF\xFF\xFF\0\0\0\xFF", 8));
        }
        // JPEG in TIFF: two decoders' inverse DCTs. CMYK is compared with
        // ImageMagick's own conversion to RGB.
        const int tolerance = QString(c.Name) == "rgb-jpeg" ? 3 : c.Tolerance;
        const QString reference =
            c.Layout.startsWith("separated")
                ? Magick({file, "-colorspace", "sRGB", TempFile(QString("tif-%1-as-rgb.png").arg(c.Name))})
                : file;
        EXPECT_EQ(DifferencesFromMagick(reference, *image, tolerance), 0);
    }
}

TEST(TifParserFormats, ShippedSampleAndResolution) {
    const QString sample = SdlSample("sample.tif");
    ASSERT_TRUE(QFileInfo::exists(sample)) << "libsdl2-image-tests is not installed";
    auto image = Load(sample);
    ASSERT_TRUE(image);
    EXPECT_EQ(DifferencesFromMagick(sample, *image), 0);

    const QString inches = Rose("tif-150dpi.tif", {"-units", "PixelsPerInch", "-density", "150"});
    const QString centimetres = Rose("tif-40dpcm.tif", {"-units", "PixelsPerCentimeter", "-density", "40"});
    ASSERT_FALSE(inches.isEmpty() || centimetres.isEmpty());
    EXPECT_NEAR(Load(inches)->Resolution, 150, 1e-3);
    EXPECT_NEAR(Load(centimetres)->Resolution, 101.6, 1e-3);
}

// Pages are frames; a page number outside the file opens the last page and
// the caller is told so.
TEST(TifParserFrames, PagesAndOutOfRange) {
    const QString pages = Magick({"rose:", "(", "rose:", "-flip", ")", "(", "rose:", "-colorspace", "gray",
                                  ")", "-depth", "8", TempFile("tif-pages.tif")});
    ASSERT_FALSE(pages.isEmpty());
    TifParser parser;
    EXPECT_EQ(parser.GetFrameCount(pages), 3);
    for (int k = 0; k < 3; ++k) {
        SCOPED_TRACE(k);
        auto image = Load(pages, k);
        ASSERT_TRUE(image);
        const QString page =
            Magick({QString("%1[%2]").arg(pages).arg(k), TempFile(QString("tif-page-%1.png").arg(k))});
        EXPECT_EQ(DifferencesFromMagick(page, *image), 0);
    }
    EXPECT_EQ(Load(pages, 2)->PixelFormat, PixelFormat8bppGray);
    for (int32_t outside : {-3, 3, 99}) {
        int32_t frame = outside;
        CImage image;
        ASSERT_TRUE(parser.LoadPictureFromFile(pages, image, frame));
        EXPECT_EQ(frame, 2);
        EXPECT_EQ(image.PixelFormat, PixelFormat8bppGray);
    }
}

// Only little-endian files pass the signature: a big-endian TIFF is refused
// by every parser of the chain.
TEST(TifParserSignature, BigEndianIsRefused) {
    const QString big = Rose("tif-big-endian.tif", {"-define", "tiff:endian=msb"});
    ASSERT_FALSE(big.isEmpty());
    ASSERT_TRUE(ReadBytes(big).startsWith(QByteArray("MM\0*", 4)));
    TifParser parser;
    EXPECT_FALSE(parser.IsTif(big));
    EXPECT_EQ(parser.GetFrameCount(big), 0);
    EXPECT_TRUE(Refuses<void>(big));

    // "MM" with the magic written little-endian and a first offset of 8 passes.
    const QString little = Rose("tif-little.tif", {});
    ASSERT_FALSE(little.isEmpty());
    EXPECT_TRUE(parser.IsTif(little));
    // The first directory at 7: below the header's end.
    ASSERT_TRUE(WriteBytes(TempFile("tif-offset7.tif"), Patched(ReadBytes(little), 4, Le32(7))));
    EXPECT_FALSE(parser.IsTif(TempFile("tif-offset7.tif")));
}

// Every depth the writer produces, with every compression the encoder knows
// for it, reads the same in ImageMagick and back here.
TEST(TifParserWriter, DepthsAndCompressions) {
    struct Case {
        const char* Name;
        int Bits;
        bool Grey;
        uint32_t Expected;
        QString Photometric;
    };
    struct Scheme {
        int32_t Code;
        QString Name;
    };
    const std::vector<Scheme> general = {{0, "LZW"}, {2, "LZW"}, {6, "None"}};
    const std::vector<Scheme> bilevel = {{0, "LZW"}, {3, "Fax"}, {4, "Group4"}, {5, "RLE"}, {6, "None"}};
    for (const Case& c : {Case{"1", 1, false, PixelFormat1bppIndexed, "min-is-white"},
                          Case{"4", 4, false, PixelFormat4bppIndexed, "palette"},
                          Case{"8", 8, false, PixelFormat8bppIndexed, "palette"},
                          Case{"grey", 8, true, PixelFormat8bppGray, "min-is-black"},
                          Case{"24", 24, false, PixelFormat24bppRGB, "RGB"},
                          Case{"32", 32, false, PixelFormat32bppARGB, "RGB"}}) {
        auto image = RandomPicture(29, 23, c.Bits, 13, c.Grey);
        if (c.Bits == 1) {
            // The system's own two-colour palette: white, black.
            PaletteData p;
            p.Count = 2;
            p.SetEntry(0, 255, 255, 255);
            p.SetEntry(1, 0, 0, 0);
            image->SetPaletteData(p);
        }
        image->Resolution = 120;
        for (const Scheme& s : c.Bits == 1 ? bilevel : general) {
            SCOPED_TRACE(std::string(c.Name) + " " + s.Name.toStdString());
            const QString out = TempFile(QString("tif-write-%1-%2.tif").arg(c.Name).arg(s.Code));
            image->RawImageFormat = 0;
            ASSERT_TRUE(TifParser().SavePictureToFile(out, *image, s.Code));
            EXPECT_EQ(image->RawImageFormat, RawTiff);
            EXPECT_EQ(Identify("%[tiff:photometric] %C", out), c.Photometric + " " + s.Name);
            EXPECT_EQ(CountDifferences(ToRgba(*image), DecodeWithMagick(out)), 0);
            auto back = Load(out);
            ASSERT_TRUE(back);
            EXPECT_EQ(back->PixelFormat, c.Expected);
            EXPECT_EQ(CountDifferences(ToRgba(*back), ToRgba(*image)), 0);
            EXPECT_NEAR(back->Resolution, 120, 1e-3);
        }
    }
}

// A compression the encoder does not know, or a fax scheme for more than one
// bit, fails and leaves the target alone.
TEST(TifParserWriter, UnusableCompressionWritesNothing) {
    auto colour = RandomImage(10, 10, 24, 1);
    const QString out = TempFile("tif-refused.tif");
    ASSERT_TRUE(WriteBytes(out, "keep me"));
    TifParser parser;
    for (int32_t code : {1, 3, 4, 5, 7, -1})
        EXPECT_FALSE(parser.SavePictureToFile(out, *colour, code)) << code;
    EXPECT_EQ(ReadBytes(out), QByteArray("keep me"));
}

TEST(TifParserMalformed, TruncationAndBrokenDirectories) {
    const QString good = Rose("tif-good.tif", {"-compress", "LZW"});
    ASSERT_FALSE(good.isEmpty());
    const QByteArray bytes = ReadBytes(good);
    TifParser parser;
    const QString path = TempFile("tif-broken.tif");
    // ImageMagick writes the directory behind the pixels: every cut loses it.
    for (qsizetype cut = 8; cut < bytes.size(); cut += bytes.size() / 23) {
        SCOPED_TRACE(cut);
        ASSERT_TRUE(WriteBytes(path, bytes.left(cut)));
        EXPECT_TRUE(Refuses<TifParser>(path, 0));
    }
    // A first directory beyond the end of the file.
    ASSERT_TRUE(WriteBytes(path, Patched(bytes, 4, "\x7F\x7F\x7F")));
    EXPECT_TRUE(parser.IsTif(path));
    EXPECT_TRUE(Refuses<TifParser>(path, 0));
    EXPECT_EQ(parser.GetFrameCount(path), 0);
}

// The open dialog's preview: size and depth of the file, the picture drawn
// into the 128 x 128 box, centred: 256 x 168 fits as 128 x 84.
TEST(TifParserFormats, ThumbnailAndInfo) {
    const QString file = Rose("tif-thumb.tif", {"-resize", "256x", "-monochrome", "-depth", "1"});
    ASSERT_FALSE(file.isEmpty());
    EXPECT_EQ(ThumbOf<TifParser>(file), "256x168 1 rows 22-105");
    EXPECT_EQ(ThumbOf<TifParser>(TempFile("no-such-file.tif")), "");
}
