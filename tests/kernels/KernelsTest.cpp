// The kernel library against the plain references: random samples, every
// edge, bands that start inside the picture, radii larger than the picture.
#include "kernels/EdgeClamp.h"
#include "kernels/ExactDivision.h"
#include "kernels/ParallelRows.h"
#include "kernels/RunningMeans.h"
#include "support/Reference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <random>

using namespace vm::kernels;
using vmtest::Samples;

namespace {

// Interleaved random bytes, Bpp a pixel, with a padded stride.
struct Picture {
    int Width, Height, Bpp;
    std::vector<uint8_t> Bytes;
    ptrdiff_t Stride() const { return (Width * Bpp + 3) / 4 * 4 + 4; }
    Picture(int w, int h, int bpp, unsigned seed) : Width(w), Height(h), Bpp(bpp) {
        std::mt19937 gen(seed);
        Bytes.resize(static_cast<size_t>(Stride()) * h);
        for (auto& b : Bytes)
            b = static_cast<uint8_t>(gen());
    }
    Plane View() const { return {Bytes.data(), Stride(), Width, Height}; }
    Samples Channel(int c) const {
        Samples s{Width, Height, {}};
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                s.Values.push_back(Bytes[static_cast<size_t>(y * Stride() + x * Bpp + c)]);
        return s;
    }
};

// What a band kernel put, per channel, as samples of the bound's columns and
// the band's rows; each row must end with EndRow after all its values.
template <int CH> struct Collected {
    int Left, Top, Width, Height;
    std::vector<Samples> Channels;
    int Puts = 0, Rows = 0;
    Collected(int left, int top, int w, int h) : Left(left), Top(top), Width(w), Height(h) {
        for (int c = 0; c < CH; ++c)
            Channels.push_back({w, h, std::vector<int>(static_cast<size_t>(w) * h, -1)});
    }
    auto Put() {
        return [this](int32_t y, int32_t x, int ch, int32_t v) {
            ++Puts;
            Channels[ch].Values[static_cast<size_t>(y - Top) * Width + (x - Left)] = v;
        };
    }
    auto EndRow() {
        return [this](int32_t y) {
            EXPECT_EQ(y, Top + Rows);
            EXPECT_EQ(Puts, (Rows + 1) * Width * CH);
            ++Rows;
        };
    }
};

struct Region {
    int Left, Right, Top, Bottom;
};

// Pictures of every shape that matters, with the windows cut from them: the
// whole, an inner band and a single pixel.
template <class Check> void ForEachCase(Check check) {
    unsigned seed = 1;
    for (auto [w, h] : {std::pair{1, 1}, {1, 7}, {9, 1}, {13, 11}, {40, 23}})
        for (int r : {0, 1, 3, 30}) {
            check(w, h, r, seed++, Region{0, w - 1, 0, h - 1});
            check(w, h, r, seed++, Region{w / 3, w - 1 - w / 4, h / 2, h - 1});
            check(w, h, r, seed++, Region{w - 1, w - 1, h / 2, h / 2});
        }
}

// Runs Band (BoxMeanBand or TriangleMeanBand, BPP, CH) over the region of a
// random picture and holds each value against Want(channel samples, x, y).
template <int BPP, int CH, class Band, class Want>
void CheckBand(int w, int h, int r, unsigned seed, Region g, Band band, Want want) {
    const Picture pic(w, h, BPP, seed);
    Collected<CH> got(g.Left, g.Top, g.Right - g.Left + 1, g.Bottom - g.Top + 1);
    band(pic.View(), g.Left, g.Right, r, g.Top, g.Bottom, got.Put(), got.EndRow());
    ASSERT_EQ(got.Rows, got.Height);
    for (int c = 0; c < CH; ++c) {
        const Samples in = pic.Channel(c);
        const Samples triangle = vmtest::TriangleMean(in, r);
        for (int y = g.Top; y <= g.Bottom; ++y)
            for (int x = g.Left; x <= g.Right; ++x)
                ASSERT_EQ(got.Channels[c].At(x - g.Left, y - g.Top), want(in, triangle, x, y))
                    << w << "x" << h << " r" << r << " at " << x << "," << y << " channel " << c;
    }
}

template <int BPP, int CH, typename Acc> void CheckBox(int w, int h, int r, unsigned seed, Region g) {
    CheckBand<BPP, CH>(
        w, h, r, seed, g, [](auto&&... a) { BoxMeanBand<Acc, BPP, CH>(a...); },
        [r](const Samples& in, const Samples&, int x, int y) { return vmtest::BoxMean(in, x, y, r); });
}

template <int BPP, int CH, typename Acc> void CheckTriangle(int w, int h, int r, unsigned seed, Region g) {
    CheckBand<BPP, CH>(
        w, h, r, seed, g, [](auto&&... a) { TriangleMeanBand<Acc, BPP, CH>(a...); },
        [](const Samples&, const Samples& triangle, int x, int y) { return triangle.At(x, y); });
}

} // namespace

