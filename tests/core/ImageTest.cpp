#include "core/Image.h"
#include "core/Numeric.h"
#include "support/TestSupport.h"

#include <QPainter>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <set>
#include <tuple>

using namespace vm;

namespace {

struct FormatCase {
    int Bits;
    uint32_t Format;
    int Width;
    int Stride;
};

} // namespace

TEST(ImageCreate, StridesAndFormatsOfEveryDepth) {
    const FormatCase cases[] = {
        {1, PixelFormat1bppIndexed, 1, 4}, {1, PixelFormat1bppIndexed, 33, 8},
        {4, PixelFormat4bppIndexed, 9, 8}, {4, PixelFormat4bppIndexed, 7, 4},
        {8, PixelFormat8bppGray, 5, 8},    {16, PixelFormat16bppRGB555, 3, 8},
        {24, PixelFormat24bppRGB, 5, 16},  {24, PixelFormat24bppRGB, 4, 12},
        {32, PixelFormat32bppARGB, 3, 12},
    };
    for (const auto& c : cases) {
        CImage img;
        ASSERT_TRUE(img.CreateNewImage(c.Width, 3, c.Bits)) << c.Bits;
        EXPECT_EQ(img.PixelFormat, c.Format);
        EXPECT_EQ(img.Stride(), c.Stride) << c.Bits << " bits, width " << c.Width;
        EXPECT_EQ(img.Width(), c.Width);
        EXPECT_EQ(img.Height(), 3);
        if (c.Bits != 4) {
            // The view is the block itself, not a copy.
            EXPECT_EQ(img.Image().constBits(), img.Pointer());
            EXPECT_EQ(img.Image().bytesPerLine(), img.Stride());
        } else {
            EXPECT_TRUE(img.Image().isNull());
        }
    }
}

TEST(ImageCreate, RefusesBadArgumentsAndKeepsWhatWasThere) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(4, 4, 24, 0x0000FF));
    const uint8_t* before = img.Pointer();
    EXPECT_FALSE(img.CreateNewImage(0, 4, 24));
    EXPECT_FALSE(img.CreateNewImage(4, -1, 24));
    EXPECT_FALSE(img.CreateNewImage(4, 4, 2));
    EXPECT_EQ(img.Pointer(), before);
    EXPECT_EQ(img.Width(), 4);
    EXPECT_EQ(img.Row(3)[2], 255);
    // A block beyond what 32-bit offsets can address is refused, not attempted.
    EXPECT_FALSE(img.CreateNewImage(100000, 100000, 32));
    EXPECT_EQ(img.Handle(), 0u);
}

TEST(ImageCreate, EightBitIsGreyOverAnIndexedViewAndOneBitIsWhite) {
    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(3, 2, 8));
    EXPECT_EQ(grey.PixelFormat, PixelFormat8bppGray);
    EXPECT_EQ(grey.Image().format(), QImage::Format_Indexed8);
    EXPECT_EQ(grey.Palette().Count, 256u);
    EXPECT_EQ(grey.Palette().Flags, 2u);
    EXPECT_EQ(grey.Image().color(77), qRgba(77, 77, 77, 255));

    CImage mono;
    ASSERT_TRUE(mono.CreateNewImage(10, 2, 1));
    EXPECT_EQ(mono.Palette().Count, 2u);
    const uint8_t* e0 = mono.Palette().Entry(0);
    EXPECT_EQ(e0[0] + e0[1] + e0[2], 3 * 255);
    EXPECT_EQ(mono.Image().pixel(5, 1), qRgb(255, 255, 255));
}

TEST(ImageCreate, BackColourFill) {
    CImage rgba;
    ASSERT_TRUE(rgba.CreateNewImage(2, 2, 32, MakeColorRef(10, 20, 30)));
    EXPECT_EQ(std::vector<int>(rgba.Row(1) + 4, rgba.Row(1) + 8), (std::vector<int>{30, 20, 10, 0}))
        << "a solid fill leaves alpha at 0";

    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(3, 1, 8, MakeColorRef(100, 101, 103)));
    EXPECT_EQ(grey.Row(0)[2], 101); // the nearest grey entry
    EXPECT_EQ(grey.Row(0)[3], 0);   // padding untouched

    CImage rgb16;
    ASSERT_TRUE(rgb16.CreateNewImage(1, 1, 16, MakeColorRef(255, 0, 8)));
    EXPECT_EQ(rgb16.Row(0)[0] | (rgb16.Row(0)[1] << 8), (31 << 10) | 1);

    CImage four;
    ASSERT_TRUE(four.CreateNewImage(4, 1, 4, 0xFFFFFF));
    EXPECT_EQ(four.Row(0)[0], 0) << "4-bit images are not filled";
}

