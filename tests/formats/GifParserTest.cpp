#include "formats/GifParser.h"

#include "formats/CodecTestSupport.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

std::unique_ptr<CImage> Load(const QString& file, int32_t frame = 0) {
    return LoadWith<GifParser>(file, frame);
}

// Four frames sharing one set of colours: a full first frame, a smaller
// opaque one kept in place, a partly transparent one that is disposed to the
// background, and a full last frame.
QString Animation() {
    static const QString file = [] {
        const QString f0 =
            Magick({"-size", "40x30", "gradient:yellow-purple", "-colors", "16", TempFile("gif-f0.png")});
        const QString f1 = Magick({"-size", "16x12", "xc:red", TempFile("gif-f1.png")});
        const QString f2 = Magick({"-size", "10x10", "xc:none", "-fill", "blue", "-draw", "circle 5,5 5,1",
                                   TempFile("gif-f2.png")});
        const QString palette = Magick({f0, f1, f2, "+append", "-colors", "32", TempFile("gif-palette.png")});
        if (f0.isEmpty() || f1.isEmpty() || f2.isEmpty() || palette.isEmpty()) return QString();
        return Magick({"-dispose", "none", f0, "-page", "+4+5", f1, "-dispose", "background", "-page",
                       "+20+10", f2, "-page", "+0+0", f0, "-remap", palette, TempFile("gif-animation.gif")});
    }();
    return file;
}

} // namespace

TEST(GifParserDecoding, ShippedSample) {
    const QString sample = SdlSample("palette.gif");
    ASSERT_TRUE(QFileInfo::exists(sample)) << "libsdl2-image-tests is not installed";
    auto image = Load(sample);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(image->RawPixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(image->RawImageFormat, RawGif);
    EXPECT_EQ(DifferencesFromMagick(sample, *image), 0);
    EXPECT_EQ(GifParser().GetFrameCount(sample), 1);
}

// Each frame of an animation is what the animation shows at that moment, as
// ImageMagick's coalescing composes it; a frame outside the file is the last.
TEST(GifParserFrames, FramesAreComposedAndOutOfRangeGivesTheLast) {
    const QString animation = Animation();
    ASSERT_FALSE(animation.isEmpty());
    ASSERT_EQ(Identify("%n ", animation).left(1), "4");
    ASSERT_EQ(vmtest::Run("convert", {animation, "-coalesce", TempFile("gif-coalesced-%d.png")}), 0);
    EXPECT_EQ(GifParser().GetFrameCount(animation), 4);
    for (int k = 0; k < 4; ++k) {
        SCOPED_TRACE(k);
        auto image = Load(animation, k);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->Width(), 40);
        EXPECT_EQ(image->Height(), 30);
        EXPECT_EQ(image->PixelFormat, PixelFormat8bppIndexed);
        EXPECT_EQ(DifferencesFromMagick(TempFile(QString("gif-coalesced-%1.png").arg(k)), *image, 0, false),
                  0);
    }
    for (int32_t outside : {-1, 4, 1000}) {
        int32_t frame = outside;
        CImage image;
        ASSERT_TRUE(GifParser().LoadPictureFromFile(animation, image, frame));
        EXPECT_EQ(frame, 3);
        EXPECT_EQ(DifferencesFromMagick(TempFile("gif-coalesced-3.png"), image, 0, false), 0);
    }
}

// The transparent colour becomes a palette entry of alpha 0.
TEST(GifParserDecoding, TransparentColour) {
    const QString file =
        Magick({"-size", "24x16", "gradient:white-green", "-colors", "8", "-fill", "red", "-draw",
                "rectangle 4,4 12,10", "-transparent", "red", TempFile("gif-transparent.gif")});
    ASSERT_FALSE(file.isEmpty());
    auto image = Load(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(image->Palette().Entry(image->Row(6)[8])[3], 0);
    EXPECT_EQ(image->Palette().Entry(image->Row(0)[0])[3], 255);
    EXPECT_EQ(CountDifferences(ToRgba(*image, true), DecodeWithMagick(file)), 0);
}

// A file with no colour table holds at most one colour: it opens as RGBA 32,
// opaque black, which is also what ImageMagick shows (while it complains of
// the missing table).
TEST(GifParserDecoding, NoColourTableOpensAsRgba) {
    static const uint8_t bytes[] = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x02, 0x00, 0x02, 0x00,
                                    0x00, 0x00, 0x00, 0x2c, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00,
                                    0x02, 0x00, 0x00, 0x02, 0x03, 0x44, 0x34, 0x05, 0x00, 0x3b};
    const QString file = TempFile("gif-no-table.gif");
    ASSERT_TRUE(WriteBytes(file, QByteArray(reinterpret_cast<const char*>(bytes), sizeof bytes)));
    auto image = Load(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(image->RawPixelFormat, PixelFormat32bppARGB);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x)
            EXPECT_EQ(ToRgba(*image).pixel(x, y), qRgba(0, 0, 0, 255));
}

