// The panels beside the canvas, driven as a user would: the histogram's
// sampling and statistics, the information readout, the navigator's frame and
// scrolling, the colour sliders and the swatch lists.
#include "adjust/PointOps.h"
#include "app/AppTestSupport.h"
#include "app/ColorPanel.h"
#include "app/HistogramPanel.h"
#include "app/InfoPanel.h"
#include "app/NavigatorPanel.h"
#include "app/PanelArea.h"
#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/StartUpTables.h"
#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QSlider>
#include <QTabWidget>
#include <QToolButton>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

using namespace vm;

namespace {

class PanelsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = Globals();
        Globals() = AppSettings();
        LoadSwatches(DefaultSwatchTable(), Globals().ColorList, Globals().ColorName);
    }
    void TearDown() override { Globals() = saved_; }

    static std::unique_ptr<Canvas> CanvasOf(const QImage& picture, int viewW = 300, int viewH = 200) {
        return vmtest::MakeCanvas(viewW, viewH, picture);
    }
    // A canvas on an 8-bit grey picture of one level, through a grey PNG.
    static std::unique_ptr<Canvas> GreyCanvas(int w, int h, uint8_t level) {
        const QString file = vmtest::TempDir() + QStringLiteral("/panel-grey.png");
        EXPECT_TRUE(vmtest::Grey(w, h, level)->SavePictureToFile(file, RawPng, SaveOptions()));
        auto c = vmtest::MakeCanvas(300, 200);
        EXPECT_TRUE(c->LoadPictureFromFile(file));
        EXPECT_EQ(c->Image()->PixelFormat, PixelFormat8bppGray);
        return c;
    }
    static QImage Noise(int w, int h, unsigned seed) {
        QImage q(w, h, QImage::Format_RGB888);
        uint32_t s = seed;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w * 3; ++x) {
                s = s * 1664525u + 1013904223u;
                q.scanLine(y)[x] = static_cast<uint8_t>(s >> 24);
            }
        return q;
    }
    AppSettings saved_;
};

TEST_F(PanelsTest, HistogramSamplesBySizeAndTheUncachedRefreshCountsEveryPixel) {
    HistogramPanel panel;
    struct Case {
        int W, H, Level;
    } cases[] = {{100, 100, 1}, {1000, 1000, 2}, {2000, 1000, 4}};
    for (const Case& k : cases) {
        auto c = CanvasOf(vmtest::Solid(k.W, k.H, QColor(10, 20, 30)));
        panel.SetCanvas(c.get());
        ASSERT_TRUE(panel.HasData());
        EXPECT_EQ(panel.CacheLevel(), k.Level) << k.W << "x" << k.H;
        const int64_t step = k.Level;
        EXPECT_EQ(panel.HistPixelCount(), ((k.W + step - 1) / step) * ((k.H + step - 1) / step));
        panel.UpdateHistGram(true);
        EXPECT_EQ(panel.CacheLevel(), 1);
        EXPECT_EQ(panel.HistPixelCount(), int64_t(k.W) * k.H);
        // The next change counts with the cache again.
        panel.SetCanvas(c.get());
        EXPECT_EQ(panel.CacheLevel(), k.Level);
        panel.SetCanvas(nullptr);
    }
    EXPECT_FALSE(panel.HasData());
}

TEST_F(PanelsTest, HistogramStatisticsMatchTheirDirectComputation) {
    Globals().HistViewMode = 1;
    Globals().ShowStatistics = true;
    HistogramPanel panel;
    const QImage q = Noise(60, 40, 7);
    auto c = CanvasOf(q);
    panel.SetCanvas(c.get());
    // The red channel, straight from the pixels.
    panel.SetChannel(1);
    double sum = 0, sq = 0;
    std::vector<int> values;
    for (int y = 0; y < q.height(); ++y)
        for (int x = 0; x < q.width(); ++x)
            values.push_back(q.scanLine(y)[3 * x]);
    for (int v : values)
        sum += v;
    const double n = double(values.size()), mean = sum / n;
    for (int v : values)
        sq += (v - mean) * (v - mean);
    std::sort(values.begin(), values.end());
    // The smallest level whose running count reaches n / 2.
    const int median = values[static_cast<size_t>(std::ceil(n / 2)) - 1];
    const QString text = panel.StatisticsText();
    EXPECT_TRUE(text.contains(QStringLiteral("平均值: ") + QString::number(mean, 'f', 2)))
        << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("标准偏差: ") + QString::number(std::sqrt(sq / n), 'f', 2)))
        << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("中间值: %1").arg(median))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("像素: 2400")));
    // The pointer readout: unknown until a level is under the pointer.
    EXPECT_TRUE(panel.PointerText().contains(QStringLiteral("色阶: ...")));
    const auto count = std::count(values.begin(), values.end(), 200);
    panel.ShowLevel(200);
    EXPECT_TRUE(panel.PointerText().contains(QStringLiteral("数量: %1").arg(count)));
    EXPECT_TRUE(panel.PointerText().contains(QStringLiteral("百分位: ") +
                                             QString::number(count * 100.0 / n, 'f', 2)));

    // A grey picture offers only its one channel; an empty selection blanks the panel.
    auto g = GreyCanvas(20, 20, 90);
    panel.SetCanvas(g.get());
    EXPECT_EQ(panel.ChannelNames(), QStringList{QStringLiteral("灰度")});
    EXPECT_TRUE(panel.StatisticsText().contains(QStringLiteral("中间值: 90")));
    g->Selection()->SelectAll();
    g->Selection()->Left = 40; // the whole mask moved off the picture
    g->Image()->UpdateSelectionDealRect();
    ASSERT_TRUE(g->Image()->IsSelectionEmpty());
    panel.UpdateHistGram(false);
    EXPECT_FALSE(panel.HasData());
}

