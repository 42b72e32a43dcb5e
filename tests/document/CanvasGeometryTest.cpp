// The view's arithmetic, number by number.
#include "document/CanvasGeometry.h"
#include "core/StartUpTables.h"

#include <QRect>
#include <gtest/gtest.h>

using namespace vm;

TEST(CanvasGeometry, AxesFitCentredOrScrollOverTheDifference) {
    const struct {
        int32_t Image;
        double Zoom;
        int32_t View;
        double ScrollMax;
        int32_t Show, Extent;
    } cases[] = {
        {101, 1.0, 500, 0, 199, 101}, // an odd rest leaves the odd pixel on the right
        {250, 2.0, 500, 0, 0, 500},   // exactly as large as the view still fits
        {1000, 1.0, 500, 500, 0, 500},
        {300, 3.0, 500, 400, 0, 500},
    };
    for (const auto& k : cases) {
        const AxisLayout a = FitAxis(k.Image, k.Zoom, k.View);
        EXPECT_EQ(a.ScrollMax, k.ScrollMax) << k.Image << " at " << k.Zoom;
        EXPECT_EQ(a.Show, k.Show) << k.Image << " at " << k.Zoom;
        EXPECT_EQ(a.ShowExtent, k.Extent) << k.Image << " at " << k.Zoom;
    }
    EXPECT_EQ(ClampScroll(17.5, 400), 17.5);
    // The displayed extent keeps at least one pixel of a picture.
    EXPECT_EQ(DisplayedExtent(10, 0.0276), 1);
    EXPECT_EQ(DisplayedExtent(1000, 0.33), 330);
    EXPECT_EQ(DisplayedExtent(3, 0.5), 1);
    EXPECT_EQ(DisplayedExtent(0, 2.0), 0);
}

TEST(CanvasGeometry, ScrolledAxesDrawWholePixelsAroundThePartialOnesAndSeeTheirPart) {
    const struct {
        int32_t Image;
        double Zoom;
        int32_t View;
        double Scroll, ScrollMax;
        AxisDraw Draw;
        int32_t VisibleStart, VisibleEnd;
    } cases[] = {
        // Zoom 3, scrolled by 10: pixel 3 starts one screen pixel left of the view.
        {1000, 3.0, 100, 10, 2900, {3, 35, -1, 105}, 3, 38},
        // At the far end nothing past the last pixel is asked for, and the
        // last pixel ends on the view's edge.
        {40, 3.0, 100, 20, 20, {6, 34, -2, 102}, -1, -1},
        // Below 100% the destination starts at the edge.
        {4000, 0.5, 300, 251, 1700, {502, 602, 0, 301}, 502, 1104},
        {5000, 0.33, 100, 10, 1550, {30, 305, 0, 100.65}, 30, 335},
        // An axis that fits is drawn and seen whole.
        {120, 2.0, 500, 0, 0, {0, 120, 0, 240}, 0, 120},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(testing::Message() << k.Image << " at " << k.Zoom << " scrolled " << k.Scroll);
        const AxisDraw d = DrawAxis(k.Image, k.Zoom, k.View, k.Scroll, k.ScrollMax);
        EXPECT_EQ(d.SrcStart, k.Draw.SrcStart);
        EXPECT_EQ(d.SrcExtent, k.Draw.SrcExtent);
        EXPECT_DOUBLE_EQ(d.DestStart, k.Draw.DestStart);
        EXPECT_DOUBLE_EQ(d.DestExtent, k.Draw.DestExtent);
        if (k.VisibleStart < 0) continue;
        int32_t start = -1, end = -1;
        VisibleAxis(k.Image, k.Zoom, k.View, k.Scroll, k.ScrollMax, start, end);
        EXPECT_EQ(start, k.VisibleStart);
        EXPECT_EQ(end, k.VisibleEnd);
    }
}

TEST(CanvasGeometry, ViewPositionsMapBackToWholeImagePixels) {
    EXPECT_EQ(ViewToImage(205, 200, 0, 1.0), 5);
    EXPECT_EQ(ViewToImage(0, 0, 10, 3.0), 3);
    EXPECT_EQ(ViewToImage(2, 0, 10, 3.0), 4);
    // Truncated, as all pointer work has it: just left of the picture is still 0.
    EXPECT_EQ(ViewToImage(19, 20, 0, 2.0), 0);
    EXPECT_EQ(ViewToImage(10, 20, 0, 2.0), -5);
}

