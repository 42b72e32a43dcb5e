// The view's arithmetic, number by number.
#include "canvas/CanvasGeometry.h"
#include "core/StartUpTables.h"

#include <gtest/gtest.h>

using namespace vm;

TEST(CanvasGeometry, AnAxisThatFitsIsCentredAndDoesNotScroll) {
    const AxisLayout a = FitAxis(100, 1.0, 500);
    EXPECT_EQ(a.ScrollMax, 0);
    EXPECT_EQ(a.Show, 200);
    EXPECT_EQ(a.ShowExtent, 100);
    const AxisLayout odd = FitAxis(101, 1.0, 500);
    EXPECT_EQ(odd.Show, 199);
    // Exactly as large as the view still fits.
    EXPECT_EQ(FitAxis(250, 2.0, 500).ScrollMax, 0);
}

TEST(CanvasGeometry, AnAxisThatDoesNotFitScrollsOverTheDifference) {
    const AxisLayout a = FitAxis(1000, 1.0, 500);
    EXPECT_EQ(a.ScrollMax, 500);
    EXPECT_EQ(a.Show, 0);
    EXPECT_EQ(a.ShowExtent, 500);
    EXPECT_EQ(FitAxis(300, 3.0, 500).ScrollMax, 400);
    EXPECT_EQ(ClampScroll(-3, 400), 0);
    EXPECT_EQ(ClampScroll(401, 400), 400);
    EXPECT_EQ(ClampScroll(17.5, 400), 17.5);
}

TEST(CanvasGeometry, DisplayedExtentKeepsAtLeastOnePixel) {
    EXPECT_EQ(DisplayedExtent(10, 0.0276), 1);
    EXPECT_EQ(DisplayedExtent(1000, 0.33), 330);
    EXPECT_EQ(DisplayedExtent(3, 0.5), 1);
    EXPECT_EQ(DisplayedExtent(0, 2.0), 0);
}

TEST(CanvasGeometry, ScrolledAxisDrawsWholePixelsAroundThePartialOnes) {
    // Zoom 3, scrolled by 10: pixel 3 starts one screen pixel left of the view.
    AxisDraw d = DrawAxis(1000, 3.0, 100, 10, 2900);
    EXPECT_EQ(d.SrcStart, 3);
    EXPECT_EQ(d.SrcExtent, 35);
    EXPECT_DOUBLE_EQ(d.DestStart, -1);
    EXPECT_DOUBLE_EQ(d.DestExtent, 105);
    // At the far end nothing past the last pixel is asked for, and the last
    // pixel ends on the view's edge.
    d = DrawAxis(40, 3.0, 100, 20, 20);
    EXPECT_EQ(d.SrcStart, 6);
    EXPECT_EQ(d.SrcExtent, 34);
    EXPECT_DOUBLE_EQ(d.DestStart, -2);
    EXPECT_DOUBLE_EQ(d.DestStart + d.DestExtent, 100);
    // Below 100% the destination starts at the edge.
    d = DrawAxis(4000, 0.5, 300, 251, 1700);
    EXPECT_EQ(d.SrcStart, 502);
    EXPECT_EQ(d.SrcExtent, 602);
    EXPECT_DOUBLE_EQ(d.DestStart, 0);
    EXPECT_DOUBLE_EQ(d.DestExtent, 301);
    // An axis that fits draws all of it.
    d = DrawAxis(120, 2.0, 500, 0, 0);
    EXPECT_EQ(d.SrcStart, 0);
    EXPECT_EQ(d.SrcExtent, 120);
    EXPECT_DOUBLE_EQ(d.DestExtent, 240);
}

TEST(CanvasGeometry, VisibleRectangleArithmetic) {
    int32_t start = -1, end = -1;
    VisibleAxis(640, 1.0, 800, 0, 0, start, end);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 640);
    VisibleAxis(5000, 2.0, 300, 101, 9700, start, end);
    EXPECT_EQ(start, 50);
    EXPECT_EQ(end, 202);
    VisibleAxis(5000, 0.5, 300, 250, 2200, start, end);
    EXPECT_EQ(start, 500);
    EXPECT_EQ(end, 1102);
    VisibleAxis(5000, 0.33, 100, 10, 1550, start, end);
    EXPECT_EQ(start, 30);
    EXPECT_EQ(end, 335);
}

TEST(CanvasGeometry, ViewPositionsMapBackToWholeImagePixels) {
    EXPECT_EQ(ViewToImage(205, 200, 0, 1.0), 5);
    EXPECT_EQ(ViewToImage(0, 0, 10, 3.0), 3);
    EXPECT_EQ(ViewToImage(2, 0, 10, 3.0), 4);
    // Truncated, as all pointer work has it: just left of the picture is still 0.
    EXPECT_EQ(ViewToImage(19, 20, 0, 2.0), 0);
    EXPECT_EQ(ViewToImage(10, 20, 0, 2.0), -5);
}

