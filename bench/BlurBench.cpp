// The blurs and the "其他" filters on a 24-megapixel RGB picture (6000 x 4000)
// at a small and a large radius. BoxBlur, GaussianBlur, FarBlur, MotionBlur
// and VariableBlur must cost the same at radius 2 and 200; SurfaceBlur and
// SelectiveGaussianBlur grow with the square of theirs, which stops at 10,
// and the radial and zoom paths with their number of samples.
// Each filter runs in place on the picture over and over: its cost does not
// depend on what the pixels hold.
#include "filters/Blur.h"
#include "filters/OtherFilters.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <random>

namespace {

constexpr int Width = 6000, Height = 4000;

vm::CImage& Picture() {
    static vm::CImage& img = *[] {
        auto* made = new vm::CImage;
        vm::CImage& i = *made;
        i.CreateNewImage(Width, Height, 24);
        std::mt19937 gen(1);
        // Smooth shapes with noise on top, like a photograph.
        for (int y = 0; y < Height; ++y) {
            uint8_t* row = i.Row(y);
            for (int x = 0; x < Width; ++x)
                for (int c = 0; c < 3; ++c)
                    row[3 * x + c] = static_cast<uint8_t>((x * (c + 1) / 31 + y / 17 + (gen() & 15)) & 255);
        }
        return made;
    }();
    return img;
}

// A white map: every pixel takes the full radius, 255 * R / 100.
const vm::CImage& WhiteMap() {
    static const vm::CImage& map = *[] {
        auto* m = new vm::CImage;
        m->CreateNewImage(16, 16, 8);
        m->PixelFormat = vm::PixelFormat8bppGray;
        m->FillSolidColor(255);
        return m;
    }();
    return map;
}

void Run(benchmark::State& state, const std::function<bool(vm::CImage&, int)>& op) {
    vm::CImage& img = Picture();
    const int r = static_cast<int>(state.range(0));
    for (auto _ : state) {
        if (!op(img, r)) state.SkipWithError("the filter refused");
        benchmark::DoNotOptimize(img.Pointer());
    }
    state.counters["per_pixel"] =
        benchmark::Counter(static_cast<double>(Width) * Height,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Radii(benchmark::internal::Benchmark* b, std::initializer_list<int> radii, int iterations = 0) {
    for (int r : radii)
        b->Arg(r);
    b->Unit(benchmark::kMillisecond)->UseRealTime();
    if (iterations) b->Iterations(iterations);
}

#define FILTER_BENCH(Name, Body, ...)                                                                        \
    void BM_##Name(benchmark::State& state) {                                                                \
        Run(state, [](vm::CImage& img, int r) { return Body; });                                             \
    }                                                                                                        \
    BENCHMARK(BM_##Name)->Apply([](benchmark::internal::Benchmark* b) { Radii(b, __VA_ARGS__); })

// Constant cost per pixel, whatever the radius.
FILTER_BENCH(BoxBlur, vm::BoxBlur(img, r), {2, 200});
FILTER_BENCH(GaussianBlur, vm::GaussianBlur(img, r), {2, 200});
FILTER_BENCH(FarBlur, vm::FarBlur(img, r), {2, 200});
FILTER_BENCH(MotionBlur, vm::MotionBlur(img, 30, r), {2, 200});
// RadiusX and RadiusY in percent of the map's grey: 1 gives a half-width of
// 2 on white, 79 one of 201.
FILTER_BENCH(VariableBlur, vm::VariableBlur(img, WhiteMap(), r, r, false), {1, 79});
FILTER_BENCH(Unfocus, vm::Unfocus(img, r), {2, 20});
FILTER_BENCH(HighPass, vm::HighPass(img, r), {2, 200});
FILTER_BENCH(ShowMeanSquareError, vm::ShowMeanSquareError(img, r), {2, 100});
FILTER_BENCH(AverageBlur, vm::AverageBlur(img), {0});
FILTER_BENCH(Offset, vm::Offset(img, r, r, 2), {2, 200});
FILTER_BENCH(Convolute,
             vm::Convolute(img, {1, 2, 3, 2, 1, 2, 4, 6, 4, 2, 3, 6, 9, 6, 3, 2, 4, 6, 4, 2, 1, 2, 3, 2, 1},
                           0, 81),
             {0});
// Cost growing with the radius, as the rectangle or the window does.
FILTER_BENCH(MaxFilters, vm::MaxFilters(img, r, r), {2, 100}, 2);
FILTER_BENCH(MinFilters, vm::MinFilters(img, r, r), {2, 100}, 2);
FILTER_BENCH(SelectiveGaussianBlur, vm::SelectiveGaussianBlur(img, r, 20), {2, 10}, 1);
FILTER_BENCH(SurfaceBlur, vm::SurfaceBlur(img, r, 20), {2, 10}, 1);
FILTER_BENCH(RadialBlur, vm::RadialBlur(img, 10, r, Width / 2, Height / 2), {10, 200}, 1);
FILTER_BENCH(ZoomBlur, vm::ZoomBlur(img, 50, r, Width / 2, Height / 2), {10, 200}, 1);

} // namespace
