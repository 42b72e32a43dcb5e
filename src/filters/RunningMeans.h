#pragma once
// The running means of the kernel library as filter kernels: over the bound's
// rows in bands, each mean turned into the byte written by Value(y, x,
// channel, mean), then written back where selected.
#include "filters/FilterScaffold.h"
#include "kernels/RunningMeans.h"

namespace vm::filters {

namespace detail {

// Band(acc, y0, y1, put, endRow) runs the kernel with sums of acc's type,
// chosen so that byte sums under a total weight of Weight cannot wrap.
template <int BPP, int CH, class Value, class Band>
void MeanRows(const FilterPass<BPP, CH>& pass, int64_t weight, const Value& value, Band&& band) {
    const int32_t left = pass.Bounds().Left;
    pass.ForRowBands(1, [&](int32_t y0, int32_t y1, uint8_t* out) {
        auto put = [out, left, value](int32_t y, int32_t x, int ch, int32_t mean) {
            out[static_cast<size_t>(x - left) * BPP + ch] = static_cast<uint8_t>(value(y, x, ch, mean));
        };
        auto endRow = [&pass, out](int32_t y) { pass.WriteRow(y, out); };
        if (kernels::FitsInt32(weight))
            band(int32_t{}, y0, y1, put, endRow);
        else
            band(int64_t{}, y0, y1, put, endRow);
    });
}

} // namespace detail

// The (2r + 1)^2 box mean.
template <int BPP, int CH, class Value>
void BoxMeanRows(const FilterPass<BPP, CH>& pass, int32_t r, Value value) {
    const int64_t side = 2 * static_cast<int64_t>(r) + 1;
    const DealRect& b = pass.Bounds();
    detail::MeanRows(pass, side * side, value, [&](auto acc, int32_t y0, int32_t y1, auto put, auto endRow) {
        kernels::BoxMeanBand<decltype(acc), BPP, CH>(pass.Source().Plane(), b.Left, b.Right, r, y0, y1, put,
                                                     endRow);
    });
}

// The triangular mean of weights 1 .. r + 1 .. 1 in each direction.
template <int BPP, int CH, class Value>
void TriangleMeanRows(const FilterPass<BPP, CH>& pass, int32_t r, Value value) {
    const int64_t side = static_cast<int64_t>(r) + 1;
    const DealRect& b = pass.Bounds();
    detail::MeanRows(pass, side * side, value, [&](auto acc, int32_t y0, int32_t y1, auto put, auto endRow) {
        kernels::TriangleMeanBand<decltype(acc), BPP, CH>(pass.Source().Plane(), b.Left, b.Right, r, y0, y1,
                                                          put, endRow);
    });
}

// The mean itself as the byte.
inline constexpr auto MeanItself = [](int32_t, int32_t, int, int32_t mean) { return mean; };

} // namespace vm::filters
