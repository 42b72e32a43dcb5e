#pragma once
// The frame every pixel operation runs in, written once: the empty-selection
// refusal, the two progress events, the visiting rectangles, the mask weight
// and the truncating blend, and the per-format treatment of point operations.
//
//   auto frame = ProcessingFrame::Begin(image, RowOf("Invert"));
//   if (!frame) return false;
//   ... frame.Rects(), frame.VisitPixels(...), frame.BlendPixel(...) ...
//   return frame.End();
#include "core/Catalogue.h"
#include "core/Image.h"
#include "core/Numeric.h"

#include <QString>

namespace vm {

// The message of an operation refused for an empty selection.
QString EmptySelectionMessage(const QString& Name);

class ProcessingFrame {
  public:
    // Tests the list. Empty: shows the message, raises nothing and answers an
    // inactive frame. Otherwise raises ProgressStart(RestrainProgress, Name, 0).
    static ProcessingFrame Begin(CImage& Image, const QString& Name) { return Begin(Image, Name, Name); }
    // The same under the row's title.
    static ProcessingFrame Begin(CImage& Image, const Operation& Row) { return Begin(Image, Row.Title); }
    // An operation that announces itself under another name than the one the
    // user chose (the high pass runs as the blur): the refusal names Name,
    // the events carry AnnouncedAs.
    static ProcessingFrame Begin(CImage& Image, const QString& Name, const QString& AnnouncedAs);
    static ProcessingFrame Begin(CImage& Image, const Operation& Row, const Operation& AnnouncedAs) {
        return Begin(Image, Row.Title, AnnouncedAs.Title);
    }

    ProcessingFrame(ProcessingFrame&& other) noexcept;
    ProcessingFrame& operator=(ProcessingFrame&&) = delete;
    ~ProcessingFrame();

    explicit operator bool() const { return image_ != nullptr; }
    CImage& Image() const { return *image_; }
    const QString& Name() const { return name_; }
    const std::vector<DealRect>& Rects() const { return image_->SelectionDealRects(); }
    // Smallest Left and Top, largest Right and Bottom of the rectangles.
    DealRect Bounds() const;
    // True when every weight is 255 and the mask is never read.
    bool FullWeight() const { return full_; }
    // Pointer whose [x] is the weight of pixel (x, y); null with full weight.
    const uint8_t* WeightRow(int32_t y) const { return full_ ? nullptr : image_->MaskRowFor(y); }
    // The weight of pixel x in a row given by WeightRow.
    static int32_t WeightIn(const uint8_t* Weights, int32_t x) { return Weights ? Weights[x] : 255; }
    int32_t Weight(int32_t x, int32_t y) const { return WeightIn(WeightRow(y), x); }

    // ---- visiting and writing back through the mask
    // Calls f(x, y, m, p) for each pixel of the rectangles whose weight m is
    // not 0, p its first byte; the rectangles in order, rows top down.
    template <class F> void VisitPixels(int Bpp, F&& f) const;
    // Writes the first Channels bytes of a pixel from Values at weight M (not
    // 0) by the truncating rule.
    static void BlendPixel(uint8_t* P, const int32_t* Values, int Channels, int32_t M) {
        if (M == 255) {
            for (int c = 0; c < Channels; ++c)
                P[c] = static_cast<uint8_t>(Values[c]);
        } else {
            for (int c = 0; c < Channels; ++c)
                P[c] = static_cast<uint8_t>(BlendByWeight(P[c], Values[c], M));
        }
    }
    // The same for pixel (x, y) of the picture, at its own weight.
    void BlendAt(int32_t x, int32_t y, const int32_t* Values, int Bpp, int Channels) const {
        const int32_t m = Weight(x, y);
        if (m) BlendPixel(image_->Row(y) + static_cast<ptrdiff_t>(x) * Bpp, Values, Channels, m);
    }
    // Writes pixels Left..Right of row y from Computed, which holds the new
    // bytes of pixel Left first, Bpp a pixel; only the first Channels bytes
    // of each pixel are written, so that RGBA 32 keeps its alpha where the
    // operation leaves it.
    void BlendSpan(int32_t y, int32_t Left, int32_t Right, const uint8_t* Computed, int Bpp,
                   int Channels) const;

