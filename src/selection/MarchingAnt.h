#pragma once
// CMarchingAnt: the animated outline of a selection. It clips the selection's
// region to the canvas, scales it to the view's zoom, reduces it to a closed
// one-pixel line and fills that line with one of eight phases of an 8 x 8
// diagonal stripe; stepping the phase on a timer makes the ants march.
#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRegion>

#include <array>
#include <cstdint>

class QPainter;

namespace vm {

class CSelection;

class CMarchingAnt {
  public:
    using Pattern = std::array<uint8_t, 8>;

    CMarchingAnt();

    // Direction is the "MarchingAntStartPos" setting: 0 and 3 mirror the
    // stripe, 2 and 3 run the phases backwards.
    bool Init(int32_t Width, int32_t Height, int32_t Direction = 0);
    void Dispose();
    // Forgets the outlines; the canvas rectangle stays.
    void Clear();

    // The selection's region (mask coordinates); it is clipped to the canvas,
    // zoomed by ScaleFactor, moved by the start position and outlined.
    void SetMarchingAntRegion(const QRegion& Region);
    // A default selection has no outline to show.
    void SetMarchingAntRegion(const CSelection& Selection);
    // The outline of a shape being drawn, same treatment as the selection's.
    void SetMouseRegion(const QRegion& Region);
    const QRegion& GetMarchingAntRegion() const { return antRegion_; }
    const QRegion& GetMouseRegion() const { return mouseRegion_; }
    const QRegion& SourceRegion() const { return sourceRegion_; }
    bool IsEmptyRgn() const { return antRegion_.isEmpty(); }

    // Position of the image in the view.
    void Offset(int32_t X, int32_t Y) { startPosition_ = QPoint(X, Y); }
    QPoint StartPosition() const { return startPosition_; }
    double ScaleFactor() const { return scaleFactor_; }
    void SetScaleFactor(double Value) { scaleFactor_ = Value; }
    bool Visible = true;

    void RotateBrush() { phase_ = (phase_ + 1) & 7; }
    int32_t Phase() const { return phase_; }
    // Bit rows of the brush in a slot, most significant bit leftmost.
    const Pattern& BrushPattern(int32_t Slot) const { return brushes_[Slot & 7]; }
    // The slot's pattern as a one-bit picture: set bits in One, clear bits in Two.
    QImage BrushImage(int32_t Slot, const QColor& One, const QColor& Two) const;

    // Fills the outline (or the mouse's) shifted by X, Y with the current
    // phase, set bits in colour One, clear bits in colour Two.
    void PaintToDC(QPainter& Dc, int32_t X, int32_t Y, bool UseMouseRegion, const QColor& One,
                   const QColor& Two) const;

    // Scales the rectangles of a region, widening each to whole view pixels so
    // that neighbours never part at fractional zoom, then shifts it.
    static QRegion ZoomRegion(const QRegion& Region, double ScaleX, double ScaleY, int32_t OffsetX,
                              int32_t OffsetY);
    // The pixels of a region that have a diagonal neighbour outside it.
    static QRegion OutlineRegion(const QRegion& Region);

  private:
    QRegion Prepare(const QRegion& Region) const;

    std::array<Pattern, 8> brushes_{};
    QRegion canvasRegion_;
    QRegion sourceRegion_;
    QRegion antRegion_;
    QRegion mouseRegion_;
    QPoint startPosition_;
    double scaleFactor_ = 1.0;
    int32_t phase_ = 0;
};

} // namespace vm