TEST_F(PanelsTest, HistogramDrawsTheChannelsInTheirColoursWhenAsked) {
    auto c = CanvasOf(vmtest::Solid(10, 10, QColor(255, 0, 0))); // red 255, green and blue 0
    Globals().HistViewMode = 1;
    HistogramPanel panel;
    panel.SetCanvas(c.get());
    auto colours = [&] {
        const QImage plot = panel.Plot();
        std::set<QRgb> seen;
        for (int y = 0; y < plot.height(); ++y)
            for (int x = 0; x < plot.width(); ++x)
                seen.insert(plot.pixel(x, y) & 0xFFFFFF);
        return seen;
    };
    EXPECT_FALSE(colours().count(0xFF0000));
    panel.SetUseOriginalColor(true);
    // Red at 255 alone; green and blue overlap at 0.
    EXPECT_TRUE(colours().count(0xFF0000));
    EXPECT_TRUE(colours().count(0x00FFFF));
}

TEST_F(PanelsTest, InfoReadoutFollowsThePointerInBothModes) {
    QImage q = vmtest::Solid(4, 4, Qt::black, QImage::Format_ARGB32);
    q.setPixelColor(0, 0, QColor(255, 0, 0, 255));
    auto c = CanvasOf(q);
    const CImage* image = c->Image();
    const QStringList rgb = InfoReadout(image, 0, 0, InfoRgb, 0);
    EXPECT_EQ(rgb, (QStringList{QStringLiteral("R:     255"), QStringLiteral("G:     0"),
                                QStringLiteral("B:     0")}));
    EXPECT_TRUE(InfoReadout(image, 0, 0, InfoActualColor, 0).contains(QStringLiteral("A:     255")));
    EXPECT_EQ(InfoReadout(image, 0, 0, InfoHsb, 0).first(), QStringLiteral("H:     0°"));
    EXPECT_EQ(InfoReadout(image, 0, 0, InfoCmyk, 0)[1], QStringLiteral("M:     100%"));
    // The picker's 3 x 3 sample at the corner averages the four pixels there.
    EXPECT_EQ(InfoReadout(image, 0, 0, InfoRgb, 1).first(), QStringLiteral("R:     63"));
    // Away from the picture the labels stay and the values go.
    EXPECT_EQ(InfoReadout(image, -1, -1, InfoRgb, 0).first(), QStringLiteral("R:     "));

    InfoPanel panel;
    panel.SetCanvas(c.get());
    panel.SetMode(1, InfoRgb);
    panel.AdjustInfoPosition(QPoint(0, 0));
    EXPECT_TRUE(panel.ColumnText(1).startsWith(QStringLiteral("R:     255")));
    EXPECT_TRUE(panel.PositionText().startsWith(QStringLiteral("X:     0")));
    c->Selection()->AddRectangle(1, 1, 3, 4);
    EXPECT_EQ(panel.SizeText(), QStringLiteral("W:     2\nH:     3"));

    auto g = GreyCanvas(2, 2, 0);
    EXPECT_EQ(InfoReadout(g->Image(), 0, 0, InfoActualColor, 0), QStringList{QStringLiteral("K:     100%")});
}

TEST_F(PanelsTest, NavigatorFramesTheVisiblePartAndScrollsTheCanvas) {
    auto c = CanvasOf(Noise(800, 600, 3), 200, 150);
    NavigatorPanel nav;
    nav.resize(260, 240);
    nav.show();
    nav.SetCanvas(c.get());
    c->SetZoomFactor(2, 1.0);
    ASSERT_FALSE(nav.PicturePlace().isEmpty());
    const QRect frame = nav.FrameRect();
    EXPECT_TRUE(nav.PicturePlace().contains(frame)) << "the frame lies on the picture";
    EXPECT_LT(frame.width(), nav.PicturePlace().width() / 2);
    // A press at the picture's centre brings the image's centre into view.
    nav.ScrollTo(nav.PicturePlace().center());
    int32_t l, t, r, b;
    c->GetVisibleRect(l, t, r, b);
    EXPECT_LE(l, 400);
    EXPECT_GE(r, 400);
    EXPECT_LE(t, 300);
    EXPECT_GE(b, 300);
    EXPECT_TRUE(nav.FrameRect().contains(nav.PicturePlace().center()));
    // The slider's scale runs both ways and zooms the canvas.
    for (double f : {0.0276, 0.25, 1.0, 3.0, 20.0})
        EXPECT_NEAR(NavigatorPanel::FactorOfSlider(NavigatorPanel::SliderValueOf(f)), f, f * 0.01);
    nav.ZoomSlider()->setValue(NavigatorPanel::SliderValueOf(2.0));
    EXPECT_NEAR(c->ZoomFactor(), 2.0, 0.02);
    nav.ZoomOutButton()->click();
    EXPECT_LT(c->ZoomFactor(), 1.99);
}

