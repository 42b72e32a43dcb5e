// The canvas as a user meets it: where a picture shows, how it zooms and
// scrolls, what the composed view holds, and undo across every kind of step.
#include "canvas/Canvas.h"
#include "adjust/PointOps.h"
#include "app/AppTestSupport.h"
#include "core/AppSettings.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <cstring>
#include <new>

using namespace vm;
using vmtest::Bytes;
using vmtest::MakeCanvas;

namespace {

QColor At(const Canvas& c, int x, int y) {
    return c.Buffer().pixelColor(x, y);
}

// Test operations of the two kinds no family supplies yet: a new size and a
// new mode, raised as the processing frame raises them.
bool HalveSize(CImage& image) {
    image.RaiseProgressStart(image.RestrainProgress, QStringLiteral("缩放"), ProgressPixels);
    auto old = image.CloneImage();
    image.CreateNewImage(old->Width() / 2, old->Height() / 2, 24);
    for (int y = 0; y < image.Height(); ++y)
        for (int x = 0; x < image.Width(); ++x)
            std::memcpy(image.Row(y) + 3 * x, old->Row(2 * y) + 6 * x, 3);
    image.RaiseProgressEnd(image.RestrainProgress, QStringLiteral("缩放"), ProgressSize);
    return true;
}

bool ToGrey(CImage& image) {
    image.RaiseProgressStart(image.RestrainProgress, QStringLiteral("灰度模式"), ProgressPixels);
    auto old = image.CloneImage();
    image.CreateNewImage(old->Width(), old->Height(), 8);
    for (int y = 0; y < image.Height(); ++y)
        for (int x = 0; x < image.Width(); ++x)
            image.Row(y)[x] = old->Row(y)[3 * x + 1];
    image.RaiseProgressEnd(image.RestrainProgress, QStringLiteral("灰度模式"), ProgressMode);
    return true;
}

// Listens after the canvas: at the start the canvas has set its cursor.
struct CursorWatch : IImageListener {
    bool busyAtStart = false;
    void ProgressStart(bool, const QString&, int) override {
        busyAtStart =
            QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor;
    }
    void ProgressEnd(bool, const QString&, int, const QString&) override {}
};

} // namespace

TEST(Canvas, ASmallPictureShowsCentredAtFullSizeALargeOneAtTheBestStepBelowOne) {
    auto c = MakeCanvas(500, 500, vmtest::Solid(100, 100, QColor(10, 20, 30)));
    EXPECT_EQ(c->ZoomFactor(), 1.0);
    EXPECT_TRUE(c->IsImageAllVisible());
    EXPECT_EQ(c->BufferWidth(), 500);
    EXPECT_EQ(c->ShowLeft(), 200);
    EXPECT_EQ(c->ShowTop(), 200);
    EXPECT_EQ(At(*c, 200, 200), QColor(10, 20, 30));
    EXPECT_EQ(At(*c, 299, 299), QColor(10, 20, 30));
    EXPECT_NE(At(*c, 199, 250), QColor(10, 20, 30));
    EXPECT_NE(At(*c, 300, 250), QColor(10, 20, 30));

    c = MakeCanvas(400, 300, vmtest::Solid(2000, 1000, Qt::red));
    EXPECT_EQ(c->ZoomFactor(), 0.167);
    EXPECT_TRUE(c->IsImageAllVisible());
    c->ShowImageAtItsOriginalSize();
    EXPECT_EQ(c->ZoomFactor(), 1.0);
    EXPECT_FALSE(c->IsImageAllVisible());
    c->ShowImageAtFitToScreen();
    EXPECT_DOUBLE_EQ(c->ZoomFactor(), 0.2);
    c->ShowImageAtFillScreen();
    EXPECT_DOUBLE_EQ(c->ZoomFactor(), 0.3);
    c->ShowImageAtBestPosition();
    EXPECT_EQ(c->ZoomFactor(), 0.167);
}

