// The running means of the kernel library on their own, over a 24-megapixel
// plane (6000 x 4000) of one channel and of three: the cost a sample must not
// grow with the radius. The filters and the feather add their frames to these.
#include "kernels/RunningMeans.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int Width = 6000, Height = 4000;

const std::vector<uint8_t>& Bytes(int bpp) {
    static std::vector<uint8_t> planes[5];
    std::vector<uint8_t>& p = planes[bpp];
    if (p.empty()) {
        p.resize(static_cast<size_t>(Width) * Height * bpp);
        std::mt19937 gen(3);
        for (size_t i = 0; i < p.size(); ++i)
            p[i] = static_cast<uint8_t>((i / 97 + (gen() & 31)) & 255);
    }
    return p;
}

template <int BPP, bool Triangle> void BM_Mean(benchmark::State& state) {
    const std::vector<uint8_t>& bytes = Bytes(BPP);
    const vm::kernels::Plane plane{bytes.data(), ptrdiff_t{Width} * BPP, Width, Height};
    const int r = static_cast<int>(state.range(0));
    std::vector<uint8_t> row(static_cast<size_t>(Width) * BPP);
    auto put = [&](int32_t, int32_t x, int ch, int32_t v) { row[static_cast<size_t>(x) * BPP + ch] = v; };
    auto endRow = [&](int32_t) { benchmark::DoNotOptimize(row.data()); };
    for (auto _ : state) {
        if constexpr (Triangle)
            vm::kernels::TriangleMeanBand<int32_t, BPP, BPP>(plane, 0, Width - 1, r, 0, Height - 1, put,
                                                             endRow);
        else
            vm::kernels::BoxMeanBand<int32_t, BPP, BPP>(plane, 0, Width - 1, r, 0, Height - 1, put, endRow);
    }
    state.counters["per_pixel"] =
        benchmark::Counter(static_cast<double>(Width) * Height,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Radii(benchmark::internal::Benchmark* b) {
    b->Arg(2)->Arg(200)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(BM_Mean<1, true>)->Name("BM_TriangleMean/grey")->Apply(Radii);
BENCHMARK(BM_Mean<3, true>)->Name("BM_TriangleMean/rgb")->Apply(Radii);
BENCHMARK(BM_Mean<1, false>)->Name("BM_BoxMean/grey")->Apply(Radii);
BENCHMARK(BM_Mean<3, false>)->Name("BM_BoxMean/rgb")->Apply(Radii);

} // namespace