// Indexed and grey blocks are written with their palettes, so that
// ImageMagick reads exactly their pixels; a palette entry of alpha 0 becomes
// the transparent colour.
TEST(GifParserWriter, IndexedBlocksKeepTheirPixels) {
    struct Case {
        const char* Name;
        int Bits;
        bool Grey;
    };
    for (const Case& c :
         {Case{"1", 1, false}, Case{"4", 4, false}, Case{"8", 8, false}, Case{"grey", 8, true}}) {
        SCOPED_TRACE(c.Name);
        auto image = RandomPicture(35, 21, c.Bits, 9, c.Grey);
        if (c.Bits == 8 && !c.Grey) {
            PaletteData p = image->Palette();
            p.Entry(17)[3] = 0;
            image->SetPaletteData(p);
        }
        image->RawImageFormat = 0;
        const QString out = TempFile(QString("gif-write-%1.gif").arg(c.Name));
        ASSERT_TRUE(GifParser().SavePictureToFile(out, *image));
        EXPECT_EQ(image->RawImageFormat, RawGif);
        EXPECT_EQ(CountDifferences(ToRgba(*image, true), DecodeWithMagick(out)), 0);
        auto back = Load(out);
        ASSERT_TRUE(back);
        EXPECT_EQ(CountDifferences(ToRgba(*back, true), ToRgba(*image, true)), 0);
    }
}

// Colour blocks go through a median-cut palette: a smooth picture comes back
// close, and pixels of alpha below one half become transparent.
TEST(GifParserWriter, ColourBlocksAreReduced) {
    const QString source = Magick(
        {"-size", "48x32", "gradient:teal-orange", "-depth", "8", "PNG24:" + TempFile("gif-colour.png")});
    ASSERT_FALSE(source.isEmpty());
    CImage colour;
    ASSERT_TRUE(colour.LoadPictureFromFile(source));
    ASSERT_EQ(colour.PixelFormat, PixelFormat24bppRGB);
    const QString out = TempFile("gif-colour.gif");
    ASSERT_TRUE(GifParser().SavePictureToFile(out, colour));
    EXPECT_EQ(DifferencesFromMagick(out, colour, 8), 0);

    auto rgba = colour.GetRGB32Image();
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            rgba->Row(y)[4 * x + 3] = 0;
    ASSERT_TRUE(GifParser().SavePictureToFile(TempFile("gif-rgba.gif"), *rgba));
    const QImage decoded = DecodeWithMagick(TempFile("gif-rgba.gif"));
    ASSERT_FALSE(decoded.isNull());
    EXPECT_EQ(decoded.pixelColor(3, 3).alpha(), 0);
    EXPECT_EQ(decoded.pixelColor(20, 20).alpha(), 255);
}

TEST(GifParserMalformed, SignatureAndTruncation) {
    const QString animation = Animation();
    ASSERT_FALSE(animation.isEmpty());
    const QByteArray bytes = ReadBytes(animation);
    GifParser parser;
    const QString path = TempFile("gif-broken.gif");

    ASSERT_TRUE(WriteBytes(path, Patched(bytes, 4, "8"))); // "GIF88a"
    EXPECT_FALSE(parser.IsGif(path));
    EXPECT_EQ(parser.GetFrameCount(path), 0);

    // Cut anywhere before the trailer, the file does not decode.
    for (qsizetype cut = 6; cut < bytes.size() - 1; cut += 11) {
        SCOPED_TRACE(cut);
        ASSERT_TRUE(WriteBytes(path, bytes.left(cut)));
        EXPECT_TRUE(parser.IsGif(path));
        EXPECT_TRUE(Refuses<GifParser>(path, 0));
        EXPECT_EQ(parser.GetFrameCount(path), 0);
    }
}

// A libFuzzer find: a logical screen of 0 x 0 with a frame at x 65535, 12
// wide. The screen is then the frames' union, cut to the 65535 a GIF can
// state, and the picture survives its own save and reload.
TEST(GifParserMalformed, EmptyScreenTakesTheFramesWithinWhatGifCanState) {
    const QByteArray bytes =
        QByteArray::fromBase64("R0lGODlhAAAAAPAAAP8AAAAAACH5BAAAAAAAIf8LTkVUU0NBUEUyLjADAQAAACz///"
                               "8CDAAIAAACCISPqcvtD2MqACH5BAAAAAAALAIAAgAEAAQAgAAA/wAAAAIEhI8JBQA7");
    for (int32_t frame : {0, 1}) {
        SCOPED_TRACE(frame);
        const auto image = LoadBytesWith<GifParser>(bytes, frame);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->Width(), 65535);
        EXPECT_LE(image->Height(), 65535);
        const QString out = TempFile("empty-screen.gif");
        ASSERT_TRUE(GifParser().SavePictureToFile(out, *image));
        int32_t first = 0;
        const auto back = LoadWith<GifParser>(out, first);
        ASSERT_TRUE(back);
        EXPECT_EQ(CountDifferences(ToRgba(*back), ToRgba(*image)), 0);
    }
}
