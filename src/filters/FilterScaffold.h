#pragma once
// The one scaffold of the neighbourhood filters. It begins the frame under
// the filter's row (the refusal of an empty selection and the events),
// dispatches on the format (RGB 24, RGBA 32, grey; the others pass through
// with both events), makes the private copy the kernel reads, cuts the
// selection into spans and writes the kernel's results back through the
// mask, then ends the frame. A filter is its kernel:
//
//   return RunFilter(image, {RowOf("BoxBlur")}, [&]<int BPP, int CH>(const FilterPass<BPP, CH>& pass) {
//       pass.ForPixels(cost, [&](int32_t x, int32_t y, int32_t* v) { ...; return true; });
//   });
#include "core/Catalogue.h"
#include "core/ProcessingFrame.h"
#include "filters/FilterSupport.h"

#include <optional>

namespace vm::filters {

// Visits every pixel of the selection with a weight above 0, in bands of rows:
// F(x, y, m, pixel) computes and writes the pixel itself. The pixels go in
// tiles of 32 x 32: the filters that sample far from the pixel (the radial
// and zoom paths) then find their neighbours' samples still in the cache. No
// pixel may depend on another, so that the order changes nothing.
template <class F>
void ForSelectedPixels(const ProcessingFrame& frame, const RowSpans& spans, int bpp, int64_t costPerPixel,
                       F&& f) {
    constexpr int32_t Tile = 32;
    const DealRect b = frame.Bounds();
    ParallelRows(b.Top, b.Bottom, static_cast<int64_t>(b.Right - b.Left + 1) * costPerPixel,
                 [&](int32_t y0, int32_t y1) {
                     for (int32_t top = y0; top <= y1; top += Tile) {
                         const int32_t bottom = std::min(y1, top + Tile - 1);
                         for (int32_t left = b.Left; left <= b.Right; left += Tile) {
                             const int32_t right = std::min(b.Right, left + Tile - 1);
                             for (int32_t y = top; y <= bottom; ++y) {
                                 uint8_t* row = frame.Image().Row(y);
                                 const uint8_t* weights = frame.WeightRow(y);
                                 for (const Span& s : spans.Row(y))
                                     for (int32_t x = std::max(s.Left, left); x <= std::min(s.Right, right);
                                          ++x) {
                                         const int32_t m = ProcessingFrame::WeightIn(weights, x);
                                         if (m) f(x, y, m, row + static_cast<ptrdiff_t>(x) * bpp);
                                     }
                             }
                         }
                     }
                 });
}

// One run of a kernel on one format: BPP bytes a pixel, the first CH of them
// computed; with CH below BPP the alpha byte is left as it is.
template <int BPP, int CH> class FilterPass {
  public:
    static constexpr int Bpp = BPP, Channels = CH;

    FilterPass(const ProcessingFrame& frame, const SourceCopy* source, const RowSpans& spans)
        : frame_(frame), source_(source), spans_(spans), bounds_(frame.Bounds()) {}

    const ProcessingFrame& Frame() const { return frame_; }
    CImage& Image() const { return frame_.Image(); }
    int32_t Width() const { return frame_.Image().Width(); }
    int32_t Height() const { return frame_.Image().Height(); }
    // The picture as it was before the filter began.
    const SourceCopy& Source() const { return *source_; }
    // The smallest rectangle holding every selected pixel.
    const DealRect& Bounds() const { return bounds_; }
    int32_t BoundWidth() const { return bounds_.Right - bounds_.Left + 1; }

    // Row kernels: Band(y0, y1, out) computes the rows y0..y1 of the bound,
    // each into Out (the bound's columns, BPP bytes a pixel), and hands each
    // to WriteRow. Bands run on the cores of the machine.
    template <class Band> void ForRowBands(int64_t costPerPixel, Band&& band) const {
        ParallelRows(bounds_.Top, bounds_.Bottom, static_cast<int64_t>(BoundWidth()) * costPerPixel,
                     [&](int32_t y0, int32_t y1) {
                         std::vector<uint8_t> out(static_cast<size_t>(BoundWidth()) * BPP);
                         band(y0, y1, out.data());
                     });
    }
    // Writes row y of the bound, computed as ForRowBands says, where selected.
    void WriteRow(int32_t y, const uint8_t* computed) const {
        for (const Span& s : spans_.Row(y))
            frame_.BlendSpan(y, s.Left, s.Right,
                             computed + static_cast<ptrdiff_t>(s.Left - bounds_.Left) * BPP, BPP, CH);
    }

    // Pixel kernels: Value(x, y, v) puts the CH new values of a selected
    // pixel in v, or answers false to leave the pixel as it is.
    template <class Value> void ForPixels(int64_t costPerPixel, Value&& value) const {
        ForSelectedPixels(frame_, spans_, BPP, costPerPixel,
                          [&](int32_t x, int32_t y, int32_t m, uint8_t* p) {
                              int32_t v[CH];
                              if (value(x, y, v)) ProcessingFrame::BlendPixel(p, v, CH, m);
                          });
    }

  private:
    const ProcessingFrame& frame_;
    const SourceCopy* source_;
    const RowSpans& spans_;
    DealRect bounds_;
};

// What a filter tells the scaffold besides its kernel.
struct FilterSetup {
    const Operation& Row;                   // whose title refuses and announces
    const Operation* AnnouncedAs = nullptr; // events under another row's title
    bool ReadsCopy = true;                  // whether the kernel reads the private copy
};

// Which bytes of an RGBA 32 pixel a filter computes.
enum class FilterAlpha { Kept, AsChannel };

// Runs Kernel(pass) in the frame; see the head of this file.
template <FilterAlpha Alpha = FilterAlpha::Kept, class Kernel>
bool RunFilter(CImage& image, const FilterSetup& setup, Kernel&& kernel) {
    auto frame = setup.AnnouncedAs ? ProcessingFrame::Begin(image, setup.Row, *setup.AnnouncedAs)
                                   : ProcessingFrame::Begin(image, setup.Row);
    if (!frame) return false;
    const int bpp = FilterBytesPerPixel(image.PixelFormat);
    if (bpp) {
        std::optional<SourceCopy> source;
        if (setup.ReadsCopy) source.emplace(image);
        const RowSpans spans(frame.Rects(), frame.Bounds());
        ForFormat(bpp, [&](auto b) {
            constexpr int BPP = decltype(b)::value;
            constexpr int CH = Alpha == FilterAlpha::AsChannel ? BPP : ColourChannels(BPP);
            kernel(FilterPass<BPP, CH>(frame, source ? &*source : nullptr, spans));
        });
    }
    return frame.End();
}

} // namespace vm::filters