TEST(Canvas, ZoomStopsAtBothEndsAndKeepsThePixelInTheMiddleOfTheView) {
    auto c = MakeCanvas(300, 300, vmtest::Solid(10, 10, Qt::blue));
    ASSERT_TRUE(c->SetZoomFactor(2, 20));
    EXPECT_FALSE(c->SetZoomFactor(1));
    EXPECT_EQ(c->ZoomFactor(), 20);
    int steps = 0;
    while (c->SetZoomFactor(0))
        ++steps;
    // 10 pixels stop at 12.5%: the next step would show them below a pixel.
    EXPECT_EQ(c->ZoomFactor(), 0.125);
    EXPECT_EQ(steps, 16);

    c = MakeCanvas(400, 300, vmtest::Solid(2000, 1500, Qt::green));
    c->ShowImageAtItsOriginalSize();
    const QPoint middle(c->BufferWidth() / 2, c->BufferHeight() / 2);
    c->SetHoriVertPos(700, 500);
    const QPoint before = c->ViewToImagePoint(middle);
    for (int mode : {1, 1, 0, 0, 0, 0}) {
        ASSERT_TRUE(c->SetZoomFactor(mode));
        const QPoint after = c->ViewToImagePoint(QPoint(c->BufferWidth() / 2, c->BufferHeight() / 2));
        EXPECT_LE(std::abs(after.x() - before.x()), 1) << c->ZoomFactor();
        EXPECT_LE(std::abs(after.y() - before.y()), 1) << c->ZoomFactor();
    }
}

TEST(Canvas, ScrollValuesStayInTheirRange) {
    auto c = MakeCanvas(400, 300, vmtest::Solid(1000, 800, Qt::green));
    c->ShowImageAtItsOriginalSize();
    c->SetHoriVertPos(100000, -50);
    EXPECT_EQ(c->HoriScrollValue(), c->HoriScrollMax());
    EXPECT_EQ(c->VertScrollValue(), 0);
    EXPECT_EQ(c->HoriScrollMax(), 1000 - c->BufferWidth());
    c->ViewWheel(-120, false);
    EXPECT_EQ(c->VertScrollValue(), 60);
    int32_t l, t, r, b;
    c->GetVisibleRect(l, t, r, b);
    EXPECT_EQ(l, static_cast<int32_t>(c->HoriScrollValue()));
    EXPECT_EQ(t, 60);
    EXPECT_EQ(r, l + c->BufferWidth() + 2);
}

TEST(Canvas, CheckerboardOnlyBehindPicturesThatCanBeTransparent) {
    AppSettings& s = Globals();
    const AppSettings saved = s;
    s.CheckBoardFirstColor = MakeColorRef(255, 0, 255);
    s.CheckBoardSecondColor = MakeColorRef(0, 255, 255);
    s.CheckBoradSize = 4;
    auto c = MakeCanvas(100, 100, vmtest::Solid(16, 16, QColor(1, 2, 3)));
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            ASSERT_EQ(At(*c, c->ShowLeft() + x, c->ShowTop() + y), QColor(1, 2, 3));

    // Fully transparent: the grid shows, aligned to where the picture starts.
    ASSERT_TRUE(
        c->LoadPictureFormStdPicture(vmtest::Solid(16, 16, QColor(0, 0, 0, 0), QImage::Format_ARGB32)));
    EXPECT_EQ(c->Image()->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(At(*c, c->ShowLeft(), c->ShowTop()), QColor(255, 0, 255));
    EXPECT_EQ(At(*c, c->ShowLeft() + 4, c->ShowTop()), QColor(0, 255, 255));
    EXPECT_EQ(At(*c, c->ShowLeft() + 4, c->ShowTop() + 4), QColor(255, 0, 255));

    // An indexed picture whose entry is transparent.
    QImage indexed(16, 16, QImage::Format_Indexed8);
    indexed.setColorTable({qRgba(9, 9, 9, 0)});
    indexed.fill(0);
    ASSERT_TRUE(c->LoadPictureFormStdPicture(indexed));
    EXPECT_EQ(c->Image()->PixelFormat, PixelFormat8bppIndexed);
    EXPECT_EQ(At(*c, c->ShowLeft() + 5, c->ShowTop() + 1), QColor(0, 255, 255));
    s = saved;
}

TEST(Canvas, ZoomedPixelsAreSquaresAlignedWithTheScrollAndHalfSizeDoesNotAverage) {
    QImage q(50, 50, QImage::Format_RGB888);
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 50; ++x)
            q.setPixelColor(x, y, QColor(x * 5, y * 5, 0));
    auto c = MakeCanvas(100, 100, q);
    ASSERT_TRUE(c->SetZoomFactor(2, 4));
    c->SetHoriVertPos(41, 6);
    // Image pixel (x, y) covers view x*4 - 41 .. +3.
    EXPECT_EQ(At(*c, 0, 0), QColor(50, 5, 0));
    EXPECT_EQ(At(*c, 2, 1), QColor(50, 5, 0));
    EXPECT_EQ(At(*c, 3, 2), QColor(55, 10, 0));
    EXPECT_EQ(c->ViewToImagePoint(QPoint(3, 2)), QPoint(11, 2));

    // Black and white columns at half size show one of the two, never grey.
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 50; ++x)
            q.setPixelColor(x, y, (x % 2) ? Qt::white : Qt::black);
    c = MakeCanvas(200, 200, q);
    ASSERT_TRUE(c->SetZoomFactor(2, 0.5));
    const QColor first = At(*c, c->ShowLeft(), c->ShowTop());
    ASSERT_TRUE(first == Qt::white || first == Qt::black);
    for (int y = 0; y < 25; ++y)
        for (int x = 0; x < 25; ++x)
            ASSERT_EQ(At(*c, c->ShowLeft() + x, c->ShowTop() + y), first) << x << "," << y;
}

