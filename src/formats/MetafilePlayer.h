#pragma once
// A small GDI on top of QPainter: the device context state that WMF and EMF
// records change (mapping, world transform, selected objects, colours and
// modes, clipping, the path under construction) and the drawing calls they
// make. WmfParser and EmfParser decode the records and call it.
//
// Drawing is aliased, as GDI's is. In mask mode every colour is white, so that
// a black canvas ends up white exactly where the records touched it: the
// metafile families take their alpha plane from that.
#include "formats/ParserCommon.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QString>
#include <QTransform>

#include <cstdint>
#include <functional>
#include <vector>

namespace vm {

class CImage;

struct GdiPen {
    uint32_t Style = 0; // PS_* with the end cap and join bits of extended pens
    double Width = 0;   // logical units; 0 is one device pixel
    uint32_t Color = 0; // COLORREF
};

struct GdiBrush {
    uint32_t Style = 0; // BS_SOLID 0, BS_NULL 1, BS_HATCHED 2, BS_PATTERN 3, BS_DIBPATTERN 5 and 6
    uint32_t Color = 0xFFFFFF;
    uint32_t Hatch = 0;
    QImage Pattern;
};

struct GdiFont {
    int32_t Height = 0;     // logical units; negative: character height, positive: cell height
    int32_t Escapement = 0; // tenths of a degree
    int32_t Weight = 400;
    bool Italic = false, Underline = false, StrikeOut = false;
    QString Face;
};

struct GdiObject {
    enum Kind { None, Pen, Brush, Font, Other } Type = None;
    GdiPen PenValue;
    GdiBrush BrushValue;
    GdiFont FontValue;
};

class MetafilePlayer {
  public:
    // Base maps the page space of the records (reference device pixels) onto
    // Target. PixelsPerMillimetre serves the fixed mapping modes.
    MetafilePlayer(QImage& Target, bool MaskOnly, const QTransform& Base, double PixelsPerMillimetre);

    // ---- mapping
    void SetMapMode(int32_t Mode);
    void SetWindowOrg(double X, double Y);
    void SetWindowExt(double X, double Y);
    void SetViewportOrg(double X, double Y);
    void SetViewportExt(double X, double Y);
    void OffsetWindowOrg(double X, double Y);
    void OffsetViewportOrg(double X, double Y);
    void ScaleWindowExt(double XNum, double XDenom, double YNum, double YDenom);
    void ScaleViewportExt(double XNum, double XDenom, double YNum, double YDenom);
    void SetWorldTransform(const QTransform& World);
    // Mode 1 identity, 2 left multiply, 3 right multiply, 4 set.
    void ModifyWorldTransform(const QTransform& World, uint32_t Mode);

    // ---- state
    void SetBkColor(uint32_t Color) { state_.BkColor = Color; }
    void SetBkMode(int32_t Mode) { state_.BkMode = Mode; }
    void SetTextColor(uint32_t Color) { state_.TextColor = Color; }
    void SetTextAlign(uint32_t Align) { state_.TextAlign = Align; }
    void SetPolyFillMode(int32_t Mode) { state_.FillMode = Mode; }
    void SetRop2(int32_t Rop) { state_.Rop2 = Rop; }
    void SelectObject(const GdiObject& Object);
    void SaveDC();
    void RestoreDC(int32_t Which);

    // ---- drawing, in logical coordinates
    void MoveTo(double X, double Y);
    void LineTo(double X, double Y);
    void Polyline(const QPolygonF& Points);
    void PolylineTo(const QPolygonF& Points);
    void PolyBezier(const QPolygonF& Points);
    void PolyBezierTo(const QPolygonF& Points);
    void Polygon(const QPolygonF& Points);
    void PolyPolygon(const std::vector<QPolygonF>& Polygons);
    void PolyPolyline(const std::vector<QPolygonF>& Lines);
    void Rectangle(double L, double T, double R, double B);
    void RoundRect(double L, double T, double R, double B, double W, double H);
    void Ellipse(double L, double T, double R, double B);
    // Kind 0 arc, 1 pie, 2 chord; the start and end points give the angles.
    void ArcShape(int Kind, double L, double T, double R, double B, double XStart, double YStart, double XEnd,
                  double YEnd);
    void SetPixel(double X, double Y, uint32_t Color);
    void PatBlt(double X, double Y, double W, double H, uint32_t Rop);
    // Draws Bitmap's source rectangle over the destination rectangle.
    void StretchBitmap(const QImage& Bitmap, double DX, double DY, double DW, double DH, double SX, double SY,
                       double SW, double SH, uint32_t Rop);
    void TextOut(double X, double Y, const QString& Text, uint32_t Options, const QRectF* Box);