    // Raises ProgressEnd(RestrainProgress, Name, Kind, Extra) and answers true.
    bool End(int Kind = ProgressPixels, const QString& Extra = QString());

    // A compound operation runs inner operations on the same image between
    // these two: their events arrive restrained and leave no step of their own.
    void RestrainInner() { image_->RestrainProgress = true; }
    void ReleaseInner() { image_->RestrainProgress = false; }

    // ---- point operations, by format
    // Colour pixels of RGB 24 and RGBA 32: f(b, g, r, nb, ng, nr) computes the
    // new clamped bytes; alpha is neither read nor written.
    // Blend(v, n, m) weighs a byte of a partly selected pixel; the default is
    // the frame's truncating rule.
    template <class F, class B = decltype(&BlendByWeight)>
    void MapColorPixels(F&& f, B blend = &BlendByWeight);
    // Grey pixels: f(v) answers the new clamped value.
    template <class F, class B = decltype(&BlendByWeight)>
    void MapGreyPixels(F&& f, B blend = &BlendByWeight);
    // Palette images (and whatever else the caller lets through): every entry
    // below Count goes through f(b, g, r, nb, ng, nr); the selection has no effect.
    template <class F> void MapPalette(F&& f);

  private:
    ProcessingFrame(CImage* image, const QString& name, bool full)
        : image_(image), name_(name), full_(full) {}
    CImage* image_;
    QString name_;
    bool full_;
    bool ended_ = false;
};

template <class F> void ProcessingFrame::VisitPixels(int bpp, F&& f) const {
    CImage& img = *image_;
    for (const DealRect& r : Rects()) {
        for (int32_t y = r.Top; y <= r.Bottom; ++y) {
            uint8_t* p = img.Row(y) + static_cast<ptrdiff_t>(r.Left) * bpp;
            const uint8_t* weights = WeightRow(y);
            for (int32_t x = r.Left; x <= r.Right; ++x, p += bpp) {
                const int32_t m = WeightIn(weights, x);
                if (m) f(x, y, m, p);
            }
        }
    }
}

template <class F, class B> void ProcessingFrame::MapColorPixels(F&& f, B blend) {
    const int bpp = image_->PixelFormat == PixelFormat32bppARGB ? 4 : 3;
    VisitPixels(bpp, [&](int32_t, int32_t, int32_t m, uint8_t* p) {
        int32_t n[3];
        f(p[0], p[1], p[2], n[0], n[1], n[2]);
        if (m == 255) {
            BlendPixel(p, n, 3, 255);
        } else {
            for (int c = 0; c < 3; ++c)
                p[c] = static_cast<uint8_t>(blend(p[c], n[c], m));
        }
    });
}

template <class F, class B> void ProcessingFrame::MapGreyPixels(F&& f, B blend) {
    VisitPixels(1, [&](int32_t, int32_t, int32_t m, uint8_t* p) {
        const int32_t n = f(*p);
        *p = static_cast<uint8_t>(m == 255 ? n : blend(*p, n, m));
    });
}

template <class F> void ProcessingFrame::MapPalette(F&& f) {
    CImage& img = *image_;
    PaletteData pal = img.Palette();
    const uint32_t n = std::min<uint32_t>(pal.Count, 256);
    for (uint32_t i = 0; i < n; ++i) {
        uint8_t* e = pal.Entry(static_cast<int>(i));
        int32_t nb, ng, nr;
        f(e[0], e[1], e[2], nb, ng, nr);
        e[0] = static_cast<uint8_t>(nb);
        e[1] = static_cast<uint8_t>(ng);
        e[2] = static_cast<uint8_t>(nr);
    }
    img.SetPaletteData(pal);
}

// Whether a format maps its palette instead of its pixels in point operations.
inline bool IsPaletteFormat(uint32_t Format) {
    return Format == PixelFormat8bppIndexed || Format == PixelFormat4bppIndexed;
}

} // namespace vm