TEST(Canvas, MarchingAntsFollowTheSelection) {
    auto c = MakeCanvas(200, 200, vmtest::Solid(60, 40, QColor(128, 0, 128)));
    EXPECT_TRUE(c->MarchingAnt()->IsEmptyRgn());
    ASSERT_TRUE(c->Selection()->AddRectangle(10, 10, 30, 20));
    EXPECT_FALSE(c->MarchingAnt()->IsEmptyRgn());
    // The outline is painted in the two ant colours, both of them, and
    // nothing of the picture shows through it.
    int white = 0, black = 0;
    for (int x = 10; x < 30; ++x) {
        const QColor p = At(*c, c->ShowLeft() + x, c->ShowTop() + 10);
        white += p == Qt::white;
        black += p == Qt::black;
    }
    EXPECT_EQ(white + black, 20);
    EXPECT_GT(white, 0);
    EXPECT_GT(black, 0);
    EXPECT_EQ(At(*c, c->ShowLeft() + 15, c->ShowTop() + 15), QColor(128, 0, 128));
    // Hidden ants leave the picture's own colour.
    c->SetAntVisible(false);
    EXPECT_EQ(At(*c, c->ShowLeft() + 10, c->ShowTop() + 10), QColor(128, 0, 128));
    c->SetAntVisible(true);
    ASSERT_TRUE(c->CancelSelect());
    EXPECT_TRUE(c->MarchingAnt()->IsEmptyRgn());
    EXPECT_EQ(At(*c, c->ShowLeft() + 10, c->ShowTop() + 10), QColor(128, 0, 128));
}

TEST(Canvas, AnOperationReportsItsTimeAndShowsTheBusyCursor) {
    auto c = MakeCanvas(200, 200, vmtest::Solid(30, 30, QColor(10, 10, 10)));
    CursorWatch watch;
    c->Image()->AddListener(&watch);
    ASSERT_TRUE(Invert(*c->Image()));
    EXPECT_TRUE(watch.busyAtStart);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^反相: \\d+ms$")).match(c->StatusText()).hasMatch())
        << c->StatusText().toStdString();
    EXPECT_TRUE(c->ImageChanged);
    EXPECT_EQ(At(*c, c->ShowLeft(), c->ShowTop()), QColor(245, 245, 245));
    c->Image()->RemoveListener(&watch);
}

TEST(Canvas, ACommandThatRunsOutOfMemoryIsTakenBackOnTheScreenToo) {
    auto c = MakeCanvas(200, 200, vmtest::Solid(30, 20, QColor(10, 20, 30)));
    ASSERT_TRUE(Invert(*c->Image()));
    const QByteArray before = Bytes(*c->Image());
    // The size changed and was shown before the failure came.
    EXPECT_THROW(c->GetDocument().Run([](CImage& image) {
        HalveSize(image);
        throw std::bad_alloc();
    }),
                 std::bad_alloc);
    EXPECT_EQ(c->CanvasWidth(), 30);
    EXPECT_EQ(Bytes(*c->Image()), before);
    EXPECT_EQ(c->GetHistory().HistoryPos, 1);
    EXPECT_EQ(c->ShowLeft(), 85);
    EXPECT_EQ(At(*c, c->ShowLeft() + 29, c->ShowTop() + 19), QColor(245, 235, 225));
    // A frame that never closed leaves no busy cursor behind.
    EXPECT_THROW(c->GetDocument().Run([](CImage& image) {
        image.RaiseProgressStart(false, QStringLiteral("未完"), ProgressPixels);
        throw std::bad_alloc();
    }),
                 std::bad_alloc);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    ASSERT_TRUE(Invert(*c->Image()));
    EXPECT_EQ(c->GetHistory().HistoryPos, 2);
}

