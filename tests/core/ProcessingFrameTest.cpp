// The processing frame through the five point operations: selection and
// weights, events and their nesting, and every pixel format.
#include "core/ProcessingFrame.h"
#include "adjust/Curves.h"
#include "adjust/PointOps.h"
#include "core/Catalogue.h"
#include "core/MessageBox.h"
#include "selection/Selection.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>

using namespace vm;

namespace {

using EventLog = vmtest::ImageEventLog;
using vmtest::SetMask;

// The colour of a pixel as the operation sees it: from the palette for
// palette pictures, otherwise the bytes.
std::array<int, 4> ColourAt(const CImage& img, int x, int y) {
    const QImage rgba = vmtest::ToRgba(img);
    const QRgb c = rgba.pixel(x, y);
    return {qRed(c), qGreen(c), qBlue(c), qAlpha(c)};
}

using Mapping = std::function<std::array<int, 3>(int r, int g, int b)>;

struct OpCase {
    const char* Name;
    std::function<bool(CImage&)> Run;
    Mapping Map;
    bool OnOneBit;
};

ToneTable CurveTable() {
    QList<CurvePoint> pts;
    ParseCurvePoints("0,20;128,200;255,240", pts);
    return ToToneTable(TableFromPoints(pts));
}

std::vector<OpCase> Cases() {
    const auto table = PosterizeTable(3);
    const ToneTable curve = CurveTable();
    return {
        {"Invert", [](CImage& i) { return Invert(i); },
         [](int r, int g, int b) {
             return std::array<int, 3>{255 - r, 255 - g, 255 - b};
         },
         true},
        {"Posterize", [](CImage& i) { return Posterize(i, 3); },
         [table](int r, int g, int b) {
             return std::array<int, 3>{table[r], table[g], table[b]};
         },
         false},
        {"Threshold", [](CImage& i) { return Threshold(i, 100); },
         [](int r, int g, int b) {
             const int v = ((r + 2 * g + b) >> 2) <= 100 ? 0 : 255;
             return std::array<int, 3>{v, v, v};
         },
         false},
        {"Desaturate", [](CImage& i) { return Desaturate(i); },
         [](int r, int g, int b) {
             const int v = (std::max({r, g, b}) + std::min({r, g, b})) >> 1;
             return std::array<int, 3>{v, v, v};
         },
         false},
        // Red and blue through the curve, green through the identity.
        {"Curve", [curve](CImage& i) { return Curve(i, curve, IdentityTable(), curve); },
         [curve](int r, int g, int b) {
             return std::array<int, 3>{curve[r], g, curve[b]};
         },
         false},
    };
}

} // namespace

TEST(ProcessingFrame, EveryFormatThroughEveryPointOperation) {
    for (auto& c : Cases()) {
        const Mapping& map = c.Map;
        for (int bits : {1, 4, 8, 16, 24, 32}) {
            for (bool grey : {false, true}) {
                if (grey && bits != 8) continue;
                auto img = vmtest::RandomImage(9, 5, bits, 77);
                if (grey) img->PixelFormat = PixelFormat8bppGray;
                auto before = img->CloneImage();
                before->PixelFormat = img->PixelFormat;
                EventLog log;
                img->AddListener(&log);
                ASSERT_TRUE(c.Run(*img)) << c.Name << " " << bits;
                ASSERT_GE(log.Lines.size(), 2) << c.Name;
                EXPECT_EQ(log.Lines.first(),
                          QStringLiteral("start 0 %1 0").arg(log.Lines.first().section(' ', 2, 2)));
                const bool unchanged = bits == 16 || (bits == 1 && !c.OnOneBit);
                for (int y = 0; y < 5; ++y)
                    for (int x = 0; x < 9; ++x) {
                        const auto old = ColourAt(*before, x, y);
                        const auto now = ColourAt(*img, x, y);
                        std::array<int, 3> want{old[0], old[1], old[2]};
                        if (!unchanged) {
                            if (grey) {
                                // Grey pictures run the mapping on the value;
                                // Curve takes its third table.
                                const auto m = map(old[0], old[0], old[0]);
                                want = {m[2], m[2], m[2]};
                            } else {
                                want = map(old[0], old[1], old[2]);
                            }
                        }
                        // Alpha is never touched.
                        ASSERT_EQ(now, (std::array<int, 4>{want[0], want[1], want[2], old[3]}))
                            << c.Name << " bits " << bits << " grey " << grey << " at " << x << "," << y;
                    }
            }
        }
    }
}