TEST(EdgeClamp, TablesAndWindowsRepeatTheEndSamples) {
    EXPECT_EQ(ClampIndex(-5000000000LL, 7), 0);
    EXPECT_EQ(ClampIndex(6, 7), 6);
    EXPECT_EQ(ClampIndex(7, 7), 6);
    EXPECT_EQ(ClampIndex(3, 1), 0);
    // Offsets into a band that starts at column 2, three bytes a pixel.
    EXPECT_EQ(ClampedIndexTable(-2, 6, 5, 2, 3), std::vector<int32_t>({-6, -6, -6, -3, 0, 3, 6, 6, 6}));
    EXPECT_TRUE(ClampedIndexTable(4, 3, 5, 0, 1).empty());

    // Each window's positions and counts are those of counting every clamped place.
    for (int n : {1, 2, 9})
        for (int lo = -12; lo <= 12; ++lo)
            for (int hi = lo; hi <= lo + 25; ++hi) {
                std::vector<int64_t> want(static_cast<size_t>(n), 0), got(static_cast<size_t>(n), 0);
                for (int i = lo; i <= hi; ++i)
                    ++want[static_cast<size_t>(vmtest::ClampPosition(i, n))];
                ForEachClamped(lo, hi, n, [&](int64_t i, int64_t times) {
                    ASSERT_GE(i, 0);
                    ASSERT_LT(i, n);
                    got[static_cast<size_t>(i)] += times;
                });
                ASSERT_EQ(got, want) << n << " " << lo << ".." << hi;
            }
}

TEST(ExactDivision, FastDividerIsExactOverTheWholeRange) {
    std::mt19937 gen(7);
    std::vector<uint32_t> divisors;
    for (uint32_t d = 1; d <= 3000; ++d)
        divisors.push_back(d);
    for (int i = 0; i < 2000; ++i)
        divisors.push_back(1 + gen() % 0x7FFFFFFF);
    divisors.push_back(0x7FFFFFFF);
    divisors.push_back(0x80000000u);
    for (uint32_t d : divisors) {
        const FastDivider divide(d);
        std::vector<uint32_t> ns = {
            0, 1, d - 1, d, d + 1, 0x7FFFFFFF, 0x7FFFFFFF - 0x7FFFFFFF % d, 0x7FFFFFFF - 0x7FFFFFFF % d - 1};
        for (int i = 0; i < 20; ++i) {
            const uint32_t k = gen() % (0x7FFFFFFF / d + 1);
            ns.push_back(k * d);
            if (k) ns.push_back(k * d - 1);
            ns.push_back(gen() & 0x7FFFFFFF);
        }
        for (uint32_t n : ns) {
            if (n > 0x7FFFFFFF) continue;
            ASSERT_EQ(divide(n), n / d) << n << " / " << d;
        }
    }
    // Wide sums divide plainly, beyond what 32 bits hold.
    const SumDivider<int64_t> wide(int64_t{1} << 20);
    EXPECT_EQ(wide((int64_t{255} << 40) + 5), int64_t{255} << 20);
    EXPECT_TRUE(FitsInt32(INT32_MAX / 255));
    EXPECT_FALSE(FitsInt32(INT32_MAX / 255 + 1));
}

TEST(RunningSums, ColumnSumsFollowTheWindowDownEveryRow) {
    for (int r : {0, 2, 9}) {
        const Picture pic(6, 5, 3, 40 + r);
        // Columns 1..4 of channel 0..2, starting at row 0 and moved to the last.
        ColumnSums<int32_t, 3, 3> sums(pic.View(), 1, 4, r, 0);
        ColumnSums<int64_t, 3, 3, true> squares(pic.View(), 1, 4, r, 0);
        for (int y = 0; y < pic.Height; ++y) {
            if (y > 0) {
                sums.MoveTo(y);
                squares.MoveTo(y);
            }
            for (int c = 0; c < 4; ++c)
                for (int ch = 0; ch < 3; ++ch) {
                    const Samples in = pic.Channel(ch);
                    int64_t plain = 0, square = 0;
                    for (int k = y - r; k <= y + r; ++k) {
                        const int v = in.Clamped(1 + c, k);
                        plain += v;
                        square += int64_t{v} * v;
                    }
                    ASSERT_EQ(sums.Data()[c * 3 + ch], plain) << r << " " << y << " " << c;
                    ASSERT_EQ(squares.Data()[c * 3 + ch], square) << r << " " << y << " " << c;
                }
        }
    }
}

TEST(RunningSums, BoxMeanEqualsTheReference) {
    ForEachCase([](int w, int h, int r, unsigned seed, Region g) {
        CheckBox<1, 1, int32_t>(w, h, r, seed, g);
        CheckBox<3, 3, int32_t>(w, h, r, seed, g);
        // Alpha is neither a channel nor read into one.
        CheckBox<4, 3, int64_t>(w, h, r, seed, g);
    });
}

TEST(RunningMeans, TriangleMeanEqualsTheReference) {
    ForEachCase([](int w, int h, int r, unsigned seed, Region g) {
        CheckTriangle<1, 1, int32_t>(w, h, r, seed, g);
        CheckTriangle<4, 4, int32_t>(w, h, r, seed, g);
        CheckTriangle<4, 3, int64_t>(w, h, r, seed, g);
    });
}

TEST(ParallelRows, EveryRowOnceInBandsOfWholeRows) {
    for (auto [first, last, perRow] : {std::tuple{0, 0, 1}, {3, 2, 1}, {5, 4000, 100000}, {0, 7, 1 << 20}}) {
        const int rows = std::max(0, last - first + 1);
        std::vector<std::atomic<int>> seen(static_cast<size_t>(rows));
        std::mutex lock;
        std::vector<std::pair<int32_t, int32_t>> bands;
        ParallelRows(first, last, perRow, [&](int32_t a, int32_t b) {
            {
                std::lock_guard<std::mutex> hold(lock);
                bands.emplace_back(a, b);
            }
            for (int32_t y = a; y <= b; ++y)
                ++seen[static_cast<size_t>(y - first)];
        });
        for (int i = 0; i < rows; ++i)
            ASSERT_EQ(seen[static_cast<size_t>(i)].load(), 1) << first + i;
        for (auto [a, b] : bands)
            EXPECT_LE(a, b);
        EXPECT_EQ(bands.empty(), rows == 0);
    }
}