TEST(CanvasGeometry, ZoomStepsFollowTheTableAndKeepAPixel) {
    double next = 0;
    ASSERT_TRUE(ZoomInFactor(0.7, next));
    EXPECT_EQ(next, 1.0);
    ASSERT_TRUE(ZoomInFactor(0.01, next));
    EXPECT_EQ(next, ZoomFactorTable.front());
    EXPECT_FALSE(ZoomInFactor(20.0, next));
    ASSERT_TRUE(ZoomOutFactor(0.7, 640, 480, next));
    EXPECT_EQ(next, 0.67);
    ASSERT_TRUE(ZoomOutFactor(20.0, 640, 480, next));
    EXPECT_EQ(next, 16.0);
    EXPECT_FALSE(ZoomOutFactor(ZoomFactorTable.front(), 100000, 100000, next));
    // The shorter side decides when a step would show the picture below a pixel.
    EXPECT_FALSE(ZoomOutFactor(0.125, 1000, 10, next));

    EXPECT_TRUE(AcceptsZoomFactor(0.02, 100, 100));
    EXPECT_TRUE(AcceptsZoomFactor(20, 1, 1));
    EXPECT_FALSE(AcceptsZoomFactor(0.019, 1000, 1000));
    EXPECT_FALSE(AcceptsZoomFactor(20.5, 100, 100));
    EXPECT_FALSE(AcceptsZoomFactor(0.05, 10, 1000));
}

TEST(CanvasGeometry, BestPositionPicksAStepBelowOneOnlyWhenNeeded) {
    EXPECT_EQ(BestPositionFactor(500, 500, 500, 500), 1.0);
    EXPECT_EQ(BestPositionFactor(2000, 1000, 800, 600), 0.33);
    EXPECT_EQ(BestPositionFactor(1000, 2400, 800, 600), 0.25);
    EXPECT_EQ(BestPositionFactor(1000, 2500, 800, 600), 0.167);
    EXPECT_EQ(BestPositionFactor(501, 10, 500, 500), 0.67);
    EXPECT_EQ(BestPositionFactor(100000, 10, 500, 500), ZoomFactorTable.front());

    // Into a box: the whole picture, centred, never enlarged.
    const struct {
        int32_t W, H, Box, FitW, FitH, X, Y;
    } fits[] = {
        {100, 50, 128, 100, 50, 14, 39}, {400, 200, 128, 128, 64, 0, 32}, {200, 400, 100, 50, 100, 25, 0}};
    for (const auto& k : fits) {
        int32_t w, h, x, y;
        GetBestFitInfo(k.W, k.H, k.Box, k.Box, w, h, x, y);
        EXPECT_EQ(QRect(x, y, w, h), QRect(k.X, k.Y, k.FitW, k.FitH)) << k.W << "x" << k.H;
    }
}

TEST(CanvasGeometry, ZoomBoxTextAndItsLimits) {
    EXPECT_EQ(ZoomPercentText(0.0833), QStringLiteral("8.33%"));
    EXPECT_EQ(MinZoomPercent(3, 3), 33.34);
    EXPECT_EQ(MinZoomPercent(4000, 3000), 2.0);

    double p = 0;
    EXPECT_EQ(ParseZoomBox(QStringLiteral("12.5%"), 2, p), ZoomBoxInput::Accepted);
    EXPECT_EQ(p, 12.5);
    for (const char* bad : {"", "%", "1.2.3", "-5", "1e3"})
        EXPECT_EQ(ParseZoomBox(QString::fromLatin1(bad), 2, p), ZoomBoxInput::NotANumber) << bad;
    EXPECT_EQ(ParseZoomBox(QStringLiteral("5000"), 2, p), ZoomBoxInput::OutOfRange);
    EXPECT_EQ(p, 2000);
}

TEST(CanvasGeometry, RulerStridesShrinkAsTheZoomGrows) {
    RulerStrides previous = RulerStridesFor(ZoomFactorTable.front());
    for (double zoom : ZoomFactorTable) {
        const RulerStrides s = RulerStridesFor(zoom);
        EXPECT_LE(s.Major, previous.Major) << zoom;
        EXPECT_LE(s.Minor, previous.Minor) << zoom;
        // Numbers stand far enough apart to be read, ticks far enough to be seen.
        EXPECT_GE(s.Major * zoom, 30) << zoom;
        EXPECT_LE(s.Major * zoom, 150) << zoom;
        EXPECT_GE(s.Minor * zoom, 4.9) << zoom;
        EXPECT_EQ(s.Major % s.Minor, 0) << zoom;
        previous = s;
    }
    const RulerStrides s{100, 50, 10};
    EXPECT_EQ(RulerTickAt(200, s), 3);
    EXPECT_EQ(RulerTickAt(150, s), 2);
    EXPECT_EQ(RulerTickAt(30, s), 1);
    EXPECT_EQ(RulerTickAt(35, s), 0);
    EXPECT_EQ(RulerTickAt(7, RulerStrides{5, NoStride, 1}), 1);
}