TEST(ProcessingFrame, WeightsBlendWithTheTruncatingRule) {
    auto img = vmtest::RandomImage(16, 8, 24, 5);
    auto before = img->CloneImage();
    CSelection sel;
    SetMask(sel, 16, 8, [](int x, int y) { return (x * 37 + y * 11) % 256; });
    img->SetSelection(&sel);
    ASSERT_TRUE(Invert(*img));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            for (int c = 0; c < 3; ++c) {
                const int v = before->Row(y)[3 * x + c];
                const int m = (x * 37 + y * 11) % 256;
                // The closed form the inversion is known by.
                ASSERT_EQ(img->Row(y)[3 * x + c], v - (2 * v * m) / 255 + m) << x << "," << y;
            }
}

TEST(ProcessingFrame, IndexedPicturesMapTheirWholePaletteWhateverIsSelected) {
    auto img = vmtest::RandomImage(8, 8, 8, 3);
    const PaletteData pal = img->Palette();
    CSelection sel;
    SetMask(sel, 8, 8, [](int x, int y) { return x == 2 && y == 2 ? 255 : 0; });
    img->SetSelection(&sel);
    ASSERT_TRUE(Invert(*img));
    for (int i = 0; i < 256; ++i)
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(img->Palette().Entry(i)[c], 255 - pal.Entry(i)[c]);
}

TEST(ProcessingFrame, CompoundOperationLeavesOneOuterStep) {
    auto img = vmtest::RandomImage(4, 4, 24, 2);
    EventLog log;
    img->AddListener(&log);
    ASSERT_TRUE(Posterize(*img, 4));
    EXPECT_EQ(log.Lines, QStringList({QStringLiteral("start 0 色调分离 0"), QStringLiteral("start 1 曲线 0"),
                                      QStringLiteral("end 1 曲线 0"), QStringLiteral("end 0 色调分离 0")}));
    EXPECT_FALSE(img->RestrainProgress);
}

TEST(ProcessingFrame, DealRectsCoverExactlyTheSelectedPixels) {
    std::mt19937 gen(9);
    for (int round = 0; round < 20; ++round) {
        const int w = 5 + gen() % 30, h = 5 + gen() % 30;
        CImage img;
        ASSERT_TRUE(img.CreateNewImage(w, h, 24));
        CSelection sel;
        std::vector<int> mask(w * h);
        for (int& m : mask)
            m = (gen() % 3 == 0) ? static_cast<int>(gen() % 256) : 0;
        mask[0] = 200;
        SetMask(sel, w, h, [&](int x, int y) { return mask[y * w + x]; });
        img.SetSelection(&sel);
        std::vector<int> covered(w * h, 0);
        int lastTop = -1;
        for (const DealRect& r : img.SelectionDealRects()) {
            EXPECT_GE(r.Top, lastTop) << "sorted by rows";
            lastTop = r.Top;
            for (int y = r.Top; y <= r.Bottom; ++y)
                for (int x = r.Left; x <= r.Right; ++x)
                    ++covered[y * w + x];
        }
        for (int i = 0; i < w * h; ++i)
            ASSERT_EQ(covered[i], mask[i] ? 1 : 0) << i;
        EXPECT_EQ(img.GetSelectedPixelCount(1),
                  std::count_if(mask.begin(), mask.end(), [](int m) { return m; }));
    }
}

