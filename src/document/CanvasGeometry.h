#pragma once
// The arithmetic of the canvas view, one axis at a time: where the picture
// stands, how far it scrolls, which image pixels a repaint draws and which
// zoom step comes next. Kept apart from the widget so that it can be checked
// number by number.
#include <QString>

#include <cstdint>

namespace vm {

// Size of an image axis on screen: whole displayed pixels, never below one.
int32_t DisplayedExtent(int32_t ImageExtent, double Zoom);

// How an axis is laid out in a view. When the picture fits, the range is 0
// and Show centres it; otherwise it starts at the view's edge and scrolls
// over the difference.
struct AxisLayout {
    double ScrollMax = 0;
    int32_t Show = 0;       // offset of the picture in the view
    int32_t ShowExtent = 0; // how much of the view it covers
};
AxisLayout FitAxis(int32_t ImageExtent, double Zoom, int32_t ViewExtent);
double ClampScroll(double Value, double ScrollMax);

// What a repaint draws on one axis: image pixels SrcStart .. SrcStart +
// SrcExtent - 1 onto DestStart .. DestStart + DestExtent, relative to Show.
// Whole image pixels only, so that partial pixels at the edges are right; a
// pixel stays a square of Zoom screen pixels.
struct AxisDraw {
    int32_t SrcStart = 0;
    int32_t SrcExtent = 0;
    double DestStart = 0;
    double DestExtent = 0;
};
AxisDraw DrawAxis(int32_t ImageExtent, double Zoom, int32_t ViewExtent, double Scroll, double ScrollMax);

// The image pixels that touch the view on one axis, as GetVisibleRect gives
// them: with a range of 0 the whole axis (End is the extent), otherwise from
// the first pixel the scroll position cuts to two beyond the last whole one.
void VisibleAxis(int32_t ImageExtent, double Zoom, int32_t ViewExtent, double Scroll, double ScrollMax,
                 int32_t& Start, int32_t& End);

// The image pixel under a view position, truncated toward zero as all pointer
// work has it.
int32_t ViewToImage(int32_t ViewPos, int32_t Show, double Scroll, double Zoom);

// Whether a typed or given factor is allowed: 0.02 to 20, and both sides keep
// at least one displayed pixel.
bool AcceptsZoomFactor(double Factor, int32_t Width, int32_t Height);
// The next step of the zoom table up; false at the top.
bool ZoomInFactor(double Current, double& Next);
// The next step down; false at the bottom or when a side would fall below one
// displayed pixel.
bool ZoomOutFactor(double Current, int32_t Width, int32_t Height, double& Next);
// The factor "best position" picks: 1 when the picture fits the view, else
// the largest step below 1 at which it fits.
double BestPositionFactor(int32_t Width, int32_t Height, int32_t ViewWidth, int32_t ViewHeight);

// The zoom box: the factor as a percentage with two decimals and "%".
QString ZoomPercentText(double Factor);
// The smallest percentage the box accepts for a picture: the shorter side
// keeps one displayed pixel, and never below the 2% of the zoom range.
double MinZoomPercent(int32_t Width, int32_t Height);
enum class ZoomBoxInput { Accepted, NotANumber, OutOfRange };
// Reads the box's text ("150", "12.5%"). Out of range, Percent is the
// nearest limit.
ZoomBoxInput ParseZoomBox(const QString& Text, double MinPercent, double& Percent);

// The picture's size scaled into a box, and the offsets that centre it.
void GetBestFitInfo(int32_t Width, int32_t Height, int32_t MaxWidth, int32_t MaxHeight, int32_t& OutWidth,
                    int32_t& OutHeight, int32_t& X, int32_t& Y);

// The ruler's strides in image pixels for a zoom: a major tick with its
// number, a medium and a minor tick. NoStride never matches.
inline constexpr int32_t NoStride = 100000;
struct RulerStrides {
    int32_t Major = 100;
    int32_t Medium = 50;
    int32_t Minor = 10;
};
RulerStrides RulerStridesFor(double Zoom);
// 0 none, 1 minor, 2 medium, 3 major: the tick at an image position.
int RulerTickAt(int32_t Position, const RulerStrides& Strides);

} // namespace vm
