// The generic filter dialogs on a real canvas: the timer between a change and
// the refresh, the preview box, the dial, reset with Alt, Cancel and Esc
// putting the exact bytes back, OK leaving one history step and the stored
// values, and the repeat command running with what OK stored.
#include "app/AppTestSupport.h"
#include "canvas/Canvas.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/OperationSettings.h"
#include "core/SettingsStore.h"
#include "filters/Blur.h"
#include "filters/OtherFilters.h"
#include "filters/ui/FrmPreViewFilters.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <gtest/gtest.h>

#include <cstring>
#include <random>

using namespace vm;
using vmtest::Bytes;

namespace {

// A canvas holding a random picture; 61 pixels wide, so that RGB rows end in
// padding bytes, which are filled with garbage of their own.
std::unique_ptr<Canvas> MakeDocument(QImage::Format format = QImage::Format_RGB888, int w = 61, int h = 40) {
    QImage picture(w, h, format);
    std::mt19937 gen(5);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            picture.setPixel(x, y, qRgba(gen() & 255, gen() & 255, gen() & 255, 100 + (gen() & 127)));
    auto c = std::make_unique<Canvas>();
    c->resize(400, 300);
    EXPECT_TRUE(c->LoadPictureFormStdPicture(picture));
    CImage& img = *c->Image();
    for (int y = 0; y < img.Height(); ++y)
        for (int i = img.Width() * (img.PixelFormat == PixelFormat24bppRGB ? 3 : 4); i < img.Stride(); ++i)
            img.Row(y)[i] = static_cast<uint8_t>(0xA5 ^ y ^ i);
    return c;
}

// The picture after Filter, run on a copy of Source.
QByteArray Filtered(const QByteArray& source, const CImage& like,
                    const std::function<bool(CImage&)>& filter) {
    auto copy = like.CloneImage();
    copy->PixelFormat = like.PixelFormat;
    std::memcpy(copy->Pointer(), source.constData(), static_cast<size_t>(source.size()));
    EXPECT_TRUE(filter(*copy));
    return Bytes(*copy);
}

// Lets the dialog's timer run until the pending refresh is done.
void WaitForRefresh(const FrmPreViewFilters& d) {
    QElapsedTimer t;
    t.start();
    while (d.RefreshPending() && t.elapsed() < 5000)
        QTest::qWait(10);
}

const Operation& Op(const char* key) {
    return *FindOperation(QString::fromUtf8(key));
}

} // namespace

TEST(FilterDialogs, ChangesRefreshTheDocumentWhenTheTimerRunsOut) {
    SaveSetting(SettingsRoot, "BoxBlur", "Radius", "6");
    auto c = MakeDocument();
    CImage& img = *c->Image();
    const QByteArray before = Bytes(img);
    FrmPreViewFilters d(Op("BoxBlur"), *c);
    EXPECT_EQ(d.RefreshCount(), 1);
    EXPECT_GE(d.RefreshDelay(), 0);
    EXPECT_LE(d.RefreshDelay(), 5);
    EXPECT_EQ(d.SliderAt(0)->value(), 6);
    EXPECT_EQ(Bytes(img), Filtered(before, img, [](CImage& i) { return BoxBlur(i, 6); }));

    d.SliderAt(0)->setValue(3);
    EXPECT_EQ(d.TextAt(0)->text(), "3");
    EXPECT_TRUE(d.RefreshPending());
    EXPECT_EQ(d.TickCount(), 0);
    EXPECT_EQ(d.RefreshCount(), 1) << "nothing runs before the timer";
    WaitForRefresh(d);
    EXPECT_EQ(d.RefreshCount(), 2);
    EXPECT_EQ(Bytes(img), Filtered(before, img, [](CImage& i) { return BoxBlur(i, 3); }));

    // A number typed in range moves the slider; one outside moves nothing;
    // Up and Down step by one.
    d.TextAt(0)->clear();
    QTest::keyClicks(d.TextAt(0), "12");
    EXPECT_EQ(d.SliderAt(0)->value(), 12);
    d.TextAt(0)->clear();
    QTest::keyClicks(d.TextAt(0), "-3");
    EXPECT_EQ(d.SliderAt(0)->value(), 12);
    QTest::keyClick(d.TextAt(0), Qt::Key_Up);
    EXPECT_EQ(d.SliderAt(0)->value(), 13);
    WaitForRefresh(d);
    EXPECT_EQ(Bytes(img), Filtered(before, img, [](CImage& i) { return BoxBlur(i, 13); }));
    EXPECT_EQ(c->GetHistory().HistoryCount, 0) << "previews leave no history";
    d.reject();
}

