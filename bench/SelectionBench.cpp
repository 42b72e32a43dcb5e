// Selection morphology on a 4000 x 3000 mask at radii 1, 10 and 100: the
// cost per pixel must not grow with the radius. Each command runs whole, with
// its emptiness check and region rebuild. The second argument picks the blob:
// 0 hard-edged (0 and 255 only), 1 with soft anti-aliased and feathered edges.
#include "selection/Selection.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr int Width = 4000, Height = 3000;

const std::vector<uint8_t>& Blob(bool soft) {
    static std::vector<uint8_t> masks[2];
    std::vector<uint8_t>& m = masks[soft];
    if (m.empty()) {
        vm::CSelection s;
        s.CreateNewSelection(Width, Height);
        s.SetAntiAlias(soft);
        s.AddEllipse(600, 400, 3000, 2400);
        s.SelectionMode = vm::SelectionModeAdd;
        s.AddPolygon(QList<QPoint>{{2500, 300}, {3900, 1500}, {2800, 2950}, {3300, 1400}},
                     vm::FillModeWinding);
        s.SelectionMode = vm::SelectionModeSubtract;
        s.FeatherRadius = soft ? 20 : 0;
        s.AddEllipse(1200, 900, 2000, 1700);
        m.assign(s.Pointer(), s.Pointer() + s.BufferSize());
    }
    return m;
}

template <typename Op> void Run(benchmark::State& state, Op op) {
    const auto& blob = Blob(state.range(1) != 0);
    vm::CSelection s;
    s.CreateNewSelection(Width, Height);
    s.RestrainEvent = true;
    s.SetUseDefaultSetting(false);
    const int radius = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        std::memcpy(s.Pointer(), blob.data(), blob.size());
        state.ResumeTiming();
        op(s, radius);
        benchmark::DoNotOptimize(s.Pointer());
    }
    state.counters["per_pixel"] =
        benchmark::Counter(static_cast<double>(Width) * Height,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void RadiiAndBlobs(benchmark::internal::Benchmark* b) {
    for (int soft : {0, 1})
        for (int r : {1, 10, 100})
            b->Args({r, soft});
    b->Unit(benchmark::kMillisecond)->UseRealTime();
}

void BM_Feather(benchmark::State& state) {
    Run(state, [](vm::CSelection& s, int r) { s.Feather(r); });
}
BENCHMARK(BM_Feather)->Apply(RadiiAndBlobs);

void BM_Smooth(benchmark::State& state) {
    Run(state, [](vm::CSelection& s, int r) { s.Smooth(r); });
}
BENCHMARK(BM_Smooth)->Apply(RadiiAndBlobs);

void BM_ExpandRect(benchmark::State& state) {
    Run(state, [](vm::CSelection& s, int r) { s.ExpandRect(r); });
}
BENCHMARK(BM_ExpandRect)->Apply(RadiiAndBlobs);

void BM_ShrinkRect(benchmark::State& state) {
    Run(state, [](vm::CSelection& s, int r) { s.ShrinkRect(r); });
}
BENCHMARK(BM_ShrinkRect)->Apply(RadiiAndBlobs);

void BM_ExpandRound(benchmark::State& state) {
    Run(state, [](vm::CSelection& s, int r) { s.ExpandRound(r); });
}
BENCHMARK(BM_ExpandRound)->Apply(RadiiAndBlobs);

} // namespace
