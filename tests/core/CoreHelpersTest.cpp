#include "core/FileFamilies.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/PixelFormat.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>

using namespace vm;

namespace {
constexpr int32_t Min32 = std::numeric_limits<int32_t>::min();
}

TEST(Numeric, Div255IsTruncatingDivisionForEveryBlendProduct) {
    // Every (n - v) * m a blend can produce, both signs.
    for (int32_t v = -255 * 255; v <= 255 * 255; ++v)
        ASSERT_EQ(Div255(v), v / 255) << v;
    std::mt19937 gen(7);
    for (int i = 0; i < 100000; ++i) {
        const int32_t v = static_cast<int32_t>(gen());
        ASSERT_EQ(Div255(v), v / 255) << v;
    }
    EXPECT_EQ(BlendByWeight(100, 200, 128), 150);
    EXPECT_EQ(BlendByWeight(200, 100, 128), 150);
}

TEST(Numeric, MulDivArcTangentAndRemainders) {
    EXPECT_EQ(MulDiv(1, 1, 2), 1); // half away from zero
    EXPECT_EQ(MulDiv(-1, 1, 2), -1);
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
    // {value, count, answer}: from 32 on a logical shift gives 0; the count's
    // low byte is all that counts (-1 is 0xFF, -225 is ...FF1F, 264 is 8).
    const int32_t left[][3] = {{1, 31, Min32},    {1, 32, 0}, {1, 255, 0},  {1, 256, 1},      {1, 257, 2},
                               {3, 0x11F, Min32}, {1, -1, 0}, {7, -256, 7}, {1, -225, Min32}, {-1, 4, -16}};
    for (const auto& c : left)
        EXPECT_EQ(ShiftLeft(c[0], c[1]), c[2]) << c[0] << " << " << c[1];
    const int32_t right[][3] = {{-1, 31, 1},  {-1, 1, 0x7FFFFFFF}, {Min32, 0, Min32}, {-1, 32, 0},
                                {-1, 255, 0}, {-1, 256, -1},       {0x100, 264, 1}};
    for (const auto& c : right)
        EXPECT_EQ(ShiftRight(c[0], c[1]), c[2]) << c[0] << " >> " << c[1];
    // The arithmetic shift spreads the sign only below 32; from 32 on the
    // answer is 0, also for negative values.
    const int32_t arithmetic[][3] = {{-8, 1, -4},     {-1, 31, -1},   {Min32, 31, -1}, {0x40000000, 30, 1},
                                     {-1, 32, 0},     {Min32, 64, 0}, {-1, 255, 0},    {-1, -1, 0},
                                     {-16, 256, -16}, {-16, 258, -4}};
    for (const auto& c : arithmetic)
        EXPECT_EQ(ShiftRightArithmetic(c[0], c[1]), c[2]) << c[0] << " >> " << c[1];
}

TEST(ColorRef, SplitAndMake) {
    auto split = [](int32_t c) {
        std::array<int32_t, 3> rgb{1, 2, 3};
        SplitColor(c, rgb[0], rgb[1], rgb[2]);
        return rgb;
    };
    EXPECT_EQ(split(0x123456), (std::array<int32_t, 3>{0x56, 0x34, 0x12}));
    EXPECT_EQ(split(0x7F0000FF), (std::array<int32_t, 3>{0xFF, 0, 0})); // the high byte is ignored
    EXPECT_EQ(split(-1), (std::array<int32_t, 3>{1, 2, 3}));            // a negative colour changes nothing
    EXPECT_EQ(MakeColorRef(0x56, 0x34, 0x12), 0x123456);
    EXPECT_EQ(MakeColorRef(257, -1, 0), 0x00FF01); // each component keeps its low byte
    for (int32_t c : {0, 0xFFFFFF, 0x0A0B0C, 0x800001}) {
        const auto rgb = split(c);
        EXPECT_EQ(MakeColorRef(rgb[0], rgb[1], rgb[2]), c);
    }
}

TEST(RoundHalfEven, HalvesGoToTheEvenNeighbour) {
    const double cases[][2] = {{0.5, 0},   {1.5, 2},   {2.5, 2},       {-0.5, 0},     {-1.5, -2},
                               {-2.5, -2}, {-7.6, -8}, {2.4999999, 2}, {2.5000001, 3}};
    for (const auto& c : cases)
        EXPECT_EQ(RoundHalfEven(c[0]), c[1]) << c[0];
    EXPECT_EQ(RoundHalfEven64(4294967296.5), int64_t{4294967296});
}

TEST(FileFamilies, ExtensionsAndFilterLists) {
    EXPECT_EQ(GetExtensionList(13), "pnm,pbm,pgm,ppm,pfm,pam");
    EXPECT_EQ(GetExtensionList(0), "Unknown");
    EXPECT_EQ(GetExtensionList(26), "Unknown");

    const auto& open = OpenFilterList();
    ASSERT_EQ(open.size(), 27);
    EXPECT_TRUE(open.first().Patterns.contains("*.rle"));
    EXPECT_TRUE(open.first().Patterns.contains("*.dicom"));
    EXPECT_EQ(open[1].QtFilter(), "Bmp (*.bmp *.rle *.dib)");
    EXPECT_TRUE(open.last().Text.startsWith(QStringLiteral("所有文件")));

    // {depth and mode flags, entries offered}
    for (auto [flags, size] :
         {std::pair{0x26200A, 9}, {0x21808, 15}, {0x30803, 12}, {0x30402, 6}, {0x30101, 11}, {0x21005, 0}})
        EXPECT_EQ(SaveAsFilterList(flags).size(), size) << std::hex << flags;
    EXPECT_EQ(SaveAsFilterList(0x30804).last().Format, RawSka);
    EXPECT_EQ(SaveAsIndexOf(0x21808, RawPng), 2);
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

    EXPECT_EQ(ButtonsOf(3).last().Caption, QStringLiteral("取消(&C)"));
    EXPECT_EQ(ButtonsOf(99).size(), 1);
}
