#include "core/FileFamilies.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/PixelFormat.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace vm;

namespace {
constexpr int32_t Min32 = std::numeric_limits<int32_t>::min();
}

TEST(Numeric, Div255IsTruncatingDivisionForEveryBlendProduct) {
    // Every (n - v) * m a blend can produce, both signs.
    for (int32_t v = -255 * 255; v <= 255 * 255; ++v) ASSERT_EQ(Div255(v), v / 255) << v;
    std::mt19937 gen(7);
    for (int i = 0; i < 100000; ++i) {
        const int32_t v = static_cast<int32_t>(gen());
        ASSERT_EQ(Div255(v), v / 255) << v;
    }
    EXPECT_EQ(BlendByWeight(100, 200, 128), 150);
    EXPECT_EQ(BlendByWeight(200, 100, 128), 150);
    EXPECT_EQ(BlendByWeight(10, 20, 0), 10);
    EXPECT_EQ(BlendByWeight(10, 20, 255), 20);
}

TEST(Numeric, MulDivArcTangentAndRemainders) {
    EXPECT_EQ(MulDiv(1, 1, 2), 1);   // half away from zero
    EXPECT_EQ(MulDiv(-1, 1, 2), -1);
    EXPECT_EQ(MulDiv(1, 255, 2), 128);
    EXPECT_EQ(MulDiv(3, 255, 16), 48);
    EXPECT_EQ(Atan2System(0, 0), 0.0);
    EXPECT_EQ(Atan2System(0, -1), SystemPi);
    EXPECT_NEAR(Atan2System(-1, -1), -3 * SystemPi / 4, 1e-12);
    EXPECT_EQ(Atan2System(1, 0), SystemPi / 2);
    EXPECT_EQ(ModPositive(-7, 3), 2);
    EXPECT_EQ(ModPositive(7, 3), 1);
    EXPECT_DOUBLE_EQ(ModPositive(-0.5, 2.0), 1.5);
}

TEST(Numeric, GausseRndHasUnitSpread) {
    SeedRnd(42);
    double sum = 0, sq = 0;
    const int n = 200000;
    for (int i = 0; i < n; ++i) {
        const double v = GausseRnd();
        sum += v;
        sq += v * v;
    }
    EXPECT_NEAR(sum / n, 0.0, 0.01);
    EXPECT_NEAR(sq / n, 1.0, 0.02);
}

TEST(ShiftHelpers, OnlyTheLowByteOfTheCountCounts) {
    EXPECT_EQ(ShiftLeft(1, 31), Min32);
    EXPECT_EQ(ShiftLeft(1, 32), 0);
    EXPECT_EQ(ShiftLeft(1, 255), 0);
    EXPECT_EQ(ShiftLeft(1, 256), 1); // low byte 0
    EXPECT_EQ(ShiftLeft(1, 257), 2); // low byte 1
    EXPECT_EQ(ShiftLeft(3, 0x11F), Min32);
    EXPECT_EQ(ShiftLeft(1, -1), 0);       // low byte 0xFF
    EXPECT_EQ(ShiftLeft(7, -256), 7);     // low byte 0
    EXPECT_EQ(ShiftLeft(1, -225), Min32); // ...FF1F: low byte 31
    EXPECT_EQ(ShiftLeft(-1, 4), -16);

    EXPECT_EQ(ShiftRight(-1, 31), 1);
    EXPECT_EQ(ShiftRight(-1, 1), 0x7FFFFFFF);
    EXPECT_EQ(ShiftRight(Min32, 0), Min32);
    EXPECT_EQ(ShiftRight(-1, 32), 0);
    EXPECT_EQ(ShiftRight(-1, 255), 0);
    EXPECT_EQ(ShiftRight(-1, 256), -1);
    EXPECT_EQ(ShiftRight(0x100, 264), 1); // 264 = 256 + 8
}

TEST(ShiftHelpers, ArithmeticShiftSpreadsTheSignOnlyBelow32) {
    EXPECT_EQ(ShiftRightArithmetic(-8, 1), -4);
    EXPECT_EQ(ShiftRightArithmetic(-1, 31), -1);
    EXPECT_EQ(ShiftRightArithmetic(Min32, 31), -1);
    EXPECT_EQ(ShiftRightArithmetic(0x40000000, 30), 1);
    // From 32 on the answer is 0, also for negative values.
    EXPECT_EQ(ShiftRightArithmetic(-1, 32), 0);
    EXPECT_EQ(ShiftRightArithmetic(Min32, 64), 0);
    EXPECT_EQ(ShiftRightArithmetic(-1, 255), 0);
    EXPECT_EQ(ShiftRightArithmetic(-1, -1), 0);
    EXPECT_EQ(ShiftRightArithmetic(-16, 256), -16);
    EXPECT_EQ(ShiftRightArithmetic(-16, 258), -4);
}