TEST(ImageClone, CarriesExactlyItsFields) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(5, 3, 8));
    img.PixelFormat = PixelFormat8bppIndexed;
    PaletteData pal;
    pal.Count = 3;
    pal.SetEntry(2, 1, 2, 3, 4);
    img.SetPaletteData(pal);
    img.Row(2)[4] = 2;
    img.Resolution = 300;
    img.Left = 7;
    img.Top = 8;
    img.FileName = "x.bmp";
    img.RawPixelFormat = PixelFormat8bppIndexed;
    img.RawImageFormat = RawJpeg;
    img.Bmp16PixelFormat = 3;
    img.RleCompress = true;
    img.BmpFlipRow = true;
    img.BmpFileSystem = 1;
    img.FileComment = "c";
    img.AuthorInformation = "a";
    img.RawDdsFileFormat = 5;
    img.PnmStoreWay = 6;
    img.PropertyCount = 2;
    img.SetPropertyBuffer(QByteArray("\x01\x02\x03", 3));

    auto c = img.CloneImage();
    EXPECT_EQ(c->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(c->Row(2)[4], 2);
    EXPECT_EQ(c->Palette().Count, 3u);
    EXPECT_EQ(0, std::memcmp(c->Palette().Entry(2), pal.Entry(2), 4));
    EXPECT_EQ(std::tuple(c->Resolution, c->Left, c->Top, c->FileName, c->RawPixelFormat, c->BmpFileSystem),
              std::tuple(300.0f, 7, 8, QString("x.bmp"), uint32_t{PixelFormat8bppIndexed}, 1));
    EXPECT_TRUE(c->RleCompress && c->BmpFlipRow);
    EXPECT_EQ(c->FileComment + "|" + c->AuthorInformation, "c|a");
    EXPECT_EQ(std::tuple(c->RawDdsFileFormat, c->PnmStoreWay, c->PropertyCount), std::tuple(5, 6, 2));
    EXPECT_EQ(c->PropertyBuffer(), img.PropertyBuffer());
    // Deliberately not carried over.
    EXPECT_EQ(c->RawImageFormat, 0);
    EXPECT_EQ(c->Bmp16PixelFormat, 0);
    EXPECT_NE(c->Pointer(), img.Pointer());
}

TEST(ImageAlpha, CheckAlphaOnlyWhenThePlaneIsEmpty) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(3, 3, 32));
    img.CheckAlpha();
    EXPECT_EQ(img.Row(2)[11], 255);
    img.ClearImage();
    img.Row(1)[7] = 9;
    img.CheckAlpha();
    EXPECT_EQ(img.Row(0)[3], 0);
    EXPECT_EQ(img.Row(1)[7], 9);
    img.SetAlphaChannelToMaxValue();
    EXPECT_EQ(img.Row(1)[7], 255);

    CImage rgb;
    ASSERT_TRUE(rgb.CreateNewImage(3, 1, 24));
    rgb.SetAlphaChannelToMaxValue(); // not 32 bits: nothing
    rgb.CheckAlpha();
    EXPECT_EQ(rgb.Row(0)[3], 0);
    rgb.FillSolidColor(7);
    EXPECT_EQ(rgb.Row(0)[11], 7) << "padding is filled too";
}