TEST_F(PanelsTest, ColourSlidersSetTheChosenColourInEachSpace) {
    ColorPanel panel;
    int changes = 0;
    QObject::connect(&panel, &ColorPanel::ColorsChanged, [&] { ++changes; });
    panel.SetSpace(ColorSpaceRgb);
    panel.SetChannel(0, 255);
    EXPECT_EQ(Globals().SystemForeColor, 0x0000FF);
    panel.SelectForeColor(false);
    EXPECT_EQ(panel.Channel(0), 255) << "the background is white";
    panel.SetChannel(2, 0);
    EXPECT_EQ(Globals().SystemBackColor, 0x00FFFF);
    EXPECT_EQ(changes, 2);
    // Channels convert back to the colour they came from, within the rounding
    // of whole numbers (Lab's steps are coarse at the corners of the gamut).
    for (int32_t colour : {0x000000, 0xFFFFFF, 0x336699, 0x00FF00}) {
        for (int s : {ColorSpaceRgb, ColorSpaceHsb, ColorSpaceCmyk, ColorSpaceLab}) {
            const int32_t back = ColorOfChannels(s, ChannelValues(s, colour));
            for (int shift : {0, 8, 16})
                EXPECT_NEAR((back >> shift) & 0xFF, (colour >> shift) & 0xFF, s == ColorSpaceLab ? 12 : 3)
                    << s << " " << colour;
        }
    }
    EXPECT_EQ(ColorOfChannels(ColorSpaceWeb, ChannelValues(ColorSpaceWeb, 0x336699)), 0x336699);
}

TEST_F(PanelsTest, SwatchListsLoadSaveReplaceAndReset) {
    SwatchPanel panel;
    const size_t standard = Globals().ColorList.size();
    ASSERT_EQ(standard, 121u);
    for (int i = 0; i < SwatchPanel::BookNames().size(); ++i)
        EXPECT_FALSE(SwatchPanel::Book(i).empty()) << SwatchPanel::BookNames()[i].toStdString();
    panel.ChooseSwatch(2, false);
    EXPECT_EQ(Globals().SystemForeColor, Globals().ColorList[2]);
    panel.ChooseSwatch(3, true);
    EXPECT_EQ(Globals().SystemBackColor, Globals().ColorList[3]);

    const QString file = vmtest::TempDir() + QStringLiteral("/panel.swatches");
    panel.UseBook(2);
    const std::vector<int32_t> web = Globals().ColorList;
    EXPECT_EQ(web.size(), SwatchPanel::Book(2).size());
    ASSERT_TRUE(panel.SaveTo(file));
    panel.ResetSwatches();
    EXPECT_EQ(Globals().ColorList.size(), standard);
    ASSERT_TRUE(panel.LoadFrom(file, false));
    EXPECT_EQ(Globals().ColorList.size(), standard + web.size()) << "loading appends";
    ASSERT_TRUE(panel.LoadFrom(file, true));
    EXPECT_EQ(Globals().ColorList, web) << "replacing takes the file's list";
    EXPECT_FALSE(panel.LoadFrom(file + QStringLiteral(".missing"), true));
    EXPECT_EQ(Globals().ColorList, web);
    panel.AddColor(0x123456);
    EXPECT_EQ(Globals().ColorList.back(), 0x123456);
    panel.RemoveAt(static_cast<int>(Globals().ColorList.size()) - 1);
    EXPECT_EQ(Globals().ColorList, web);
}

TEST_F(PanelsTest, TheOpenHistogramFollowsCommandsOnceTheyAreOver) {
    auto c = vmtest::MakeCanvas(200, 150, vmtest::Solid(40, 30, QColor(10, 10, 10)));
    Globals().HistViewMode = 1;
    PanelArea area;
    area.TabPanOrInfo()->setCurrentIndex(1);
    area.SetCanvas(c.get());
    ASSERT_TRUE(area.Histogram()->StatisticsText().contains(QStringLiteral("平均值: 10.00")));
    // A command on the document, then a new selection: the panel counts
    // when the event loop comes round, over the selected pixels.
    ASSERT_TRUE(Invert(*c->Image()));
    ASSERT_TRUE(c->Selection()->AddRectangle(0, 0, 10, 10));
    EXPECT_TRUE(area.Histogram()->StatisticsText().contains(QStringLiteral("平均值: 10.00")));
    QCoreApplication::processEvents();
    const QString text = area.Histogram()->StatisticsText();
    EXPECT_TRUE(text.contains(QStringLiteral("平均值: 245.00"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("像素: 100"))) << text.toStdString();
}

} // namespace
