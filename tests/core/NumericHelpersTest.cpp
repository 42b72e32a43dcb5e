#include "core/Numeric.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vm;

namespace {
constexpr int32_t Min32 = std::numeric_limits<int32_t>::min();
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