TEST(ImageRead, PixelColourSampleSizesAndCorners) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(6, 6, 24));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x) {
            img.Row(y)[3 * x] = static_cast<uint8_t>(10 * x + y);
            img.Row(y)[3 * x + 1] = static_cast<uint8_t>(x * y);
            img.Row(y)[3 * x + 2] = 200;
        }
    int r = -1, g = -1, b = -1, a = -1;
    ASSERT_TRUE(img.GetPixelColor(0, 0, r, g, b, a, 2));
    // 3 x 3 pixels of the 5 x 5 block lie inside: blues 0..22 summing to 99,
    // greens to 9. Alpha is only read from 32-bit pixels.
    EXPECT_EQ(std::tuple(r, g, b, a), std::tuple(200, 1, 11, -1));

    ASSERT_TRUE(img.GetPixelColor(3, 3, r, g, b, a, 1));
    EXPECT_EQ(g, (2 * 2 + 2 * 3 + 2 * 4 + 3 * 2 + 9 + 12 + 8 + 12 + 16) / 9);

    r = g = b = a = -5;
    EXPECT_FALSE(img.GetPixelColor(6, 0, r, g, b, a, 0));
    EXPECT_TRUE(img.GetPixelColor(1, 1, r, g, b, a, 3));
    EXPECT_EQ(r, -5);
}

TEST(ImageRead, IndexedColoursAreLookedUpBeforeAveraging) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(2, 1, 8));
    img.PixelFormat = PixelFormat8bppIndexed;
    PaletteData pal;
    pal.Count = 2;
    pal.SetEntry(0, 255, 0, 0);
    pal.SetEntry(1, 0, 0, 101);
    img.SetPaletteData(pal);
    img.Row(0)[1] = 1;
    int r = 0, g = 0, b = 0, a = 0;
    ASSERT_TRUE(img.GetPixelColor(0, 0, r, g, b, a, 1));
    EXPECT_EQ(r, 127);
    EXPECT_EQ(b, 50);
}

TEST(ImageRead, GreyK) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(3, 1, 32));
    img.Row(0)[4] = img.Row(0)[5] = img.Row(0)[6] = 255;
    img.Row(0)[8] = 0, img.Row(0)[9] = 128, img.Row(0)[10] = 0;
    EXPECT_EQ(img.GetGrayK(0, 0), 100);
    EXPECT_EQ(img.GetGrayK(1, 0), 0);
    EXPECT_EQ(img.GetGrayK(3, 0), 0);
    CImage narrow;
    ASSERT_TRUE(narrow.CreateNewImage(3, 1, 8));
    EXPECT_EQ(narrow.GetGrayK(2, 0), 0) << "a 4-byte read past the block answers 0";
}

TEST(ImageRead, UsedColourAmount) {
    auto rgb = vmtest::RandomImage(64, 64, 24, 1);
    // Alpha does not count, so a 32-bit copy with varied alpha has as many.
    std::set<uint32_t> colours;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const uint8_t* p = rgb->Row(y) + 3 * x;
            colours.insert(p[0] | (p[1] << 8) | (p[2] << 16));
        }
    EXPECT_EQ(rgb->GetUsedColorAmount(), static_cast<int64_t>(colours.size()));
    auto rgba = rgb->GetRGB32Image();
    for (int y = 0; y < 64; ++y)
        rgba->Row(y)[3] = static_cast<uint8_t>(y);
    EXPECT_EQ(rgba->GetUsedColorAmount(), static_cast<int64_t>(colours.size()));

    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(5, 1, 8));
    grey.Row(0)[1] = 4;
    grey.Row(0)[6] = 9; // padding never counts
    EXPECT_EQ(grey.GetUsedColorAmount(), 2);
    CImage r16;
    ASSERT_TRUE(r16.CreateNewImage(5, 1, 16));
    EXPECT_EQ(r16.GetUsedColorAmount(), 0);
}