TEST(CanvasGeometry, ZoomStepsFollowTheTable) {
    double next = 0;
    ASSERT_TRUE(ZoomInFactor(1.0, next));
    EXPECT_EQ(next, 2.0);
    ASSERT_TRUE(ZoomInFactor(0.7, next));
    EXPECT_EQ(next, 1.0);
    ASSERT_TRUE(ZoomInFactor(0.01, next));
    EXPECT_EQ(next, ZoomFactorTable.front());
    EXPECT_FALSE(ZoomInFactor(20.0, next));

    ASSERT_TRUE(ZoomOutFactor(1.0, 640, 480, next));
    EXPECT_EQ(next, 0.67);
    ASSERT_TRUE(ZoomOutFactor(0.7, 640, 480, next));
    EXPECT_EQ(next, 0.67);
    ASSERT_TRUE(ZoomOutFactor(20.0, 640, 480, next));
    EXPECT_EQ(next, 16.0);
    EXPECT_FALSE(ZoomOutFactor(ZoomFactorTable.front(), 100000, 100000, next));
    // A 10 x 10 picture stops at 12.5%: the next step would show it below a pixel.
    ASSERT_TRUE(ZoomOutFactor(0.167, 10, 10, next));
    EXPECT_EQ(next, 0.125);
    EXPECT_FALSE(ZoomOutFactor(0.125, 10, 10, next));
    // The shorter side decides.
    EXPECT_FALSE(ZoomOutFactor(0.125, 1000, 10, next));
}

TEST(CanvasGeometry, GivenFactorsKeepTheRangeAndAPixel) {
    EXPECT_TRUE(AcceptsZoomFactor(0.02, 100, 100));
    EXPECT_TRUE(AcceptsZoomFactor(20, 1, 1));
    EXPECT_FALSE(AcceptsZoomFactor(0.019, 1000, 1000));
    EXPECT_FALSE(AcceptsZoomFactor(20.5, 100, 100));
    EXPECT_FALSE(AcceptsZoomFactor(0.05, 10, 1000));
}

TEST(CanvasGeometry, BestPositionPicksAStepBelowOneOnlyWhenNeeded) {
    EXPECT_EQ(BestPositionFactor(100, 100, 500, 500), 1.0);
    EXPECT_EQ(BestPositionFactor(500, 500, 500, 500), 1.0);
    EXPECT_EQ(BestPositionFactor(2000, 1000, 800, 600), 0.33);
    EXPECT_EQ(BestPositionFactor(1000, 2400, 800, 600), 0.25);
    EXPECT_EQ(BestPositionFactor(1000, 2500, 800, 600), 0.167);
    EXPECT_EQ(BestPositionFactor(501, 10, 500, 500), 0.67);
    EXPECT_EQ(BestPositionFactor(100000, 10, 500, 500), ZoomFactorTable.front());
}

TEST(CanvasGeometry, ZoomBoxTextAndItsLimits) {
    EXPECT_EQ(ZoomPercentText(1.0), QStringLiteral("100.00%"));
    EXPECT_EQ(ZoomPercentText(0.0833), QStringLiteral("8.33%"));
    EXPECT_EQ(MinZoomPercent(10, 50), 10.0);
    EXPECT_EQ(MinZoomPercent(3, 3), 33.34);
    EXPECT_EQ(MinZoomPercent(4000, 3000), 2.0);

    double p = 0;
    EXPECT_EQ(ParseZoomBox(QStringLiteral("150"), 2, p), ZoomBoxInput::Accepted);
    EXPECT_EQ(p, 150);
    EXPECT_EQ(ParseZoomBox(QStringLiteral("12.5%"), 2, p), ZoomBoxInput::Accepted);
    EXPECT_EQ(p, 12.5);
    for (const char* bad : {"", "%", "abc", "1.2.3", "-5", "1e3"})
        EXPECT_EQ(ParseZoomBox(QString::fromLatin1(bad), 2, p), ZoomBoxInput::NotANumber) << bad;
    EXPECT_EQ(ParseZoomBox(QStringLiteral("5000"), 2, p), ZoomBoxInput::OutOfRange);
    EXPECT_EQ(p, 2000);
    EXPECT_EQ(ParseZoomBox(QStringLiteral("5%"), 10, p), ZoomBoxInput::OutOfRange);
    EXPECT_EQ(p, 10);
}

TEST(CanvasGeometry, BestFitIntoABox) {
    int32_t w, h, x, y;
    GetBestFitInfo(100, 50, 128, 128, w, h, x, y);
    EXPECT_EQ(w, 100);
    EXPECT_EQ(h, 50);
    EXPECT_EQ(x, 14);
    EXPECT_EQ(y, 39);
    GetBestFitInfo(400, 200, 128, 128, w, h, x, y);
    EXPECT_EQ(w, 128);
    EXPECT_EQ(h, 64);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 32);
    GetBestFitInfo(200, 400, 100, 100, w, h, x, y);
    EXPECT_EQ(w, 50);
    EXPECT_EQ(h, 100);
    EXPECT_EQ(x, 25);
    EXPECT_EQ(y, 0);
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