    // ---- paths
    void BeginPath();
    void EndPath() { inPath_ = false; }
    void AbortPath();
    void CloseFigure();
    void FillPath();
    void StrokePath();
    void StrokeAndFillPath();
    void SelectClipPath(int32_t Mode);

    // ---- clipping
    void IntersectClipRect(double L, double T, double R, double B);
    void ExcludeClipRect(double L, double T, double R, double B);
    // Device rectangles combined by RGN_AND 1, RGN_OR 2, RGN_XOR 3, RGN_DIFF 4, RGN_COPY 5.
    void SelectClipRects(const std::vector<QRectF>& DeviceRects, int32_t Mode);
    void ResetClip();

  private:
    void CombineClip(const QPainterPath& Region, int32_t Mode);
    struct State {
        int32_t MapMode = 1;
        double WindowOrgX = 0, WindowOrgY = 0, WindowExtX = 1, WindowExtY = 1;
        double ViewportOrgX = 0, ViewportOrgY = 0, ViewportExtX = 1, ViewportExtY = 1;
        QTransform World;
        GdiPen Pen;
        GdiBrush Brush;
        GdiFont Font;
        uint32_t BkColor = 0xFFFFFF, TextColor = 0, TextAlign = 0;
        int32_t BkMode = 2, FillMode = 1, Rop2 = 13;
        QPointF Current;
        bool Clipped = false;
        QPainterPath Clip; // device space
    };

    QTransform PageTransform() const;
    QTransform Full() const { return state_.World * PageTransform() * base_; }
    // Prepares the painter for a drawing call; false when the call paints nothing.
    bool Begin(bool Device = false);
    QColor ColorOf(uint32_t ColorRef) const;
    QPen MakePen() const;
    QBrush MakeBrush() const;
    // Fills and strokes one outline with the selected brush and pen.
    void Shape(const QPainterPath& Logical, bool Fill, bool Stroke);
    void AddToPath(const QPainterPath& Logical);
    QPainterPath DeviceRectPath(double L, double T, double R, double B) const;

    QImage& target_;
    QPainter painter_;
    bool mask_;
    QTransform base_;
    double pixelsPerMm_;
    State state_;
    std::vector<State> saved_;
    bool inPath_ = false;
    QPainterPath path_; // device space
};

// A bitmap of a metafile record (BITMAPINFO, colour table, bits) as the
// player draws it, decoded by the one DIB codec. Usage 1 (palette indices)
// takes the indices as grey levels. The bits follow the table, or lie in
// Bits. A null image for what cannot be read.
QImage RecordDib(const ByteReader& Info, const ByteReader* Bits, uint32_t Usage, bool* BottomUp = nullptr);

// Plays a metafile into a new Width x Height RGBA 32 picture the way a picture
// object renders itself: the block is filled with 255, the drawing calls
// leave alpha 0 where they touch, and then every alpha below 255 becomes 255
// and every 255 becomes 0. Play runs twice, once for colour and once to find
// the pixels the records touch.
bool RenderWithAlpha(CImage& Image, int32_t Width, int32_t Height,
                     const std::function<void(MetafilePlayer& Player)>& Play, const QTransform& Base,
                     double PixelsPerMillimetre);

// The largest picture the metafile families render: a guard against a
// header that asks for more memory than any picture needs.
constexpr int64_t MaxMetafilePixels = int64_t(1) << 26;

} // namespace vm
