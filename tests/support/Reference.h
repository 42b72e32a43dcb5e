#pragma once
// The slow, obvious references the fast kernels are held against, written
// once for the filter, selection and kernel tests: each output computed
// straight from its definition over its whole window, with no running sums
// and no tables.
#include <cstdlib>
#include <vector>

namespace vmtest {

// The edge rule: a position beyond either end reads the end sample.
inline int ClampPosition(int v, int n) {
    return v < 0 ? 0 : (v >= n ? n - 1 : v);
}

// One channel of samples, Width a row.
struct Samples {
    int Width = 0, Height = 0;
    std::vector<int> Values;
    int At(int x, int y) const { return Values[static_cast<size_t>(y) * Width + x]; }
    // Positions beyond an edge read the edge sample.
    int Clamped(int x, int y) const { return At(ClampPosition(x, Width), ClampPosition(y, Height)); }
};

// The frame's write-back of a result n over the old byte v at weight m: the
// step truncated toward zero.
inline int Blend(int v, int n, int m) {
    return m == 0 ? v : (m == 255 ? n : v + (n - v) * m / 255);
}

// The (2r + 1)^2 mean with repeated edges, truncated.
inline int BoxMean(const Samples& s, int x, int y, int r) {
    long long sum = 0;
    for (int j = -r; j <= r; ++j)
        for (int i = -r; i <= r; ++i)
            sum += s.Clamped(x + i, y + j);
    return static_cast<int>(sum / ((2LL * r + 1) * (2LL * r + 1)));
}

// One pass of the triangle of weights 1, 2, .., r + 1, .., 2, 1 with repeated
// edges, down the columns (Vertical) or along the rows, truncated by (r + 1)^2.
inline Samples TrianglePass(const Samples& s, int r, bool vertical) {
    Samples out = s;
    const long long total = (r + 1LL) * (r + 1LL);
    for (int y = 0; y < s.Height; ++y)
        for (int x = 0; x < s.Width; ++x) {
            long long sum = 0;
            for (int k = -r; k <= r; ++k)
                sum += (r + 1LL - std::abs(k)) * (vertical ? s.Clamped(x, y + k) : s.Clamped(x + k, y));
            out.Values[static_cast<size_t>(y) * s.Width + x] = static_cast<int>(sum / total);
        }
    return out;
}

// The triangular mean: the vertical pass, then the horizontal one over its means.
inline Samples TriangleMean(const Samples& s, int r) {
    return TrianglePass(TrianglePass(s, r, true), r, false);
}

} // namespace vmtest