TEST(FilterDialogs, AltTurnsCancelIntoResetAndCancelOrEscapePutTheExactBytesBack) {
    for (bool escape : {false, true}) {
        auto c = MakeDocument();
        CImage& img = *c->Image();
        const QByteArray before = Bytes(img);
        {
            FrmPreViewFilters d(Op("SurfaceBlur"), *c);
            d.SliderAt(0)->setValue(1);
            d.Refresh();
            d.SliderAt(1)->setValue(200);
            d.Refresh();
            ASSERT_NE(Bytes(img), before);
            if (escape) {
                QTest::keyClick(&d, Qt::Key_Escape);
            } else {
                // With Alt held Cancel is Reset, which keeps the dialog open.
                // The reset values differ from the defaults here: 5 and 15.
                QTest::keyPress(&d, Qt::Key_Alt);
                EXPECT_EQ(d.CancelButton()->text(), "复位");
                QTest::mouseClick(d.CancelButton(), Qt::LeftButton);
                EXPECT_EQ(d.SliderAt(0)->value(), 5);
                EXPECT_EQ(d.SliderAt(1)->value(), 15);
                EXPECT_EQ(d.result(), 0);
                EXPECT_FALSE(d.RefreshPending());
                EXPECT_EQ(Bytes(img), Filtered(before, img, [](CImage& i) { return SurfaceBlur(i, 5, 15); }));
                QTest::keyRelease(&d, Qt::Key_Alt);
                EXPECT_EQ(d.CancelButton()->text(), "取消");
                QTest::mouseClick(d.CancelButton(), Qt::LeftButton);
            }
            EXPECT_EQ(d.result(), QDialog::Rejected);
            EXPECT_FALSE(d.Committed());
        }
        EXPECT_EQ(Bytes(img), before) << (escape ? "Esc" : "Cancel");
        EXPECT_EQ(c->GetHistory().HistoryCount, 0);
        EXPECT_TRUE(c->NeedWriteToHistory());
        EXPECT_TRUE(c->isEnabled());
    }
}

TEST(FilterDialogs, OkLeavesOneStepStoresTheValuesAndRepeatRunsThem) {
    auto c = MakeDocument();
    CImage& img = *c->Image();
    const QByteArray before = Bytes(img);
    {
        FrmPreViewFilters d(Op("MotionBlur"), *c);
        d.SliderAt(0)->setValue(17);
        d.AngleText()->clear();
        QTest::keyClicks(d.AngleText(), "-30");
        EXPECT_TRUE(d.RefreshPending());
        d.accept();
        EXPECT_TRUE(d.Committed());
    }
    const QByteArray result = Filtered(before, img, [](CImage& i) { return MotionBlur(i, -30, 17); });
    EXPECT_EQ(Bytes(img), result);
    EXPECT_EQ(c->GetHistory().HistoryCount, 1);
    EXPECT_EQ(GetSetting(SettingsRoot, "MotionBlur", "Distance", ""), "17");
    EXPECT_EQ(GetSetting(SettingsRoot, "MotionBlur", "Angle", ""), "-30");
    EXPECT_EQ(GetSetting(SettingsRoot, "MotionBlur", "PreView", ""), "1");
    ASSERT_TRUE(c->Undo());
    EXPECT_EQ(Bytes(*c->Image()), before);

    // The repeat: the same method with the stored values, no dialog.
    const Operation& op = Op("MotionBlur");
    ASSERT_TRUE(op.Run(*c->Image(), ReadRepeatParams(op, *c->Image())));
    EXPECT_EQ(Bytes(*c->Image()), result);
}

TEST(FilterDialogs, DialPreviewBoxAndCentre) {
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(1, 1), std::atan(1.0));
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(1, -1), 6.2831853071794 - std::atan(1.0));
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(-1, 0), 3.1415926535897);
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(0, 2), 3.1415926535897 / 2);
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(0, -2), -3.1415926535897 / 2);
    EXPECT_DOUBLE_EQ(AngleDial::QuadrantAngle(0, 0), 0);

    auto c = MakeDocument();
    CImage& img = *c->Image();
    const QByteArray before = Bytes(img);
    FrmPreViewFilters d(Op("RadialBlur"), *c);
    EXPECT_EQ(d.AngleText()->text(), "45");
    QTest::mouseClick(d.Dial(), Qt::LeftButton, {}, QPoint(18, 2)); // straight up
    EXPECT_EQ(d.AngleText()->text(), "90");
    EXPECT_TRUE(d.RefreshPending());

    // At 100 % the 61 x 40 picture is shown whole; the right button sets the centre.
    EXPECT_EQ(d.ZoomIndex(), 0);
    EXPECT_EQ(d.ViewSize(), QSize(61, 40));
    EXPECT_EQ(d.ScrollMax(), QPoint(0, 0));
    d.PictureRightPress(QPoint(10, 7));
    EXPECT_EQ(d.CurrentParams().Int("CentreX"), 10);
    EXPECT_EQ(d.CurrentParams().Int("CentreY"), 7);
    WaitForRefresh(d);
    EXPECT_EQ(Bytes(img), Filtered(before, img, [](CImage& i) { return RadialBlur(i, 90, 20, 10, 7); }));

    // Zoom: up to index 9, where the picture scrolls; down while both sides
    // stay at least 5 pixels at the present zoom.
    int in = 0;
    while (d.ZoomIn())
        ++in;
    EXPECT_EQ(in, 9);
    EXPECT_EQ(d.ViewSize(), QSize(256, 256));
    EXPECT_EQ(d.ScrollMax(), QPoint(61 * 16 - 256, 40 * 16 - 256));
    while (d.ZoomOut()) {
    }
    // 40 x 0.125 is still 5: one more step, to 0.0833, and then no further.
    EXPECT_EQ(d.ZoomIndex(), -7);
    d.reject();
}