TEST(ImageRead, HistogramChannels) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(4, 4, 24));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            img.Row(y)[3 * x] = static_cast<uint8_t>(x);     // blue
            img.Row(y)[3 * x + 1] = static_cast<uint8_t>(y); // green
            img.Row(y)[3 * x + 2] = 9;                       // red
        }
    std::vector<uint32_t> h;
    ASSERT_TRUE(img.GetHistgramArray(h, 0, 1));
    ASSERT_EQ(h.size(), 256u);
    EXPECT_EQ(h[0], 4u);
    EXPECT_EQ(h[3], 4u);
    ASSERT_TRUE(img.GetHistgramArray(h, 2, 1));
    EXPECT_EQ(h[9], 16u);
    ASSERT_TRUE(img.GetHistgramArray(h, 3, 1));
    EXPECT_EQ(std::accumulate(h.begin(), h.end(), 0u), 0u);
    ASSERT_TRUE(img.GetHistgramArray(h, 4, 1));
    EXPECT_EQ(std::accumulate(h.begin(), h.end(), 0u), 48u);
    // Luminosity (5) and all three rows (6) at level 1: see the histogram statistics.
    ASSERT_TRUE(img.GetHistgramArray(h, 6, 2));
    ASSERT_EQ(h.size(), 768u);
    EXPECT_EQ(h[0], 2u);       // blue 0 at x = 0, rows 0 and 2
    EXPECT_EQ(h[256 + 2], 2u); // green 2 on row 2, columns 0 and 2
    EXPECT_EQ(h[512 + 9], 4u);

    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(2, 2, 8));
    grey.Row(1)[1] = 50;
    // Every channel of a grey picture is its one value; all three rows only the first.
    ASSERT_TRUE(grey.GetHistgramArray(h, 4, 1));
    EXPECT_EQ(std::pair(h[50], h[0]), std::pair(1u, 3u));
    ASSERT_TRUE(grey.GetHistgramArray(h, 6, 1));
    EXPECT_EQ(std::pair(h[50], h[256 + 50]), std::pair(1u, 0u));

    CImage empty;
    EXPECT_FALSE(empty.GetHistgramArray(h, 0, 1));
}

TEST(ImageConvert, FourAndEightBitIndexRoundTrip) {
    auto src = vmtest::RandomImage(7, 3, 4, 5);
    auto eight = src->Get8BppIndexedImage();
    ASSERT_TRUE(eight);
    EXPECT_EQ(eight->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(eight->Row(1)[3], src->Row(1)[1] & 15);
    auto back = eight->Get4BppIndexedImage();
    ASSERT_TRUE(back);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(0, std::memcmp(back->Row(y), src->Row(y), 3)) << y;
    EXPECT_EQ(0, std::memcmp(back->Palette().Entries.data(), src->Palette().Entries.data(), 64));
    EXPECT_FALSE(src->Get4BppIndexedImage());
    EXPECT_FALSE(eight->Get8BppIndexedImage());
    auto big = vmtest::RandomImage(4, 4, 8, 2); // 256 entries: too many for 4 bits
    EXPECT_FALSE(big->Get4BppIndexedImage());
}

TEST(ImageConvert, Rgb24LaysOverTheBackColourAndRgb32KeepsItsAsymmetry) {
    CImage rgba;
    ASSERT_TRUE(rgba.CreateNewImage(2, 1, 32));
    uint8_t* p = rgba.Row(0);
    p[0] = 200, p[1] = 100, p[2] = 0, p[3] = 128;
    p[4] = 1, p[5] = 2, p[6] = 3, p[7] = 255;
    auto rgb = rgba.GetRGB24Image(MakeColorRef(255, 255, 255));
    EXPECT_EQ(rgb->PixelFormat, PixelFormat24bppRGB);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(rgb->Row(0)[c], 255 + (p[c] - 255) * 128 / 255);
    EXPECT_EQ(rgb->Row(0)[5], 3);
    // A negative colour leaves the components at 0: black.
    auto onBlack = rgba.GetRGB24Image(-1);
    EXPECT_EQ(onBlack->Row(0)[0], 200 * 128 / 255);

    auto zero = rgba.GetRGB32Image();
    EXPECT_EQ(zero->Row(0)[0], 0) << "RGBA 32 is not converted";
    EXPECT_EQ(zero->Row(0)[7], 0);

    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(1, 1, 8));
    grey.Row(0)[0] = 77;
    auto g32 = grey.GetRGB32Image();
    EXPECT_EQ(g32->Row(0)[2], 77);
    EXPECT_EQ(g32->Row(0)[3], 255);
    CImage mono;
    ASSERT_TRUE(mono.CreateNewImage(1, 1, 1));
    EXPECT_EQ(mono.GetRGB24Image(0)->Row(0)[0], 0) << "1-bit stays black";
}

