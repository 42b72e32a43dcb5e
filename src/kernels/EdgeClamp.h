#pragma once
// The one border rule of the neighbourhood kernels, filters and selection
// alike: a position beyond either end reads the end sample. Kernels take
// their positions from tables built here, so that no clamp test stands in an
// inner loop.
#include <algorithm>
#include <cstdint>
#include <vector>

namespace vm::kernels {

// The nearest position inside 0 .. Size - 1 (Size at least 1).
inline int32_t ClampIndex(int64_t v, int32_t size) {
    return v < 0 ? 0 : (v >= size ? size - 1 : static_cast<int32_t>(v));
}

// The clamped positions From..To, less Origin, in units of Step: offsets into
// a row or a band that starts at Origin.
inline std::vector<int32_t> ClampedIndexTable(int64_t from, int64_t to, int32_t size, int32_t origin,
                                              int step) {
    std::vector<int32_t> t(static_cast<size_t>(std::max<int64_t>(0, to - from + 1)));
    for (int64_t i = from; i <= to; ++i)
        t[static_cast<size_t>(i - from)] = (ClampIndex(i, size) - origin) * step;
    return t;
}

// Calls Fn(position, times) for the positions the window Lo..Hi reaches on N
// samples, the end samples counted once for each place they stand in for.
template <typename Fn> void ForEachClamped(int64_t lo, int64_t hi, int32_t n, Fn&& fn) {
    if (lo < 0) fn(int64_t{0}, std::min<int64_t>(hi, -1) - lo + 1);
    if (hi > n - 1) fn(int64_t{n} - 1, hi - std::max<int64_t>(lo, n) + 1);
    for (int64_t i = std::max<int64_t>(lo, 0), e = std::min<int64_t>(hi, n - 1); i <= e; ++i)
        fn(i, int64_t{1});
}

} // namespace vm::kernels