TEST(FilterDialogs, RangesFollowThePicture) {
    auto c = MakeDocument(QImage::Format_ARGB32);
    ASSERT_EQ(c->Image()->PixelFormat, PixelFormat32bppARGB);
    FrmPreViewFilters d(Op("BoxBlur"), *c);
    EXPECT_EQ(d.SliderAt(0)->maximum(), 90);
    d.reject();

    // The offset's sliders run over the picture's size; OK runs it once.
    auto doc = MakeDocument();
    const QByteArray before = Bytes(*doc->Image());
    FrmNoPreviewFilter n(Op("Offset"), *doc);
    ASSERT_TRUE(n.SetParam("Horization", "-7"));
    ASSERT_TRUE(n.SetParam("Vertical", "3"));
    ASSERT_TRUE(n.SetParam("Edge", "2"));
    n.accept();
    EXPECT_EQ(n.result(), QDialog::Accepted);
    EXPECT_EQ(Bytes(*doc->Image()),
              Filtered(before, *doc->Image(), [](CImage& i) { return Offset(i, -7, 3, 2); }));
    EXPECT_EQ(doc->GetHistory().HistoryCount, 1);

    // The kernel grid: 25 boxes, a blank one counting 0.
    FrmNoPreviewFilter k(Op("Convolute"), *doc);
    EXPECT_EQ(k.findChildren<QLineEdit*>().size(), 27);
    const QByteArray shifted = Bytes(*doc->Image());
    for (int i = 0; i < 25; ++i)
        k.SetParam(QStringLiteral("Matrix%1").arg(i), i == 12 ? "2" : "");
    k.SetParam("Divider", "2");
    k.accept();
    EXPECT_EQ(k.result(), QDialog::Accepted);
    EXPECT_EQ(Bytes(*doc->Image()), shifted);
    EXPECT_EQ(doc->GetHistory().HistoryCount, 2);

    // A map that cannot be read, or none, keeps the dialog open and says so
    // in the dialog's words.
    MessageRecorder rec;
    FrmNoPreviewFilter v(Op("VariableBlur"), *doc);
    for (const char* file : {"/nowhere/map.bmp", ""}) {
        v.SetParam("FileName", file);
        v.accept();
        EXPECT_NE(v.result(), QDialog::Accepted);
        EXPECT_TRUE(rec.LastText().startsWith(QStringLiteral("“变径模糊”命令的“文件”")))
            << rec.LastText().toStdString();
    }
    EXPECT_EQ(doc->GetHistory().HistoryCount, 2);
}

TEST(FilterDialogs, APreviewOrAnOkShortOfMemorySaysSoAndKeepsTheDocument) {
    MessageRecorder rec;
    auto c = MakeDocument();
    const QByteArray before = Bytes(*c->Image());
    Operation starved = Op("BoxBlur");
    int runs = 0;
    starved.Run = [&runs](CImage&, const Params&) -> bool {
        ++runs;
        throw std::bad_alloc();
    };
    {
        FrmPreViewFilters d(starved, *c);
        EXPECT_EQ(runs, 1);
        EXPECT_EQ(rec.LastText(), OutOfMemoryMessage());
        d.reject();
    }
    EXPECT_EQ(Bytes(*c->Image()), before);
    EXPECT_EQ(c->GetHistory().HistoryCount, 0);

    starved.NoPreview = true;
    rec.Requests.clear();
    FrmNoPreviewFilter n(starved, *c);
    n.accept();
    EXPECT_NE(n.result(), QDialog::Accepted);
    ASSERT_EQ(rec.Requests.size(), 1);
    EXPECT_EQ(rec.LastText(), OutOfMemoryMessage());
    EXPECT_EQ(c->GetHistory().HistoryCount, 0);
}