TEST(ImageRender, OpacityMirrorAndDefaults) {
    auto img = vmtest::RandomImage(8, 6, 32, 3);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            img->Row(y)[4 * x + 3] = 255;
    auto draw = [&](int opacity, int srcW, bool imaging) {
        QImage target(8, 6, QImage::Format_ARGB32);
        target.fill(Qt::transparent);
        QPainter p(&target);
        img->Render(p, srcW < 0 ? 8 : 0, 0, 0, 0, 0, 0, srcW, 0, InterpolationNearestNeighbor,
                    PixelOffsetHalf, opacity, imaging);
        return target;
    };
    const QImage full = draw(255, 0, false);
    EXPECT_EQ(vmtest::CountDifferences(full, draw(100, 0, false)), 0);
    EXPECT_EQ(vmtest::CountDifferences(full, vmtest::ToRgba(*img)), 0);
    EXPECT_NEAR(qAlpha(draw(50, 0, false).pixel(3, 3)), 128, 1);
    const QImage mirrored = draw(255, -8, false);
    EXPECT_EQ(mirrored.pixel(0, 2), full.pixel(7, 2));
    EXPECT_EQ(mirrored.pixel(7, 5), full.pixel(0, 5));

    // The block-transfer path answers false and still draws.
    CImage rgb;
    ASSERT_TRUE(rgb.CreateNewImage(2, 2, 24, MakeColorRef(1, 2, 3)));
    QImage t(2, 2, QImage::Format_ARGB32);
    QPainter p(&t);
    EXPECT_FALSE(rgb.Render(p, 0, 0));
    EXPECT_TRUE(
        rgb.Render(p, 0, 0, 0, 0, 0, 0, 0, 0, InterpolationNearestNeighbor, PixelOffsetHalf, 255, true));
    p.end();
    EXPECT_EQ(t.pixel(1, 1), qRgb(1, 2, 3));
}

TEST(ImageRender, IndexedFormatsDrawThroughTheCurrentPalette) {
    auto four = vmtest::RandomImage(5, 4, 4, 9);
    QImage t(5, 4, QImage::Format_ARGB32);
    {
        QPainter p(&t);
        EXPECT_TRUE(four->Render(p, 0, 0));
    }
    EXPECT_EQ(vmtest::CountDifferences(t, vmtest::ToRgba(*four)), 0);

    // Palette bytes written behind the view's back still reach the screen.
    auto eight = vmtest::RandomImage(3, 3, 8, 4);
    PaletteData pal = eight->Palette();
    for (int i = 0; i < 256; ++i)
        pal.SetEntry(i, 0, 255, 0);
    eight->SetPaletteBytes(pal);
    {
        QPainter p(&t);
        eight->Render(p, 0, 0);
    }
    EXPECT_EQ(t.pixel(2, 2), qRgb(0, 255, 0));
    EXPECT_EQ(eight->Image().constBits(), eight->Pointer());
}

TEST(ImageEvents, ListenersHearInOrderAndCanLeave) {
    CImage img;
    vmtest::ImageEventLog a, b;
    img.AddListener(&a);
    img.AddListener(&b);
    img.AddListener(&a);
    img.RaiseProgressStart(true, QStringLiteral("反相"), 0);
    img.RemoveListener(&b);
    img.RaiseProgressEnd(false, QStringLiteral("反相"), 3, QStringLiteral("x"));
    EXPECT_EQ(a.Lines, QStringList({"start 1 反相 0", "end 0 反相 3 x"}));
    EXPECT_EQ(b.Lines, QStringList({"start 1 反相 0"}));
}

TEST(ImageStdPicture, IndexedAndAlphaPicturesKeepTheirDepth) {
    QImage indexed(3, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(1, 2, 3), qRgb(4, 5, 6)});
    indexed.fill(1);
    CImage img;
    ASSERT_TRUE(img.LoadPictureFromStdPicture(indexed));
    EXPECT_EQ(img.PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(img.Palette().Count, 2u);
    EXPECT_EQ(img.Row(1)[2], 1);
    QImage argb(2, 2, QImage::Format_ARGB32);
    argb.fill(qRgba(10, 20, 30, 40));
    ASSERT_TRUE(img.LoadPictureFromStdPicture(argb));
    EXPECT_EQ(img.PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(img.Row(1)[7], 40);
    EXPECT_EQ(img.RawImageFormat, 0);
}