TEST(ColorRef, SplitAndMake) {
    int32_t r = -1, g = -1, b = -1;
    SplitColor(0x123456, r, g, b);
    EXPECT_EQ(r, 0x56);
    EXPECT_EQ(g, 0x34);
    EXPECT_EQ(b, 0x12);
    // The high byte is ignored.
    SplitColor(0x7F0000FF, r, g, b);
    EXPECT_EQ(r, 0xFF);
    EXPECT_EQ(g, 0);
    EXPECT_EQ(b, 0);
    // A negative colour leaves the components alone.
    r = 1, g = 2, b = 3;
    SplitColor(-1, r, g, b);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(g, 2);
    EXPECT_EQ(b, 3);

    EXPECT_EQ(MakeColorRef(0x56, 0x34, 0x12), 0x123456);
    EXPECT_EQ(MakeColorRef(257, -1, 0), 0x00FF01); // each component keeps its low byte
    for (int32_t c : {0, 0xFFFFFF, 0x0A0B0C, 0x800001}) {
        SplitColor(c, r, g, b);
        EXPECT_EQ(MakeColorRef(r, g, b), c);
    }
}

TEST(RoundHalfEven, HalvesGoToTheEvenNeighbour) {
    EXPECT_EQ(RoundHalfEven(0.5), 0);
    EXPECT_EQ(RoundHalfEven(1.5), 2);
    EXPECT_EQ(RoundHalfEven(2.5), 2);
    EXPECT_EQ(RoundHalfEven(-0.5), 0);
    EXPECT_EQ(RoundHalfEven(-1.5), -2);
    EXPECT_EQ(RoundHalfEven(-2.5), -2);
    EXPECT_EQ(RoundHalfEven(2.4999999), 2);
    EXPECT_EQ(RoundHalfEven(2.5000001), 3);
    EXPECT_EQ(RoundHalfEven(-7.6), -8);
    EXPECT_EQ(RoundHalfEven64(4294967296.5), int64_t{4294967296});
}

TEST(FileFamilies, ExtensionsAndFilterLists) {
    EXPECT_EQ(GetExtensionList(1), "bmp,dib");
    EXPECT_EQ(GetExtensionList(13), "pnm,pbm,pgm,ppm,pfm,pam");
    EXPECT_EQ(GetExtensionList(25), "dcm,dicom");
    EXPECT_EQ(GetExtensionList(0), "Unknown");
    EXPECT_EQ(GetExtensionList(26), "Unknown");

    const auto& open = OpenFilterList();
    ASSERT_EQ(open.size(), 27);
    EXPECT_TRUE(open.first().Text.startsWith(QStringLiteral("所有支持格式")));
    EXPECT_TRUE(open.first().Patterns.contains("*.rle"));
    EXPECT_TRUE(open.first().Patterns.contains("*.dicom"));
    EXPECT_EQ(open[1].Text, "Bmp (*.bmp;*.rle;*.dib)");
    EXPECT_EQ(open[12].Text, QStringLiteral("便携位图 (*.pbm;*.pgm;*.pnm;*.ppm;*.pfm;*.pam)"));
    EXPECT_EQ(open[24].Text, "Microsoft Metafile  (*.wmf)");
    EXPECT_EQ(open[25].Text, "Microsoft Enhanced Metafile (*.emf)");
    EXPECT_TRUE(open.last().Text.startsWith(QStringLiteral("所有文件")));
    EXPECT_EQ(open[1].QtFilter(), "Bmp (*.bmp *.rle *.dib)");

    EXPECT_EQ(SaveAsFilterList(0x26200A).size(), 9);
    EXPECT_EQ(SaveAsFilterList(0x21808).size(), 15);
    EXPECT_EQ(SaveAsFilterList(0x30804).last().Format, RawSka);
    EXPECT_EQ(SaveAsFilterList(0x30803).size(), 12);
    EXPECT_EQ(SaveAsFilterList(0x30402).size(), 6);
    EXPECT_EQ(SaveAsFilterList(0x30101).size(), 11);
    EXPECT_TRUE(SaveAsFilterList(0x21005).isEmpty());
    EXPECT_EQ(SaveAsIndexOf(0x21808, RawPng), 2);
    EXPECT_EQ(SaveAsIndexOf(0x26200A, RawDds), 8);
    EXPECT_EQ(SaveAsIndexOf(0x26200A, RawGif), 0);
}

TEST(MessageBoxRule, TitleButtonsAndCheckBoxReachTheHandler) {
    MessageRecorder rec;
    rec.Answers = {ResultNo};
    rec.NextCheckState = true;
    bool check = false;
    const int answer = MessageBox(QStringLiteral("保存?"), 0, QString(), ButtonsYesNoCancel, IconQuestion,
                                  QStringLiteral("不再提示"), &check);
    EXPECT_EQ(answer, ResultNo);
    EXPECT_TRUE(check);
    ASSERT_EQ(rec.Requests.size(), 1);
    EXPECT_EQ(rec.Requests[0].Title, "Osier VelluMark 2.0");
    EXPECT_EQ(rec.Requests[0].Icon, 101);
    // With the queue empty the first button answers.
    EXPECT_EQ(MessageBox("x", 0, "T", ButtonsConfirmCancel), ResultOk);
    EXPECT_EQ(rec.Requests[1].Title, "T");

    EXPECT_EQ(ButtonsOf(0).first().Caption, QStringLiteral("确定"));
    EXPECT_EQ(ButtonsOf(1).last().Caption, QStringLiteral("取消"));
    EXPECT_EQ(ButtonsOf(3).last().Caption, QStringLiteral("取消(&C)"));
    EXPECT_EQ(ButtonsOf(4).last().Caption, QStringLiteral("追加(&A)"));
    EXPECT_EQ(ButtonsOf(99).size(), 1);
}