TEST(Canvas, ZoomBoxRefusesWithItsTwoMessages) {
    auto c = MakeCanvas(300, 300, vmtest::Solid(10, 40, Qt::blue));
    MessageRecorder recorder;
    c->CommitZoomBox(QStringLiteral("abc"));
    ASSERT_EQ(recorder.Requests.size(), 1);
    EXPECT_EQ(recorder.LastText(),
              QStringLiteral("无效数字项，要求10.00和2000%之间的整数。已插入前一个值。"));
    EXPECT_EQ(c->ZoomFactor(), 1.0);
    EXPECT_EQ(c->ZoomBoxText(), QStringLiteral("100.00%"));
    c->CommitZoomBox(QStringLiteral("3"));
    ASSERT_EQ(recorder.Requests.size(), 2);
    EXPECT_EQ(recorder.LastText(),
              QStringLiteral("无效数字项，要求10.00和2000%之间的整数。已插入最接近的数值。"));
    EXPECT_DOUBLE_EQ(c->ZoomFactor(), 0.1);
    EXPECT_EQ(c->ZoomBoxText(), QStringLiteral("10.00%"));
    c->CommitZoomBox(QStringLiteral("250%"));
    EXPECT_EQ(recorder.Requests.size(), 2);
    EXPECT_DOUBLE_EQ(c->ZoomFactor(), 2.5);
}

TEST(Canvas, UndoAndRedoAcrossPixelSelectionSizeAndModeSteps) {
    auto source = vmtest::RandomImage(20, 10, 24, 4);
    auto c = MakeCanvas(300, 300, QImage(source->Pointer(), 20, 10, source->Stride(), QImage::Format_BGR888));
    const QByteArray original = Bytes(*c->Image());
    EXPECT_FALSE(c->GetUndoState());

    ASSERT_TRUE(Invert(*c->Image()));
    const QByteArray inverted = Bytes(*c->Image());
    ASSERT_TRUE(c->Selection()->AddRectangle(2, 2, 12, 8));
    ASSERT_TRUE(HalveSize(*c->Image()));
    EXPECT_EQ(c->CanvasWidth(), 10);
    EXPECT_EQ(c->Selection()->Width(), 10);
    EXPECT_TRUE(c->Selection()->UseDefaultSetting()) << "a new size starts with everything selected";
    const QByteArray halved = Bytes(*c->Image());
    ASSERT_TRUE(ToGrey(*c->Image()));
    EXPECT_EQ(c->Image()->PixelFormat, PixelFormat8bppGray);
    EXPECT_EQ(c->GetHistory().HistoryPos, 4);

    ASSERT_TRUE(c->Undo()); // mode
    EXPECT_EQ(c->Image()->PixelFormat, PixelFormat24bppRGB);
    EXPECT_EQ(Bytes(*c->Image()), halved);
    EXPECT_EQ(c->Image()->Selection(), c->Selection());
    ASSERT_TRUE(c->Undo()); // size: the old size and the selection of before
    EXPECT_EQ(c->CanvasWidth(), 20);
    EXPECT_EQ(Bytes(*c->Image()), inverted);
    EXPECT_FALSE(c->Selection()->UseDefaultSetting());
    EXPECT_EQ(c->Selection()->Row(3)[3], 255);
    EXPECT_EQ(c->Selection()->Row(0)[0], 0);
    EXPECT_FALSE(c->MarchingAnt()->IsEmptyRgn());
    EXPECT_EQ(c->Image()->SelectionDealRects().front(), (DealRect{2, 2, 11, 7}));
    ASSERT_TRUE(c->Undo()); // selection
    EXPECT_TRUE(c->Selection()->UseDefaultSetting());
    EXPECT_EQ(Bytes(*c->Image()), inverted);
    ASSERT_TRUE(c->Undo()); // pixels
    EXPECT_EQ(Bytes(*c->Image()), original);
    EXPECT_FALSE(c->Undo());

    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(c->Redo());
    EXPECT_EQ(c->CanvasWidth(), 10);
    EXPECT_EQ(c->Image()->PixelFormat, PixelFormat8bppGray);
    EXPECT_FALSE(c->GetRedoState());
    // Operations still reach the history after the image was replaced.
    ASSERT_TRUE(Invert(*c->Image()));
    EXPECT_EQ(c->GetHistory().HistoryPos, 5);
    c->DisposeAll();
    EXPECT_FALSE(c->HasImage());
    EXPECT_EQ(c->Selection(), nullptr);
}