TEST(ProcessingFrame, SelectionImageRangeAndHandOver) {
    CImage img;
    ASSERT_TRUE(img.CreateNewImage(10, 10, 32, 0x102030));
    img.SetAlphaChannelToMaxValue();
    img.Row(3)[4 * 3 + 3] = 100;
    CSelection sel;
    SetMask(sel, 10, 10, [](int x, int y) { return (x >= 2 && x <= 5 && y >= 3 && y <= 4) ? 200 : 0; });
    img.SetSelection(&sel);
    int w = 0, h = 0;
    img.GetSelectionRange(w, h);
    EXPECT_EQ(std::pair(w, h), std::pair(4, 2));
    auto part = img.GetSelectionImage();
    ASSERT_TRUE(part);
    EXPECT_EQ(part->Width(), 4);
    EXPECT_EQ(part->Row(0)[3], 200);
    EXPECT_EQ(part->Row(0)[4 + 3], 200 * 100 / 255) << "alpha is mask times own alpha";
    EXPECT_EQ(part->Row(1)[0], 0x10);
    EXPECT_EQ(part->Row(1)[2], 0x30);
    const DealRect bound = img.GetSelectionBoundRect();
    EXPECT_EQ(bound, (DealRect{2, 3, 5, 4}));
    // Every second row and column from the corner: (2, 4) and (4, 4).
    EXPECT_EQ(img.GetSelectedPixelCount(2), 2);

    auto copy = img.CloneImage();
    copy->FillSolidColor(9);
    EventLog log;
    img.AddListener(&log);
    EXPECT_FALSE(img.VirtualExecute(*copy, QStringLiteral("高斯模糊")));
    EXPECT_EQ(log.Lines,
              QStringList({QStringLiteral("start 0 高斯模糊 3"), QStringLiteral("end 0 高斯模糊 3")}));
    EXPECT_EQ(img.Row(9)[39], 9);
}

TEST(Curves, TablesFromPoints) {
    QList<CurvePoint> two;
    ASSERT_TRUE(ParseCurvePoints("50,10;150,210", two));
    const auto line = TableFromPoints(two);
    EXPECT_EQ(line[0], 10);
    EXPECT_EQ(line[50], 10);
    EXPECT_EQ(line[100], 110);
    EXPECT_EQ(line[150], 210);
    EXPECT_EQ(line[255], 210);

    // A natural spline through three points has one inner equation, which
    // the rounding of the diagonal cannot touch: compare with the textbook.
    QList<CurvePoint> three;
    ASSERT_TRUE(ParseCurvePoints("0,0;100,180;255,255", three));
    const auto curve = TableFromPoints(three);
    const double h1 = 100, h2 = 155;
    const double m = 6 * ((255 - 180) / h2 - 180 / h1) / (2 * (h1 + h2));
    for (int x = 0; x <= 255; ++x) {
        double v;
        if (x <= 100) {
            const double t = x / h1;
            v = (1 - t) * 0 + t * 180 + (t * t * t - t) * m * h1 * h1 / 6;
        } else {
            const double t = (x - 100) / h2, u = 1 - t;
            v = u * 180 + t * 255 + (u * u * u - u) * m * h2 * h2 / 6;
        }
        EXPECT_NEAR(curve[x], std::clamp(std::nearbyint(v), 1.0, 255.0), 1) << x;
    }

    // Overshoot: below black gives 1, above white 255.
    QList<CurvePoint> wild;
    ASSERT_TRUE(ParseCurvePoints("0,0;20,255;40,0;60,255;255,0", wild));
    const auto w = TableFromPoints(wild);
    int ones = 0;
    for (int x = 0; x < 256; ++x) {
        EXPECT_GE(w[x], 0) << x;
        ones += w[x] == 1;
    }
    EXPECT_GT(ones, 0) << "the dips below black land on 1";
    EXPECT_EQ(*std::max_element(w.begin(), w.end()), 255);

    QList<CurvePoint> bad;
    EXPECT_FALSE(ParseCurvePoints("10,10;10,20", bad));
    EXPECT_FALSE(ParseCurvePoints("0,0;256,1", bad));
    EXPECT_FALSE(ParseCurvePoints("x", bad));
    EXPECT_EQ(PosterizeTable(4)[63], 0);
    EXPECT_EQ(PosterizeTable(4)[64], 85);
    EXPECT_EQ(PosterizeTable(4)[255], 255);
}

TEST(Catalogue, RowsAreFoundByKeyOrFunctionAndCheckTheirParameters) {
    const Operation* posterize = FindOperation("Posterize");
    ASSERT_TRUE(posterize);
    EXPECT_EQ(posterize->Title, QStringLiteral("色调分离"));
    QString error;
    EXPECT_TRUE(posterize->Validate(Params({{"Levels", "7"}}), PixelFormat24bppRGB, error));
    EXPECT_FALSE(posterize->Validate(Params({{"Levels", "1"}}), PixelFormat24bppRGB, error));
    EXPECT_FALSE(posterize->Validate(Params({{"Level", "7"}}), PixelFormat24bppRGB, error));
    EXPECT_EQ(posterize->WithDefaults(Params()).Int("Levels"), 4);
    const Operation* curve = FindOperation("Curve");
    ASSERT_TRUE(curve);
    EXPECT_FALSE(curve->Validate(Params({{"Points", "1,2;1,3"}}), PixelFormat24bppRGB, error));
    for (const Operation& op : Catalogue()) {
        EXPECT_FALSE(op.Key.isEmpty());
        EXPECT_FALSE(op.Title.isEmpty());
        EXPECT_EQ(FindOperation(op.Key), &op);
        for (const auto& s : op.Sliders) {
            EXPECT_LE(s.Min, s.Default) << op.Key.toStdString();
            EXPECT_LE(s.Default, s.Max) << op.Key.toStdString();
        }
    }
}

// The frame's own write-back, which every filter's rows go through: weight 0
// keeps the byte, 255 takes the new one, between moves by the truncated step;
// bytes past Channels (alpha) are never written. A frame may announce itself
// under another name than the one its refusal gives.
TEST(ProcessingFrame, BlendSpanWeighsEachByteAndAnnouncesUnderItsName) {
    auto img = vmtest::RandomImage(4, 2, 32, 5);
    const std::vector<uint8_t> before(img->Pointer(), img->Pointer() + img->BlockSize());
    CSelection sel;
    SetMask(sel, 4, 2, [](int x, int) { return std::array{0, 255, 128, 1}[x]; });
    img->SetSelection(&sel);
    EventLog log;
    img->AddListener(&log);
    {
        auto frame = ProcessingFrame::Begin(*img, QStringLiteral("甲"), QStringLiteral("乙"));
        ASSERT_TRUE(frame);
        const uint8_t computed[16] = {9, 9, 9, 9, 200, 201, 202, 203, 200, 0, 77, 5, 255, 0, 255, 0};
        frame.BlendSpan(0, 0, 3, computed, 4, 3);
        frame.End();
        for (int x = 0; x < 4; ++x)
            for (int c = 0; c < 4; ++c) {
                const int v = before[4 * x + c], m = sel.Row(0)[x];
                const int want = c == 3 ? v : (m == 0 ? v : v + (computed[4 * x + c] - v) * m / 255);
                EXPECT_EQ(img->Row(0)[4 * x + c], want) << x << " " << c;
            }
    }
    EXPECT_EQ(0, std::memcmp(img->Row(1), before.data() + img->Stride(), 16));
    EXPECT_EQ(log.Lines, QStringList({"start 0 乙 0", "end 0 乙 0"}));

    SetMask(sel, 4, 2, [](int, int) { return 0; });
    img->SetSelection(&sel);
    MessageRecorder rec;
    log.Lines.clear();
    EXPECT_FALSE(ProcessingFrame::Begin(*img, QStringLiteral("甲"), QStringLiteral("乙")));
    EXPECT_EQ(rec.LastText(), EmptySelectionMessage(QStringLiteral("甲")));
    EXPECT_TRUE(log.Lines.isEmpty());
    img->RemoveListener(&log);
    img->SetSelection(nullptr);
}
